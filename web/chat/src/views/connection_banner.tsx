import type { JSX } from "preact";
import { useStore } from "./context.ts";

/** Says that the connection is gone, what the host says of it, and that it is coming back. */
export function ConnectionBanner(): JSX.Element | null {
  const store = useStore();
  const { state, reason } = store.connection.value;
  if (state === "open") return null;
  return (
    <div class="banner" role="status">
      <span class="spinner" aria-hidden="true" />
      <span>
        {reason ? `The host does not take this page: ${reason}.` : "Connection lost."} Reconnecting…
      </span>
      <button type="button" class="link-button" onClick={() => store.reconnect()}>
        Try now
      </button>
    </div>
  );
}
