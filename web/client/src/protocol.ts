/**
 * The protocol's records, methods and notifications. Keys are those on the wire, misspellings
 * included. Times are milliseconds since the Unix epoch; they and message identifiers travel as
 * decimal text. A request may leave any key out: the host then reads "", 0 or an empty list.
 */
import type { SingleChatMethods, SingleChatNotifications } from "./single_chat.ts";
import type { VirtualChatMethods, VirtualChatNotifications } from "./virtual_chat.ts";

/** Routing paths by the name of the client's module face. */
export const routingPaths = {
  singlemsg: "im.singlemsg",
  tribemsg: "im.tribemsg",
  tribemgr: "im.tribemgr",
  bizutil: "im.bizutil",
  contact: "im.contact",
  filetransfer: "im.filetransfer",
  login: "im.login",
  virtualmsg: "im.virtualmsg",
} as const;

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

export interface PasswordLogin {
  userid?: UserId;
  password?: string;
}

export interface TokenLogin {
  userid?: UserId;
  token?: string;
}

export interface LoginAnswer extends Envelope {
  userid: UserId;
  token: string;
  expires: string;
}

export interface UserIdAnswer extends Envelope {
  userid: UserId;
}

/** Only the outcome. */
export interface Plain<R> {
  request: R;
  answer: Envelope;
}

/** Every method: by routing path, then by name. */
export interface Methods {
  "im.singlemsg": SingleChatMethods;
  "im.tribemsg": Empty;
  "im.tribemgr": Empty;
  "im.bizutil": Empty;
  "im.contact": Empty;
  "im.filetransfer": Empty;
  "im.login": {
    GetCurrentLoginID: { request: Empty; answer: UserIdAnswer };
    DoLoginByToken: { request: TokenLogin; answer: LoginAnswer };
    DoLoginByPassWord: { request: PasswordLogin; answer: LoginAnswer };
    DoNetReConnect: Plain<Empty>;
    DoLogout: Plain<Empty>;
  };
  "im.virtualmsg": VirtualChatMethods;
}

export interface UserIdNotification {
  userid: UserId;
}

/** Every notification and its payload. */
export interface Notifications extends SingleChatNotifications, VirtualChatNotifications {
  onIMLoginOK: UserIdNotification;
  onIMLoginFailed: Envelope;
  onIMLogouted: UserIdNotification;
  onNetReConnectOK: Empty;
  onNetReConnectFailed: Envelope;
}

/** Whether the page shows a conversation; 1 or 0. */
export interface ChatWindowState {
  cid: UserId;
  visible: number;
  activated: number;
}

/** Switches translation on (1) or off (0) for the whole host; "onTranslateSettingNotify" follows. */
export interface TranslateSetting {
  enable: number;
}

/** Events that a page raises itself, and their payload. */
export interface PageEvents {
  chatWindowState: ChatWindowState;
  translateSetting: TranslateSetting;
}
