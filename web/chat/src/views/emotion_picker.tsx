import type { JSX } from "preact";
import { useEffect, useLayoutEffect, useRef } from "preact/hooks";
import { emotionUrl } from "../files.ts";
import { useStore } from "./context.ts";
import { Notice } from "./notice.tsx";

/** Emotions in a row of the grid. */
const columns = 6;

interface EmotionPickerProps {
  choose: (shortcut: string) => void;
  close: () => void;
}

/** The emotions in a grid. Arrow keys move, Enter takes one, Escape closes. */
export function EmotionPicker({ choose, close }: EmotionPickerProps): JSX.Element {
  const { emotions } = useStore();
  const grid = useRef<HTMLDivElement>(null);
  const status = emotions.status.value;
  useEffect(() => void emotions.load(), []);
  useLayoutEffect(() => grid.current?.querySelector("button")?.focus(), [status]);

  const onKeyDown = (event: KeyboardEvent) => {
    const buttons = [...grid.current!.querySelectorAll("button")];
    const at = buttons.indexOf(document.activeElement as HTMLButtonElement);
    const steps: Record<string, number> = {
      ArrowRight: 1,
      ArrowLeft: -1,
      ArrowDown: columns,
      ArrowUp: -columns,
    };
    const step = steps[event.key];
    if (event.key === "Escape") close();
    else if (step === undefined) return;
    else buttons[at + step]?.focus();
    event.preventDefault();
    event.stopPropagation();
  };

  return (
    <>
      <div class="menu-shade" onPointerDown={close} />
      <div
        class="emotion-picker"
        role="dialog"
        aria-label="Emotions"
        ref={grid}
        onKeyDown={onKeyDown}
      >
        {status === "failed" && (
          <Notice
            icon="warning"
            title="No emotions"
            text="The list could not be loaded."
            action={{ label: "Try again", run: () => void emotions.load() }}
          />
        )}
        {emotions.list.value.map(({ shortcut, file, name }) => (
          <button
            key={shortcut}
            type="button"
            class="emotion-choice"
            title={`${name}  ${shortcut}`}
            aria-label={name}
            onClick={() => choose(shortcut)}
          >
            <img src={emotionUrl(`emotions/${file}`)} alt="" />
          </button>
        ))}
      </div>
    </>
  );
}
