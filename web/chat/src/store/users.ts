import type { IMMessage, IMUserID } from "@imsdkbridge/client";

/** The application key whose accounts this chat signs in. */
export const appkey = "cnbazaro";

/** Accounts of the demo set, and their common password. */
export const demoAccounts = ["harbor", "lighthouse", "mariner", "navigator"];
export const demoPassword = "demo";

/** One text per user, to key tables with; an application key holds no line break. */
export function keyOf(user: IMUserID): string {
  return `${user.appkey}\n${user.nick}`;
}

/** The user that a key names. */
export function userOf(key: string): IMUserID {
  const [appkey = "", nick = ""] = key.split("\n", 2);
  return { appkey, nick };
}

/** Whether both name the same user. */
export function sameUser(a: IMUserID | undefined, b: IMUserID | undefined): boolean {
  return a !== undefined && b !== undefined && a.appkey === b.appkey && a.nick === b.nick;
}

/** Where a message stands in its conversation. */
export type Position = Pick<IMMessage, "msgtime" | "msgid">;

/** Orders messages of a conversation, oldest first. */
export function comparePositions(a: Position, b: Position): number {
  return compareDecimals(a.msgtime, b.msgtime) || compareDecimals(a.msgid, b.msgid);
}

// Identifiers and times go beyond what a number holds exactly.
function compareDecimals(a: string, b: string): number {
  if (a.length !== b.length) return a.length - b.length;
  return a < b ? -1 : a > b ? 1 : 0;
}
