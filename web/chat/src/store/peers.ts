import {
  IMCIDType,
  type IMTribeAt,
  type IMReadFlag,
  type IMUserID,
  type TribemsgIMConversationID,
  type TribemsgIMMessage,
} from "@imsdkbridge/client";

/** Whom a conversation is held with: a user, or a tribe. */
export type Peer = IMUserID | TribemsgIMConversationID;

/** A message of either kind of conversation; what only one kind has may be missing. */
export interface ChatMessage extends Omit<TribemsgIMMessage, "cid" | "tribeat"> {
  cid: Peer;
  readflag?: IMReadFlag;
  tribeat?: IMTribeAt;
}

/** The conversation with a tribe. */
export function tribeOf(tribeid: string): TribemsgIMConversationID {
  return { tribeid, type: IMCIDType.kCIDTribe };
}

export function isTribe(peer: Peer): peer is TribemsgIMConversationID {
  return "tribeid" in peer;
}

/** The keys by which requests of the peer's module name the conversation. */
export function named(peer: Peer): { cid?: IMUserID; tribeid?: string } {
  return isTribe(peer) ? { tribeid: peer.tribeid } : { cid: peer };
}

/** One text per conversation, to key tables with; an application key holds no line break. */
export function keyOf(peer: Peer): string {
  // No user is without an application key.
  return isTribe(peer) ? `\n${peer.tribeid}` : `${peer.appkey}\n${peer.nick}`;
}

/** The conversation that a key names. */
export function peerOf(key: string): Peer {
  const [appkey = "", name = ""] = key.split("\n", 2);
  return appkey ? { appkey, nick: name } : tribeOf(name);
}

/** Whether both name the same user, or the same tribe. */
export function samePeer(a: Peer | undefined, b: Peer | undefined): boolean {
  return a !== undefined && b !== undefined && keyOf(a) === keyOf(b);
}

/** Where a message stands in its conversation. */
export type Position = Pick<ChatMessage, "msgtime" | "msgid">;

/** Orders messages of a conversation, oldest first. */
export function comparePositions(a: Position, b: Position): number {
  return compareDecimals(a.msgtime, b.msgtime) || compareDecimals(a.msgid, b.msgid);
}

// Identifiers and times go beyond what a number holds exactly.
function compareDecimals(a: string, b: string): number {
  if (a.length !== b.length) return a.length - b.length;
  return a < b ? -1 : a > b ? 1 : 0;
}
