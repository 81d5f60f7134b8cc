import type { ChatStore } from "../store/chat_store.ts";
import type { ChatMessage } from "../store/peers.ts";

/** Opens the viewer at one of a message's pictures, counted from 0. */
export function openPicture(
  store: ChatStore<File>,
  { cid, msgid, msgtime, fromid }: ChatMessage,
  path: string,
  index: number,
): void {
  const pictureid = `${msgid}_${index}`;
  void store.viewer.open(cid, { pictureid, url: path, msgid, mgstime: msgtime, fromid });
}
