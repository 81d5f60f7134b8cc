import type { JSX } from "preact";

const paths = {
  back: "M15 5l-7 7 7 7",
  check: "M5 12.5l4.5 4.5L19 7.5",
  chat: "M4 5h16v11H10l-4.5 4v-4H4z",
  clock: "M12 7v5l3 2M12 3a9 9 0 1 1 0 18 9 9 0 0 1 0-18z",
  down: "M12 5v13M6 12.5l6 6 6-6",
  file: "M7 3h7l4 4v14H7zM14 3v4h4",
  leave: "M14 4h5v16h-5M4 12h10M10 8l4 4-4 4",
  plus: "M12 5v14M5 12h14",
  retry: "M5 12a7 7 0 1 1 2.2 5.1M5 18v-4h4",
  send: "M4 12l16-7-5 15-3.5-6z",
  voice: "M12 4v10M9 6v6M15 6v6M6 9v2M18 9v2M12 17v3",
  warning: "M12 4l9 16H3zM12 10v4M12 17v.5",
};

/** A line drawing, hidden from screen readers: the control around it has the words. */
export function Icon({ name }: { name: keyof typeof paths }): JSX.Element {
  return (
    <svg class="icon" viewBox="0 0 24 24" aria-hidden="true">
      <path d={paths[name]} />
    </svg>
  );
}
