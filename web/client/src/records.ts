/** Records that several modules share, and the values of their numbers. */

/** A user; in single chat also the conversation with that user. */
export interface UserId {
  appkey: string;
  nick: string;
}

/** The keys every answer begins with. */
export interface Envelope {
  code: number;
  subcode: number;
  result: string;
}

/** No keys. */
export type Empty = Record<never, never>;

/** Extra information of a message. */
export interface MessageExtra {
  /** Free text that travels with the message. */
  others: string;
  /** 1 on a peer's message: it was reported read already, or needs no report. */
  fixmsgread: number;
  /** 1: an automatic reply. */
  autochatmsg: number;
  /** 1: a note of the client or the system, not written by anybody. */
  syschatmsg: number;
}

/** One single-chat message. */
export interface Message {
  msgid: string;
  msgtime: string;
  cid: UserId;
  fromid: UserId;
  toid: UserId;
  /** One of `MessageType`. */
  msgtype: number;
  /** One of `MessageStatus`. */
  msgstatus: number;
  msgbody: string;
  svrtime: string;
  /** 1 on an own message: the peer reported it read. On a peer's message: this account read it. */
  readflag: number;
  extinfo: MessageExtra;
}

/** Values of an envelope's "code" below 0 that come from the messaging engine. */
export const EngineCode = {
  notLoggedIn: -1,
  unknownUser: -2,
  wrongPassword: -3,
  tokenExpired: -4,
  noLink: -5,
  timeout: -6,
  tooLarge: -7,
  empty: -8,
  notFound: -9,
  storage: -10,
  refused: -11,
  busy: -12,
  unsupported: -13,
} as const;

/** Values of a message's "msgtype". A typing state is sent like a message and never stored. */
export const MessageType = {
  text: 0,
  picture: 1,
  audio: 2,
  file: 3,
  emotion: 4,
  shake: 5,
  typing: 6,
} as const;

/** Values of a message's "msgstatus"; a withdrawn message has an empty body. */
export const MessageStatus = { sending: 0, sent: 1, failed: 2, received: 3, withdrawn: 4 } as const;

/** One element of a message to send. */
export interface BodyItem {
  /** One of `MessageType`. */
  type: number;
  jvale?: string;
  value?: string;
  /** A file's content in Base64, at most 32 MB before encoding. */
  filecontent?: string;
  /** The file's name, or with an empty content its path on the host's machine. */
  filepath?: string;
}

/** Only the outcome. */
export interface Plain<R> {
  request: R;
  answer: Envelope;
}
