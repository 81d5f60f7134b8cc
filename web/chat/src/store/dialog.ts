import type { Peer, ChatMessage } from "./peers.ts";

/** A question or a form in front of the page. */
export type Dialog =
  | { kind: "forward"; messages: readonly ChatMessage[] }
  | { kind: "delete"; cid: Peer; msgids: readonly string[] | "all" }
  | { kind: "broadcast" | "search" | "settings" };
