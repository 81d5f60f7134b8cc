import type { ComponentChildren, JSX } from "preact";
import { useRef } from "preact/hooks";
import { Icon } from "./icons.tsx";
import { useReturnFocus } from "./use_return_focus.ts";

interface DialogProps {
  title: string;
  close: () => void;
  children: ComponentChildren;
  wide?: boolean;
}

/** A window in front of the page. It keeps the focus inside; Escape or a click beside it closes. */
export function Dialog({ title, close, children, wide }: DialogProps): JSX.Element {
  const dialog = useRef<HTMLDialogElement>(null);
  // What is typed next is meant for the dialog.
  useReturnFocus(
    () => dialog.current!.showModal(),
    () => dialog.current?.close(),
  );
  return (
    <dialog
      class={wide ? "dialog wide" : "dialog"}
      aria-label={title}
      ref={dialog}
      onCancel={(event) => (event.preventDefault(), close())}
      onPointerDown={(event) => event.target === dialog.current && close()}
    >
      <div class="dialog-content">
        <header class="dialog-bar">
          <h2>{title}</h2>
          <button
            type="button"
            class="icon-button"
            aria-label="Close"
            title="Close"
            onClick={close}
          >
            <Icon name="close" />
          </button>
        </header>
        {children}
      </div>
    </dialog>
  );
}
