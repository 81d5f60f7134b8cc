import type { IMUserID } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

/** What can be done with the chosen messages; stands where the composer is. */
export function SelectionBar({ cid }: { cid: IMUserID }): JSX.Element {
  const store = useStore();
  const { selection } = store;
  const count = selection.chosen.value.size;
  const forward = () => {
    store.dialog.value = { kind: "forward", messages: selection.inOrder() };
  };
  const remove = () => {
    store.dialog.value = { kind: "delete", cid, msgids: [...selection.chosen.value.keys()] };
  };
  return (
    <div class="selection-bar" role="toolbar" aria-label="Chosen messages">
      <span class="selection-count" role="status">
        {`${count} chosen`}
      </span>
      {!store.faces.isVirtual(cid) && (
        <button type="button" class="button" disabled={count === 0} onClick={forward}>
          <Icon name="forward" /> Forward
        </button>
      )}
      <button type="button" class="button" disabled={count === 0} onClick={remove}>
        <Icon name="trash" /> Delete
      </button>
      <button
        type="button"
        class="icon-button"
        title="Cancel (Escape)"
        aria-label="Cancel"
        onClick={() => selection.end()}
      >
        <Icon name="close" />
      </button>
    </div>
  );
}
