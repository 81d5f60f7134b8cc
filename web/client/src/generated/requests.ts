// Made from the tables of the library by ./dev generate; not edited by hand.
import type {
  CloudFileMeta,
  CloudFileMsg,
  IMConversationID,
  IMTribeRequest,
  IMUserID,
  TribemsgIMConversationID,
} from "./records.ts";
import type {
  FileOwnerType,
  IMMsgType,
  IMNodeType,
  IMRoaming,
  TribeAtMsgType,
  TribeAtRelation,
  TribeMemberLevel,
} from "./values.ts";

export interface BodyItem {
  /** Kind of the item. */
  type?: IMMsgType;
  /** Extra JSON text, carried as it stands. */
  jvale?: string;
  /** Its body: text with tokens in it. */
  value?: string;
  /** The content of a file, Base64, where it comes along. */
  filecontent?: string;
  /** The path of a local file, where one is meant. */
  filepath?: string;
}

export interface BroadcastMsgRequest {
  /** The conversations. */
  cids?: IMConversationID[];
  /** What to send, in the order in which it is shown. */
  msgbody?: BodyItem[];
}

export interface CloudFileMetaRequest {
  /** The file's identifier. */
  id?: string;
  /** The identifier of its folder; one for a conversation. */
  parentId?: string;
  /** Its name, fit for every disk. */
  nodeName?: string;
  /** Its size in bytes; -1 when it was deleted. */
  nodeSize?: string;
  /** What it is. */
  nodeType?: IMNodeType;
  /** The digest of its content. */
  md5?: string;
  /** The message that carried it. */
  msginfo?: CloudFileMsg;
}

export interface ContactName {
  /** The contact. */
  userid?: IMUserID;
}

export interface DynamicMsgRequest {
  /** The business that the content belongs to. */
  bizType?: string;
  /** The content's identifier there. */
  bizUuid?: string;
}

export interface EditPicRequest {
  /** The conversations. */
  cids?: IMConversationID[];
  /** The digest that the page knows the picture by. */
  fileMD5?: string;
  /** The path of the picture. */
  filepath?: string;
}

export interface EmotionTextRequest {
  /** Kind of the item. */
  type?: IMMsgType;
  /** The text; in the answer with emotions as tokens. */
  value?: string;
  /** Extra JSON text, carried as it stands. */
  jvale?: string;
}

export interface FileListRequest {
  /** At most this many files. */
  count?: number;
  /** Where the page begins; empty for the first one. */
  nextkey?: string;
  /** Whose the file is. */
  type?: FileOwnerType;
  /** Of a one-to-one conversation: The application that the user belongs to. */
  appkey?: string;
  /** Of a one-to-one conversation: The user's name there. */
  nick?: string;
  /** Of a tribe: The tribe. */
  tribeid?: string;
}

export interface FileRecordRequest {
  /** Whose the file is. */
  type?: FileOwnerType;
  /** Of a one-to-one conversation: The application that the user belongs to. */
  appkey?: string;
  /** Of a one-to-one conversation: The user's name there. */
  nick?: string;
  /** Of a tribe: The tribe. */
  tribeid?: string;
  /** The file. */
  fileMeta?: CloudFileMeta;
}

export interface FileSearchRequest {
  /** At most this many files. */
  count?: number;
  /** Letters of the file's name, in any case. */
  searchKey?: string;
  /** Where the page begins; empty for the first one. */
  nextkey?: string;
  /** Whose the file is. */
  type?: FileOwnerType;
  /** Of a one-to-one conversation: The application that the user belongs to. */
  appkey?: string;
  /** Of a one-to-one conversation: The user's name there. */
  nick?: string;
  /** Of a tribe: The tribe. */
  tribeid?: string;
}

export interface ForwardMsgRequest {
  /** The conversations. */
  cids?: IMConversationID[];
  /** What to send, in the order in which it is shown. */
  msgbody?: BodyItem[];
  /** Kind of the forwarded message. */
  msgtype?: IMMsgType;
  /** The forwarded message. */
  msgid?: string;
}

export interface GroupName {
  /** The group's identifier; 0 for the contacts without one. */
  groupid?: string;
}

export interface IMAtContextRequest {
  /** The tribe. */
  tribeid?: string;
  /** The message in the middle. */
  msgid?: string;
  /** Its sender, as two may have the same identifier; may be empty. */
  fromid?: IMUserID;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
}

export interface IMAtMemberRequest {
  /** The tribe. */
  tribeid?: string;
  /** The member to mention; empty for all members. */
  userid?: IMUserID;
}

export interface IMContactAction {
  /** Who asks. */
  fromid?: IMUserID;
  /** As in the request. */
  gidinpeergroup?: string;
  /** Words for who asks. */
  authinfo?: string;
  /** The request; without it, the newest undecided one of that user. */
  msgid?: string;
}

export interface IMContactVerifyPage {
  /** From this time on, milliseconds since 1970. */
  btime?: string;
  /** Up to this time; 0 for no end. */
  etime?: string;
  /** Where the page starts; 0 at the newest end. */
  msgid?: string;
  /** At most this many; 20 when it is 0, never more than 200. */
  count?: number;
  /** 1: from `msgid` to older ones, 0: to newer ones. */
  gohistory?: number;
  /** 1: without the message `msgid` itself. */
  ignoreboundary?: number;
}

export interface IMConversations {
  /** The conversations. */
  cids?: IMConversationID[];
}

export interface IMDeleteRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** Identifiers of messages. */
  msgids?: string[];
  /** 1: all messages of the conversation. */
  all?: number;
}

export interface IMFolderRequest {
  /** A file or folder below `files` in the data folder. */
  filePath?: string;
}

export interface IMMaxCacheRequest {
  /** At most this many new messages are kept in memory. */
  maxmsgcount?: number;
}

export interface IMMsgRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** Identifier of the message, unique for its sender. */
  msgid?: string;
}

export interface IMMsgsRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** Identifiers of messages. */
  msgids?: string[];
}

export interface IMMultiChatName {
  /** The tribe. */
  tribeid?: string;
  /** The new name. */
  name?: string;
}

export interface IMPageRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** Position where the page starts: time; empty for the newest. */
  msgtime?: string;
  /** Position where the page starts: message; empty for the newest. */
  msgid?: string;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
  /** 1: towards older messages. */
  gohistory?: number;
  /** 1: goes on behind the point from which on the store is complete. */
  ignoreboundary?: number;
  /** 1: fetches from the server what the store lacks. */
  autoroam?: number;
}

export interface IMPasswordLogin {
  /** Who logs in. */
  userid?: IMUserID;
  /** The password. */
  password?: string;
}

export interface IMPictureRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
  /** Position where the page starts: time; empty for the newest. */
  msgtime?: string;
  /** Position where the page starts: picture. */
  pictureid?: string;
  /** 1: goes on behind the point from which on the store is complete. */
  ignoreboundary?: number;
  /** 1: towards older messages. */
  gohistory?: number;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
}

export interface IMResendRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** The own message to send again. */
  msgid?: string;
}

export interface IMRoamRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
  /** 1: goes on until the range is fetched, whatever "count". */
  autoroam?: number;
}

export interface IMSearchRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** A message fits when it contains every one of these. */
  keywords?: string[];
  /** Kinds of message that fit; all when empty. */
  msgtypes?: IMMsgType[];
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
  /** Position where the page starts: time; empty for the newest. */
  msgtime?: string;
  /** Position where the page starts: message; empty for the newest. */
  msgid?: string;
  /** 1: towards older messages. */
  gohistory?: number;
  /** 1: goes on behind the point from which on the store is complete. */
  ignoreboundary?: number;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
  /** 1: by page number, with totals, not by position. */
  needpage?: number;
  /** Number of the page from 1, the newest messages on the first. */
  page?: number;
}

export interface IMSetRoamRequest {
  /** Whether history is roamed. */
  roamstatus?: IMRoaming;
}

export interface IMShieldRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** 1: the peer's automatic replies are ignored. */
  setignore?: number;
}

export interface IMTokenLogin {
  /** Who logs in. */
  userid?: IMUserID;
  /** A token of a login. */
  token?: string;
}

export interface IMTribeList {
  /** The tribes. */
  tribelist?: IMTribeRequest[];
}

export interface IMTribeMemberLevel {
  /** The new level. */
  level?: TribeMemberLevel;
  /** The tribe. */
  tribeid?: string;
  /** The member. */
  userid?: IMUserID;
}

export interface IMTribeMemberSearch {
  /** The tribe. */
  tribeid?: string;
  /** A part of a name; whatever the case. */
  key?: string;
}

export interface IMTribeMembersRequest {
  /** The tribe. */
  tribeid?: string;
  /** The users. */
  memberlist?: IMUserID[];
}

export interface IMTribeNickRequest {
  /** The tribe. */
  tribeid?: string;
  /** The users. */
  listuid?: IMUserID[];
}

export interface IMTribeNickname {
  /** The tribe. */
  tribeid?: string;
  /** The member; for one's own nickname it may be empty. */
  userid?: IMUserID;
  /** The name in this tribe; empty for none. */
  nickname?: string;
}

export interface IMTribeNumber {
  /** The tribe. */
  tribeid?: string;
  /** The new value. */
  num?: number;
}

export interface IMTribeText {
  /** The tribe. */
  tribeid?: string;
  /** The text. */
  str?: string;
}

export interface IMTribeUser {
  /** The tribe. */
  tribeid?: string;
  /** The user. */
  userid?: IMUserID;
}

export interface IMTribeVerifyAction {
  /** Who asked to join, or invited. */
  fromid?: IMUserID;
  /** The tribe. */
  tribeid?: string;
  /** Words that go back with the decision. */
  authinfo?: string;
  /** The verification message. */
  msgid?: string;
}

export interface IMTribeVerifyPage {
  /** From this time on. */
  btime?: string;
  /** Up to and with this time; 0 for no end. */
  etime?: string;
  /** Where to go on; 0 for the newest end. */
  msgid?: string;
  /** At most this many. */
  count?: number;
  /** Not 0: older ones than that, else newer ones. */
  gohistory?: number;
  /** Not 0: a page may be larger than usual. */
  ignoreboundary?: number;
}

export interface IMUsers {
  /** The users. */
  userids?: IMUserID[];
}

export interface IMWithdrawRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** Identifier of the message, unique for its sender. */
  msgid?: string;
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime?: string;
  /** Time of the message by the server's clock, 0 if not known. */
  svrtime?: string;
}

export interface InConversation {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
}

export interface SearchCidRequest {
  /** A message fits when it contains every one of these. */
  keywords?: string[];
  /** Kinds of message that fit; all when empty. */
  msgtypes?: IMMsgType[];
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
}

export interface SendMsgRequest {
  /** The conversation, named by the user it is held with. */
  cid?: IMConversationID;
  /** 1: sent by the client, not typed by its user. */
  autosend?: number;
  /** What to send, in the order in which it is shown. */
  msgbody?: BodyItem[];
}

export interface SentMsgRequest {
  /** The tribe. */
  tribeid?: string;
  /** Identifier of the message, unique for its sender. */
  msgid?: string;
  /** Its sender, as two may have the same identifier; may be empty. */
  fromid?: IMUserID;
  /** Its body as it was handed over; only traced. */
  msgbody?: BodyItem[];
}

export interface TranslateMsgRequest {
  /** The message. */
  msgid?: string;
  /** Its text; in the answer the translated one. */
  msgcontent?: string;
}

export interface TribeAtRequest {
  /** Whom the message mentions. */
  atmsgtype?: TribeAtMsgType;
  /** The members it mentions, when they are named. */
  atmembers?: IMUserID[];
}

export interface TribemgrIMTribeRequest {
  /** The tribe. */
  tribeid?: string;
}

export interface TribemsgEditPicRequest {
  /** The conversations. */
  cids?: TribemsgIMConversationID[];
  /** The digest that the page knows the picture by. */
  fileMD5?: string;
  /** The path of the picture. */
  filepath?: string;
}

export interface TribemsgForwardMsgRequest {
  /** The conversations. */
  cids?: TribemsgIMConversationID[];
  /** What to send, in the order in which it is shown. */
  msgbody?: BodyItem[];
  /** Kind of the forwarded message. */
  msgtype?: IMMsgType;
  /** The forwarded message. */
  msgid?: string;
}

export interface TribemsgIMConversations {
  /** The conversations. */
  cids?: TribemsgIMConversationID[];
}

export interface TribemsgIMDeleteRequest {
  /** The tribe. */
  tribeid?: string;
  /** Identifiers of messages. */
  msgids?: string[];
  /** 1: all messages of the conversation. */
  all?: number;
}

export interface TribemsgIMMsgRequest {
  /** The tribe. */
  tribeid?: string;
  /** Identifier of the message, unique for its sender. */
  msgid?: string;
  /** Its sender, as two may have the same identifier; may be empty. */
  fromid?: IMUserID;
}

export interface TribemsgIMMsgsRequest {
  /** The tribe. */
  tribeid?: string;
  /** Identifiers of messages. */
  msgids?: string[];
}

export interface TribemsgIMPageRequest {
  /** The tribe. */
  tribeid?: string;
  /** Position where the page starts: time; empty for the newest. */
  msgtime?: string;
  /** Position where the page starts: message; empty for the newest. */
  msgid?: string;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
  /** 1: towards older messages. */
  gohistory?: number;
  /** 1: goes on behind the point from which on the store is complete. */
  ignoreboundary?: number;
  /** 1: fetches from the server what the store lacks. */
  autoroam?: number;
}

export interface TribemsgIMPictureRequest {
  /** The tribe. */
  tribeid?: string;
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
  /** Position where the page starts: time; empty for the newest. */
  msgtime?: string;
  /** Position where the page starts: picture. */
  pictureid?: string;
  /** 1: goes on behind the point from which on the store is complete. */
  ignoreboundary?: number;
  /** 1: towards older messages. */
  gohistory?: number;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
}

export interface TribemsgIMResendRequest {
  /** The tribe. */
  tribeid?: string;
  /** The own message to send again. */
  msgid?: string;
}

export interface TribemsgIMRoamRequest {
  /** The tribe. */
  tribeid?: string;
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
  /** 1: goes on until the range is fetched, whatever "count". */
  autoroam?: number;
}

export interface TribemsgIMSearchRequest {
  /** The conversation. */
  cid?: TribemsgIMConversationID;
  /** The senders of messages that fit; all when empty. */
  fromids?: IMUserID[];
  /** How messages that fit relate to the account; all when empty. */
  atrelations?: TribeAtRelation[];
  /** A message fits when it contains every one of these. */
  keywords?: string[];
  /** Kinds of message that fit; all when empty. */
  msgtypes?: IMMsgType[];
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
  /** Position where the page starts: time; empty for the newest. */
  msgtime?: string;
  /** Position where the page starts: message; empty for the newest. */
  msgid?: string;
  /** 1: towards older messages. */
  gohistory?: number;
  /** 1: goes on behind the point from which on the store is complete. */
  ignoreboundary?: number;
  /** At most this many; 0 lets the engine choose. */
  count?: number;
  /** 1: by page number, with totals, not by position. */
  needpage?: number;
  /** Number of the page from 1, the newest messages on the first. */
  page?: number;
}

export interface TribemsgIMWithdrawRequest {
  /** The tribe. */
  tribeid?: string;
  /** Identifier of the message, unique for its sender. */
  msgid?: string;
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime?: string;
  /** Time of the message by the server's clock, 0 if not known. */
  svrtime?: string;
}

export interface TribemsgInConversation {
  /** The tribe. */
  tribeid?: string;
}

export interface TribemsgSearchCidRequest {
  /** The senders of messages that fit; all when empty. */
  fromids?: IMUserID[];
  /** How messages that fit relate to the account; all when empty. */
  atrelations?: TribeAtRelation[];
  /** A message fits when it contains every one of these. */
  keywords?: string[];
  /** Kinds of message that fit; all when empty. */
  msgtypes?: IMMsgType[];
  /** From this time on, milliseconds; empty: from the beginning. */
  btime?: string;
  /** Up to and with this time, milliseconds; empty: to the end. */
  etime?: string;
}

export interface TribemsgSendMsgRequest {
  /** The tribe. */
  tribeid?: string;
  /** 1: sent by the client, not typed by its user. */
  autosend?: number;
  /** What to send, in the order in which it is shown. */
  msgbody?: BodyItem[];
  /** Whom to mention; nobody without it. */
  tribeat?: TribeAtRequest;
}
