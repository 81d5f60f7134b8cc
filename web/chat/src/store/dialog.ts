import type { IMMessage, IMUserID } from "@imsdkbridge/client";
import type { TribeDialog } from "./tribes/dialogs.ts";

/** A question or a form in front of the page. */
export type Dialog =
  | { kind: "forward"; messages: readonly IMMessage[] }
  | { kind: "delete"; cid: IMUserID; msgids: readonly string[] | "all" }
  | { kind: "broadcast" | "search" | "settings" }
  | TribeDialog;
