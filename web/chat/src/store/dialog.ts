import type { ContactDialog } from "./contacts/dialogs.ts";
import type { ChatMessage, Peer } from "./peers.ts";
import type { TribeDialog } from "./tribes/dialogs.ts";

/** A question or a form in front of the page. */
export type Dialog =
  | { kind: "forward"; messages: readonly ChatMessage[] }
  | { kind: "delete"; cid: Peer; msgids: readonly string[] | "all" }
  | { kind: "broadcast" | "search" | "settings" }
  | ContactDialog
  | TribeDialog;
