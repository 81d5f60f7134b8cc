import type { JSX } from "preact";

const paths = {
  back: "M15 5l-7 7 7 7",
  bell: "M6 16v-5a6 6 0 0 1 12 0v5l2 2H4zM10 20.5h4",
  "bell-off": "M8.5 6.2A6 6 0 0 1 18 11v4M16.5 18H4l2-2v-5q0-1 .3-1.8M10 20.5h4M4 4l16 16",
  broadcast: "M4 10v4h3l7 5V5l-7 5zM17.5 9a4.5 4.5 0 0 1 0 6M20 6.5a8 8 0 0 1 0 11",
  check: "M5 12.5l4.5 4.5L19 7.5",
  checks: "M2.5 12.5l4.5 4.5L16 7.5M11 15.5l1.5 1.5 9-9.5",
  chat: "M4 5h16v11H10l-4.5 4v-4H4z",
  clip: "M19 11.5l-7.5 7.5a5 5 0 0 1-7-7l8-8a3.3 3.3 0 0 1 4.7 4.7l-7.7 7.7a1.6 1.6 0 0 1-2.3-2.3l6.8-6.8",
  clock: "M12 7v5l3 2M12 3a9 9 0 1 1 0 18 9 9 0 0 1 0-18z",
  close: "M6 6l12 12M18 6L6 18",
  copy: "M9 9h11v11H9zM15 9V4H4v11h5",
  down: "M12 5v13M6 12.5l6 6 6-6",
  file: "M7 3h7l4 4v14H7zM14 3v4h4",
  forward: "M13 5l7 7-7 7v-4.5C8.5 14.5 5.5 16 4 19c0-5 3-9 9-9.5z",
  gear: "M12 9a3 3 0 1 1 0 6 3 3 0 0 1 0-6zM12 3v3M12 18v3M3 12h3M18 12h3M5.6 5.6l2.1 2.1M16.3 16.3l2.1 2.1M18.4 5.6l-2.1 2.1M7.7 16.3l-2.1 2.1",
  leave: "M14 4h5v16h-5M4 12h10M10 8l4 4-4 4",
  more: "M12 5.5v.01M12 12v.01M12 18.5v.01",
  next: "M6 9l6 6 6-6",
  previous: "M6 15l6-6 6 6",
  picture: "M4 5h16v14H4zM4 16l5-5 4 4 3-3 4 4M15.5 9v.01",
  people:
    "M9 4a3.5 3.5 0 1 1 0 7 3.5 3.5 0 0 1 0-7zM2.5 20q0-6 6.5-6t6.5 6M15.5 4.6a3.5 3.5 0 0 1 0 5.8M18 14.7q3.5 1.3 3.5 5.3",
  plus: "M12 5v14M5 12h14",
  retry: "M5 12a7 7 0 1 1 2.2 5.1M5 18v-4h4",
  search: "M10.5 4a6.5 6.5 0 1 1 0 13 6.5 6.5 0 0 1 0-13zM15.5 15.5L20 20",
  select: "M4 4h16v16H4zM8 12l3 3 5.5-6",
  send: "M4 12l16-7-5 15-3.5-6z",
  shake: "M8 6h8v12H8zM4.5 9v6M2 10.5v3M19.5 9v6M22 10.5v3",
  smile: "M12 3a9 9 0 1 1 0 18 9 9 0 0 1 0-18zM8 14.5q4 4 8 0M9 9.5v.01M15 9.5v.01",
  translate: "M4 6h9M8.5 4v2M11 6c-1 4-4 6-7 7M6 9c1 2.5 3 4 5.5 4.5M12.5 20l4-9 4 9M14 17h5",
  trash: "M5 7h14M9 7V4h6v3M7 7l1 13h8l1-13M10.5 11v5M13.5 11v5",
  undo: "M8 5L4 9l4 4M4 9h10a5.5 5.5 0 0 1 0 11h-4",
  voice: "M12 4v10M9 6v6M15 6v6M6 9v2M18 9v2M12 17v3",
  warning: "M12 4l9 16H3zM12 10v4M12 17v.5",
  "zoom-in": "M10.5 4a6.5 6.5 0 1 1 0 13 6.5 6.5 0 0 1 0-13zM15.5 15.5L20 20M8 10.5h5M10.5 8v5",
  "zoom-out": "M10.5 4a6.5 6.5 0 1 1 0 13 6.5 6.5 0 0 1 0-13zM15.5 15.5L20 20M8 10.5h5",
};

/** A line drawing, hidden from screen readers: the control around it has the words. */
export function Icon({ name }: { name: keyof typeof paths }): JSX.Element {
  return (
    <svg class={name === "more" ? "icon dots" : "icon"} viewBox="0 0 24 24" aria-hidden="true">
      <path d={paths[name]} />
    </svg>
  );
}
