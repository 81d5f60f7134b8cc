import type { JSX } from "preact";
import { isTribe, type Peer } from "../store/peers.ts";
import { useStore } from "./context.ts";

/** How much is unread in a conversation; paler where the account wants no fuss about it. */
export function UnreadBadge({ cid, unread }: { cid: Peer; unread: number }): JSX.Element | null {
  const { list } = useStore().tribes;
  if (unread === 0) return null;
  const quiet = isTribe(cid) && list.isQuiet(cid.tribeid);
  return (
    <span class={quiet ? "badge quiet" : "badge"} aria-label={`${unread} unread`}>
      {unread > 99 ? "99+" : unread}
    </span>
  );
}
