/**
 * The protocol's records, methods and notifications. Keys are those on the wire, misspellings
 * included. Times are milliseconds since the Unix epoch; they and message identifiers travel as
 * decimal text. A request may leave any key out: the host then reads "", 0 or an empty list.
 */

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
  others: string;
  fixmsgread: number;
  autochatmsg: number;
  syschatmsg: number;
}

/** One single-chat message. */
export interface Message {
  msgid: string;
  msgtime: string;
  cid: UserId;
  fromid: UserId;
  toid: UserId;
  msgtype: number;
  msgstatus: number;
  msgbody: string;
  svrtime: string;
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

/** Values of a message's "msgtype". */
export const MessageType = { text: 0, picture: 1, audio: 2, file: 3, emotion: 4 } as const;

/** Values of a message's "msgstatus". */
export const MessageStatus = { sending: 0, sent: 1, failed: 2, received: 3 } as const;

/** One element of a message to send. */
export interface BodyItem {
  type: number;
  jvale: string;
  value: string;
  filecontent: string;
  filepath: string;
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

/** Messages older (gohistory not 0) or newer (0) than (msgtime, msgid); both "": the newest end. */
export interface HistoryRequest {
  cid?: UserId;
  msgtime?: string;
  msgid?: string;
  count?: number;
  gohistory?: number;
  ignoreboundary?: number;
  autoroam?: number;
}

/** Messages, oldest first. */
export interface MessagesAnswer extends Envelope {
  /** Not 0: there is nothing further in the asked direction. */
  outofcache: number;
  msgs: Message[];
}

export interface CidRequest {
  cid?: UserId;
}

/** Without "cids": every conversation the account has. */
export interface CidsRequest {
  cids?: UserId[];
}

export interface CountAnswer extends Envelope {
  count: number;
}

export interface Unread {
  cid: UserId;
  count: number;
}

export interface UnreadsAnswer extends Envelope {
  unreads: Unread[];
}

export interface SendRequest {
  cid?: UserId;
  autosend?: number;
  msgbody?: BodyItem[];
}

export interface BroadcastRequest {
  cids?: UserId[];
  msgbody?: BodyItem[];
}

/** A typed text; the answer's "value" has emotion tokens for its shortcuts. */
export interface EmotionText {
  type?: number;
  value?: string;
  jvale?: string;
}

export interface ResendRequest {
  cid?: UserId;
  msgid?: string;
}

/** Every method: by routing path, then by name. */
export interface Methods {
  "im.singlemsg": {
    GetNewMsg: { request: HistoryRequest; answer: MessagesAnswer };
    PeekNewMsg: { request: HistoryRequest; answer: MessagesAnswer };
    GetLocalHisMsg: { request: HistoryRequest; answer: MessagesAnswer };
    GetUnreadCount: { request: CidRequest; answer: CountAnswer };
    GetUnreadCountInBulk: { request: CidsRequest; answer: UnreadsAnswer };
    SetMsgRead: { request: CidRequest; answer: Envelope };
    FastReSendChatMsg: { request: ResendRequest; answer: Envelope };
    ReSendChatMsg: { request: ResendRequest; answer: Envelope };
    SendBroadcastMsg: { request: BroadcastRequest; answer: Envelope };
    SendNormalChatMsg: { request: SendRequest; answer: Envelope };
    SendAutoReplyMsg: { request: SendRequest; answer: Envelope };
    ConvertMsgText2Emotion: { request: EmotionText; answer: Envelope & EmotionText };
  };
  "im.tribemsg": Empty;
  "im.tribemgr": Empty;
  "im.bizutil": Empty;
  "im.contact": Empty;
  "im.filetransfer": Empty;
  "im.login": {
    GetCurrentLoginID: { request: Empty; answer: UserIdAnswer };
    DoLoginByToken: { request: TokenLogin; answer: LoginAnswer };
    DoLoginByPassWord: { request: PasswordLogin; answer: LoginAnswer };
    DoNetReConnect: { request: Empty; answer: Envelope };
    DoLogout: { request: Empty; answer: Envelope };
  };
  "im.virtualmsg": Empty;
}

export interface MessagesNotification {
  msgs: Message[];
}

export interface SendStatusNotification extends Envelope {
  msgtype: number;
  msgid: string;
  svrtime: string;
}

export interface UserIdNotification {
  userid: UserId;
}

/** Every notification and its payload. */
export interface Notifications {
  onReceiveNewMsg: MessagesNotification;
  onReceiveOfflineMsg: MessagesNotification;
  onSendNewMsg: MessagesNotification;
  onSendMsgStatus: SendStatusNotification;
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

/** Events that a page raises itself, and their payload. */
export interface PageEvents {
  chatWindowState: ChatWindowState;
}
