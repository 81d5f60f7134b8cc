import type { JSX } from "preact";
import { samePeer, type Peer } from "../store/peers.ts";
import { canForward } from "../text/actions.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

/** What can be done with the chosen messages; stands where the composer is. */
export function SelectionBar({ cid }: { cid: Peer }): JSX.Element {
  const store = useStore();
  const { selection, session } = store;
  const count = selection.chosen.value.size;
  const messages = selection
    .inOrder()
    .filter((message) => canForward(message, samePeer(message.fromid, session.me.value)));
  const part = messages.length > 0 && messages.length < count;
  const forward = () => {
    store.dialog.value = { kind: "forward", messages };
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
        <button
          type="button"
          class="button"
          title={messages.length < count ? "Notices and unsent messages cannot be forwarded" : ""}
          disabled={messages.length === 0}
          onClick={forward}
        >
          <Icon name="forward" /> {part ? `Forward ${messages.length}` : "Forward"}
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
