import type { Envelope, Message, UserId } from "./records.ts";

/** A place in a conversation; both keys "" mean its newest end. */
export interface MessagePosition {
  msgtime: string;
  msgid: string;
}

/**
 * A page of messages next to (msgtime, msgid), which itself is not part of it. Without a position
 * the page is the newest one.
 */
export interface HistoryRequest {
  cid?: UserId;
  msgtime?: string;
  msgid?: string;
  /** Messages at most; 0 lets the host choose. */
  count?: number;
  /** Not 0: messages older than the position. 0: newer ones. */
  gohistory?: number;
  /** Not 0: the page also goes over gaps in the host's own store. */
  ignoreboundary?: number;
  /** Not 0: what the host's own store lacks is fetched from the server. */
  autoroam?: number;
}

/** Messages, oldest first. */
export interface MessagesAnswer extends Envelope {
  /** Not 0: there is nothing further in the asked direction. */
  outofcache: number;
  msgs: Message[];
}

export interface PositionAnswer extends Envelope, MessagePosition {}

/** Which messages to delete on this device: those named, or with `all` 1 every one. */
export interface DeleteRequest {
  cid?: UserId;
  msgids?: string[];
  all?: number;
}

/** A search; a message fits when it has every keyword. Times bound "msgtime", "" leaves them open. */
export interface SearchRequest {
  cid?: UserId;
  keywords?: string[];
  /** Kinds of messages, of `MessageType`; empty: all. */
  msgtypes?: number[];
  btime?: string;
  etime?: string;
  /** Position, as in `HistoryRequest`; counts when `needpage` is 0. */
  msgtime?: string;
  msgid?: string;
  gohistory?: number;
  ignoreboundary?: number;
  /** Messages on a page; 0 lets the host choose. */
  count?: number;
  /** Not 0: page number `page`, counted from 1, the newest messages on the first; with totals. */
  needpage?: number;
  page?: number;
}

/** A page of what was found, oldest first; the totals are 0 unless `needpage` asked for them. */
export interface SearchAnswer extends Envelope {
  cid: UserId;
  keywords: string[];
  msgtypes: number[];
  currentpage: number;
  totalpage: number;
  totalcount: number;
  msgs: Message[];
}

export interface SearchCidsRequest {
  keywords?: string[];
  msgtypes?: number[];
  btime?: string;
  etime?: string;
}

export interface SearchCidsAnswer extends Envelope {
  msgtypes: number[];
  cids: UserId[];
}

/** Pictures next to (msgtime, pictureid), which itself is not part of them; both "": the newest. */
export interface PicturesRequest {
  cid?: UserId;
  btime?: string;
  etime?: string;
  msgtime?: string;
  pictureid?: string;
  ignoreboundary?: number;
  gohistory?: number;
  count?: number;
}

/** A picture inside a message. */
export interface Picture {
  /** msgid, "_", index. */
  pictureid: string;
  /** The file's path, as in the message's token. */
  url: string;
  msgid: string;
  /** Among the pictures of its message, from 0. */
  index: number;
  /** The message's "msgtime". */
  mgstime: string;
  fromid: UserId;
  toid: UserId;
  extInfo: string;
}

/** Oldest first. */
export interface PicturesAnswer extends Envelope {
  pictures: Picture[];
}

/** Messages of [btime, etime] to fetch from the server, the newest `count`; `autoroam`: all. */
export interface RoamRequest {
  cid?: UserId;
  btime?: string;
  etime?: string;
  count?: number;
  autoroam?: number;
}

export interface RoamAnswer extends Envelope {
  /** Messages that came. */
  roamedcount: number;
  /** Of them those that the host's store did not have. */
  affectcount: number;
}

export interface RoamStatus {
  /** The server has no messages to give from before this; "0": since ever. */
  opentime: string;
  /** 1: the server hands out history. */
  roamstatus: number;
}
