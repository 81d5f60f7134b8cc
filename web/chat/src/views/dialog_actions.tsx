import type { JSX } from "preact";

interface ActionsProps {
  close: () => void;
  label: string;
  off: boolean;
  danger?: boolean;
}

/** The last line of a form in front of the page: give up, or do it. */
export function Actions({ close, label, off, danger }: ActionsProps): JSX.Element {
  return (
    <footer class="dialog-actions">
      <button type="button" class="button" onClick={close}>
        Cancel
      </button>
      <button type="submit" class={danger ? "button danger" : "button primary"} disabled={off}>
        {label}
      </button>
    </footer>
  );
}
