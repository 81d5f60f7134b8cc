import type { JSX } from "preact";
import { useStore } from "./context.ts";

/** Says that the connection is gone and coming back; nothing while all is well. */
export function ConnectionBanner(): JSX.Element | null {
  const store = useStore();
  if (store.connection.value.state === "open") return null;
  return (
    <div class="banner" role="status">
      <span class="spinner" aria-hidden="true" />
      <span>Connection lost. Reconnecting…</span>
      <button type="button" class="link-button" onClick={() => store.reconnect()}>
        Try now
      </button>
    </div>
  );
}
