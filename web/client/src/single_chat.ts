import type {
  DeleteRequest,
  HistoryRequest,
  MessagesAnswer,
  PicturesAnswer,
  PicturesRequest,
  PositionAnswer,
  RoamAnswer,
  RoamRequest,
  RoamStatus,
  SearchAnswer,
  SearchCidsAnswer,
  SearchCidsRequest,
  SearchRequest,
} from "./history.ts";
import type { BodyItem, Empty, Envelope, Message, Plain, UserId } from "./records.ts";

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
  /** 1: sent by the client itself, not typed by its user. */
  autosend?: number;
  msgbody?: BodyItem[];
}

export interface BroadcastRequest {
  cids?: UserId[];
  msgbody?: BodyItem[];
}

/** One stored message of a conversation. */
export interface MessageRequest {
  cid?: UserId;
  msgid?: string;
}

/** Messages of a conversation. */
export interface MessageListRequest {
  cid?: UserId;
  msgids?: string[];
}

/** With an empty "msgbody" the stored message `msgid` is forwarded, body and kind. */
export interface ForwardRequest {
  cids?: UserId[];
  msgbody?: BodyItem[];
  msgtype?: number;
  msgid?: string;
}

export interface EditPictureRequest {
  cids?: UserId[];
  fileMD5?: string;
  /** On the host's machine. */
  filepath?: string;
}

/** A typed text; the answer's "value" has emotion tokens for its shortcuts. */
export interface EmotionText {
  type?: number;
  value?: string;
  jvale?: string;
}

/** Whether the peer has reported an own message read. */
export interface ReadFlag {
  cid: UserId;
  msgid: string;
  msgtime: string;
  readflag: number;
}

export interface WithdrawRequest {
  cid?: UserId;
  msgid?: string;
  msgtime?: string;
  svrtime?: string;
}

/** A message that was taken back. */
export interface Withdrawn {
  cid: UserId;
  fromid: UserId;
  msgid: string;
  msgtime: string;
  svrtime: string;
}

/** A message's text before, or after, its translation. */
export interface Translation {
  msgid: string;
  msgcontent: string;
}

/**
 * The methods of "im.singlemsg". All fail with "invalid!" when the request is no JSON object, and
 * with the engine's codes (`EngineCode`) when the account, its store or the server cannot.
 */
export interface SingleChatMethods {
  /** Unread messages, and marks them read when the page shows their conversation. */
  GetNewMsg: { request: HistoryRequest; answer: MessagesAnswer };
  /** The same without marking anything. */
  PeekNewMsg: { request: HistoryRequest; answer: MessagesAnswer };
  /** Unread messages that came while nobody was logged in; marks as `GetNewMsg`. */
  GetOfflineMsg: { request: CidRequest; answer: MessagesAnswer };
  /** The same without marking anything. */
  PeekOfflineMsg: { request: CidRequest; answer: MessagesAnswer };
  /** A page of the host's own store. */
  GetLocalHisMsg: { request: HistoryRequest; answer: MessagesAnswer };
  /** A page of the server's store; with `autoroam` the host keeps it. */
  GetRemoteHisMsg: { request: HistoryRequest; answer: MessagesAnswer };
  GetUnreadCount: { request: CidRequest; answer: CountAnswer };
  GetUnreadCountInBulk: { request: CidsRequest; answer: UnreadsAnswer };
  /** Marks everything received so far as read. The peer is not told. */
  SetMsgRead: Plain<CidRequest>;
  /** The newest received message up to which all is read; "0" twice when none is. */
  GetReadedBoundary: { request: CidRequest; answer: PositionAnswer };
  /** Deletes on this device only, for good; "count" is the number that went. */
  DeleteLocalMsg: { request: DeleteRequest; answer: CountAnswer };
  /** Sends a failed message again; "onSendMsgStatus" tells the outcome. */
  ReSendChatMsg: Plain<MessageRequest>;
  /** The same without waiting for a lost link's next attempt. */
  FastReSendChatMsg: Plain<MessageRequest>;
  ForwardChatMsg: Plain<ForwardRequest>;
  /** One message per identifier; answers once, with the first refusal or success. */
  SendBroadcastMsg: Plain<BroadcastRequest>;
  /**
   * Sends a message; "onSendNewMsg" and "onSendMsgStatus" follow. A shake is one item of type 5; a
   * typing state one of type 6 with value "1" or "0", which no event follows.
   */
  SendNormalChatMsg: Plain<SendRequest>;
  /** Sends a message marked as an automatic reply. */
  SendAutoReplyMsg: Plain<SendRequest>;
  /** Read flags of own messages; of the newest ones without "msgids". */
  GetFlagsMyMsgReaded: {
    request: MessageListRequest;
    answer: Envelope & { items: ReadFlag[] };
  };
  /** Tells the peer that its messages were read; without "msgids" all that are and were not told. */
  SetFlagsPeerMsgReaded: Plain<MessageListRequest>;
  /** Takes an own message back, on both sides. Fails with code -11 when it is too old. */
  DoChatMsgWithdraw: Plain<WithdrawRequest>;
  /** One message; fails with code -9 when there is none. */
  SearchMsgByID: { request: MessageRequest; answer: MessagesAnswer };
  /** Searches one conversation. */
  SearchDBMsg: { request: SearchRequest; answer: SearchAnswer };
  /** Searches one conversation, or without "cid" all of them. */
  SearchDBMsg2: { request: SearchRequest; answer: SearchAnswer };
  /** The conversations with at least one message that fits. */
  SearchDBMsgCid: { request: SearchCidsRequest; answer: SearchCidsAnswer };
  GetMsgPicture: { request: PicturesRequest; answer: PicturesAnswer };
  /** Fetches messages from the server into the host's store. */
  RoamMsg: { request: RoamRequest; answer: RoamAnswer };
  /** Forgets how far the conversation is complete, so that it is fetched anew. */
  ClearRoamedTime: Plain<CidRequest>;
  GetRoamStatus: { request: Empty; answer: Envelope & RoamStatus };
  SetRoamStatus: Plain<Partial<RoamStatus>>;
  /** While `setignore` is 1, automatic replies of the peer are kept as read and not announced. */
  ShieldAutoReply: Plain<{ cid?: UserId; setignore?: number }>;
  /** Opens the host's picture editor and sends what comes out of it. */
  EditPic2SendMsg: Plain<EditPictureRequest>;
  ConvertMsgText2Emotion: { request: EmotionText; answer: Envelope & EmotionText };
  /** How many unread messages the host keeps in memory; 0: its own bound. */
  SetNewMsgMaxCache: Plain<{ maxmsgcount?: number }>;
  /** Data that a message refers to; "content" is JSON text. */
  GetDynamicMsg: {
    request: { bizType?: string; bizUuid?: string };
    answer: Envelope & { content: string };
  };
  /** Adds a note about turning voice messages into text, which comes as "onReceiveNewMsg". */
  AddAudio2textSettingRemind: Plain<CidRequest>;
  GetTranslateSetting: { request: Empty; answer: Envelope & { enable: number } };
  /** Translates a text; fails with "no translation is set up" when the host has none. */
  GetTranslateMsg: { request: Translation; answer: Envelope & Translation };
}

export interface MessagesNotification {
  msgs: Message[];
}

export interface SendStatusNotification extends Envelope {
  msgtype: number;
  msgid: string;
  svrtime: string;
}

/** The notifications of single chat. */
export interface SingleChatNotifications {
  onReceiveNewMsg: MessagesNotification;
  onReceiveOfflineMsg: MessagesNotification;
  /** An own message was stored; one from another device comes with its final status. */
  onSendNewMsg: MessagesNotification;
  onSendMsgStatus: SendStatusNotification;
  /** "value" 1: the peer is typing; over after some seconds, it is not repeated. 0: it stopped. */
  onPeerInputNotify: { value: number; cid: UserId };
  /** That user shook the window. */
  onShakeMsgNotify: UserId;
  onTranslateMsgNotify: Translation;
  onTranslateSettingNotify: { enable: number };
  onFlagMyMsgReaded: { items: ReadFlag[] };
  /** Messages were taken back, on either side. */
  onMsgWithdrawNty: Envelope & { withdraws: Withdrawn[] };
}
