// Made from the tables of the library by ./dev generate; not edited by hand.
import type {
  FileOwnerType,
  IMCIDType,
  IMContactStatus,
  IMContactVerifyType,
  IMFileSearchMethod,
  IMMsgStatus,
  IMMsgType,
  IMNodeType,
  IMReadFlag,
  IMRoaming,
  IMTransferStatus,
  IMTransferType,
  IMTribeType,
  InputStatus,
  TribeAtMsgType,
  TribeAtRelation,
  TribeMemberBasicStatus,
  TribeMemberLevel,
  TribeModifyKey,
  TribeVerifyType,
} from "./values.ts";

/** No keys. */
export type Empty = Record<never, never>;

export interface AsteriskUser {
  /** The application that the user belongs to. */
  appkey: string;
  /** The user's name there. */
  nick: string;
  /** The name to show. */
  display: string;
  /** The path of a picture; may be empty. */
  portrait: string;
}

export interface ChatWindowState {
  /** The conversation. */
  cid: IMUserID;
  /** 1: the person can see the conversation. */
  visible: number;
  /** 1: its window has the person's attention. */
  activated: number;
  /** Whose window it is; missing: the account of the page. */
  account?: IMUserID;
}

export interface CloudFileMeta {
  /** The file's identifier. */
  id: string;
  /** The identifier of its folder; one for a conversation. */
  parentId: string;
  /** Its name, fit for every disk. */
  nodeName: string;
  /** Its size in bytes; -1 when it was deleted. */
  nodeSize: string;
  /** What it is. */
  nodeType: IMNodeType;
  /** The digest of its content. */
  md5: string;
  /** The message that carried it. */
  msginfo: CloudFileMsg;
}

export interface CloudFileMsg {
  /** The message's identifier. */
  msgid: string;
  /** When it was sent, by the sender's clock. */
  localtime: string;
  /** When it was sent, by the server's clock. */
  svrtime: string;
  /** Who sent it. */
  from: IMUserID;
}

export interface CloudFileUpdate {
  /** The file and whose it is. */
  fileInfo: FileRecord;
  /** Where its transfer stands. */
  transferInfo: FileTransferInfo;
}

export interface ContactChange {
  /** The contact in its place. */
  contact: IMListedContact;
  /** 1 when it is in the list no more. */
  removed: number;
}

export interface ContactStatuses {
  /** Those who came or went. */
  list: IMContact[];
}

export interface CoreTribeID {
  /** The tribe's number. */
  llTribeID: string;
}

export interface CoreTribeUser {
  /** The user's name in the account's application. */
  userId: string;
}

export interface CoreUserID {
  /** The application that the user belongs to. */
  strAppKey: string;
  /** The user's name there. */
  strUserID: string;
}

export interface DynamicMsgAnswer {
  /** The present content, a JSON text. */
  content: string;
}

export interface EmotionText {
  /** Kind of the item. */
  type: IMMsgType;
  /** The text; in the answer with emotions as tokens. */
  value: string;
  /** Extra JSON text, carried as it stands. */
  jvale: string;
}

export interface EnableNumChange {
  /** onTribeClose: Who closed the tribe. */
  actor?: IMUserID;
  /** The tribe that was closed or enabled. */
  tribeid: string;
  /** onTribeClose: Nobody. */
  recipient?: IMUserID;
}

export interface FileList {
  /** Where the next page begins; empty when there is none. */
  nextkey: string;
  /** The files, newest first. */
  filesList: FileRecord[];
}

export interface FileRecord {
  /** Whose the file is. */
  type: FileOwnerType;
  /** Of a one-to-one conversation: The application that the user belongs to. */
  appkey?: string;
  /** Of a one-to-one conversation: The user's name there. */
  nick?: string;
  /** Of a tribe: The tribe. */
  tribeid?: string;
  /** The file. */
  fileMeta: CloudFileMeta;
}

export interface FileTransferInfo {
  /** How far it has come, in percent. */
  progress: number;
  /** Where it stands. */
  status: IMTransferStatus;
  /** Which way the file goes. */
  type: IMTransferType;
  /** Where the file is in the data folder; empty while it is not here whole. */
  filePath: string;
}

export interface FoundFiles {
  /** Where the next page begins; empty when there is none. */
  nextkey: string;
  /** The files, newest first. */
  filesList: FileRecord[];
  /** What was looked at. */
  searchMethod: IMFileSearchMethod;
}

export interface IMAtMember {
  /** The member to mention; empty for all members. */
  userid: IMUserID;
  /** The name to show in the tribe; empty for all. */
  display: string;
}

export interface IMAtReadCounts {
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** How many of those it mentions have read it. */
  readedcount: number;
  /** How many of them have not. */
  unreadcount: number;
}

export interface IMAtReaders {
  /** Who has not read the mention. */
  unreadusers: IMUserID[];
  /** Who has read it. */
  readedusers: IMUserID[];
}

export interface IMAtUnread {
  /** The number of unread mentions of the account. */
  count: number;
  /** How far own messages that mention were read. */
  counts: IMAtReadCounts[];
}

export interface IMContact {
  /** The application that the user belongs to. */
  appkey: string;
  /** The user's name there. */
  nick: string;
  /** Whether the user is there. */
  status: IMContactStatus;
  /** The name to show. */
  display: string;
  /** The path of a picture, as tokens write it; may be empty. */
  portrait: string;
  /** How many of the user's messages are unread. */
  unreadnum: number;
}

export interface IMContactGroup {
  /** The group's identifier. */
  groupid: string;
  /** The group that it is part of; 0 for none. */
  parentid: string;
  /** Its name. */
  name: string;
}

export interface IMContactGroupInfo {
  /** Its sub-groups. */
  subgroups: IMContactGroup[];
  /** Its members, without those of sub-groups. */
  uids: IMUserID[];
}

export interface IMContactVerifyMsg {
  /** Who asks; of an answer, who decided. */
  fromid: IMContact;
  /** That user's name. */
  fromname: string;
  /** When it came, milliseconds since 1970. */
  msgtime: string;
  /** The message's identifier. */
  msgid: string;
  /** The words that came with it. */
  authinfo: string;
  /** The group in the list of who asks. */
  gidinpeergroup: string;
  /** What it is, or what became of it. */
  type: IMContactVerifyType;
}

export interface IMConversationID {
  /** The application that the user belongs to. */
  appkey: string;
  /** The user's name there. */
  nick: string;
}

export interface IMCount {
  /** The number of messages. */
  count: number;
}

export interface IMDisplayName {
  /** The application that the user belongs to. */
  appkey: string;
  /** The user's name there. */
  nick: string;
  /** The name to show. */
  display: string;
}

export interface IMEnableTribeNum {
  /** How many tribes the account has. */
  total: number;
  /** How many of them are not closed. */
  enable: number;
}

export interface IMFileExpireTime {
  /** Milliseconds for which a file is kept; 0 for no end. */
  expireTime: string;
}

export interface IMFlagMsgReaded {
  /** The conversation. */
  cid: IMConversationID;
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime: string;
  /** Whether the peer has read it. */
  readflag: IMReadFlag;
}

export interface IMListedContact {
  /** The contact. */
  userid: IMContact;
  /** The group that it is in; 0 for none. */
  groupid: string;
  /** 1 when the account has marked it. */
  asterisk: number;
}

export interface IMLoginGrant {
  /** Who is logged in. */
  userid: IMUserID;
  /** Logs in again without the password. */
  token: string;
  /** End of the token's life, milliseconds. */
  expires: string;
}

export interface IMMessage {
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime: string;
  /** The conversation. */
  cid: IMConversationID;
  /** The sender. */
  fromid: IMUserID;
  /** The receiver. */
  toid: IMUserID;
  /** Kind of the message. */
  msgtype: IMMsgType;
  /** State of the message. */
  msgstatus: IMMsgStatus;
  /** Text, with pictures, files and emotions as tokens. */
  msgbody: string;
  /** Time of the message by the server's clock, 0 if not known. */
  svrtime: string;
  /** Whether it was read. */
  readflag: IMReadFlag;
  /** Extra information. */
  extinfo: IMMessageExt;
}

export interface IMMessageExt {
  /** Free data carried with the message. */
  others: string;
  /** 1: the read state is fixed, it is not reported again. */
  fixmsgread: number;
  /** 1: an automatic reply. */
  autochatmsg: number;
  /** 1: a note of the client. */
  syschatmsg: number;
}

export interface IMMessagePage {
  /** 1: nothing further there, or messages were dropped. */
  outofcache: number;
  /** The messages, oldest first. */
  msgs: IMMessage[];
}

export interface IMMsgPicture {
  /** Identifier of the picture in its conversation. */
  pictureid: string;
  /** The file's path as in the message's token. */
  url: string;
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** Place among the pictures of the message, from 0. */
  index: number;
  /** Time of the message by its sender's clock, milliseconds. */
  mgstime: string;
  /** The sender. */
  fromid: IMUserID;
  /** The receiver. */
  toid: IMUserID;
  /** Free data carried with the message. */
  extInfo: string;
}

export interface IMMsgPosition {
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime: string;
  /** Identifier of the message, unique for its sender. */
  msgid: string;
}

export interface IMMsgWithdraw {
  /** The conversation. */
  cid: IMConversationID;
  /** The sender. */
  fromid: IMUserID;
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime: string;
  /** Time of the message by the server's clock, 0 if not known. */
  svrtime: string;
}

export interface IMPictures {
  /** The pictures, oldest first. */
  pictures: IMMsgPicture[];
}

export interface IMReadFlags {
  /** Messages and their flags. */
  items: IMFlagMsgReaded[];
}

export interface IMRoamStatus {
  /** No history from before this time, milliseconds. */
  opentime: string;
  /** Whether history is roamed. */
  roamstatus: IMRoaming;
}

export interface IMRoamed {
  /** The number of messages that came. */
  roamedcount: number;
  /** Of them those that the store did not have. */
  affectcount: number;
}

export interface IMTribeAt {
  /** Whether the account has read the mention of it. */
  msgreaded: IMReadFlag;
  /** Whom the message mentions. */
  atmsgtype: TribeAtMsgType;
  /** How it relates to the account. */
  relation2me: TribeAtRelation;
  /** The members it mentions; empty unless they are named. */
  atmembers: IMUserID[];
}

export interface IMTribeClass {
  /** Number of the class. */
  index: number;
  /** Its name. */
  name: string;
}

export interface IMTribeClasses {
  /** The classes that a tribe can have. */
  classlist: IMTribeClass[];
}

export interface IMTribeDisplayNick {
  /** The member. */
  userid: IMUserID;
  /** The name to show in this tribe. */
  display: string;
}

export interface IMTribeDisplayNicks {
  /** The names of those who are members, in the order of the request. */
  nicklist: IMTribeDisplayNick[];
}

export interface IMTribeMember {
  /** The application that the member belongs to. */
  appkey: string;
  /** The member's name there. */
  nick: string;
  /** Whether the member is online. */
  status: TribeMemberBasicStatus;
  /** The name to show in this tribe. */
  display: string;
  /** The member's own name. */
  name: string;
  /** The member's picture; empty for none. */
  portrait: string;
  /** How active the member was lately, 0 to 5. */
  activelevel: number;
  /** What the member is here. */
  level: TribeMemberLevel;
}

export interface IMTribeMembers {
  /** The members. */
  memberlist: IMTribeMember[];
}

export interface IMTribeNicknameValue {
  /** The account's name in this tribe; empty for none. */
  nickname: string;
}

export interface IMTribeNumberValue {
  /** The value. */
  num: number;
}

export interface IMTribeRequest {
  /** The tribe. */
  tribeid: string;
}

export interface IMTribeRoster {
  /** How many members there are. */
  total: number;
  /** How many of them are online. */
  online: number;
  /** All of them, the highest level first. */
  memberlist: IMTribeMember[];
}

export interface IMTribeTextValue {
  /** The text. */
  str: string;
}

export interface IMUnreadCount {
  /** The conversation. */
  cid: IMConversationID;
  /** The number of its unread messages. */
  count: number;
}

export interface IMUnreads {
  /** Unread counts by conversation. */
  unreads: IMUnreadCount[];
}

export interface IMUserID {
  /** The application that the user belongs to. */
  appkey: string;
  /** The user's name there. */
  nick: string;
}

export interface IMUserRequest {
  /** The account. */
  userid: IMUserID;
}

export interface MsgsNotify {
  /** The messages, oldest first. */
  msgs: IMMessage[];
}

export interface OfflineMsgsNotify {
  /** "success". */
  result: string;
  /** The messages, oldest first. */
  msgs: TribemsgIMMessage[];
}

export interface PeerInputNotify {
  /** The typing state; over after some seconds. */
  value: InputStatus;
  /** The peer. */
  cid: IMUserID;
}

export interface QuittedTribes {
  /** Tribes that were left, the latest first. */
  tribeids: TribeSummary[];
}

export interface ResultCode {
  /** 0 or more for success, a negative code for a failure. */
  code: number;
  /** A code that tells more of a failure. */
  subcode: number;
  /** "success", "failed", or a text for the page's developer. */
  result: string;
}

export interface SearchAnswer {
  /** The conversation, named by the user it is held with. */
  cid: IMConversationID;
  /** A message fits when it contains every one of these. */
  keywords: string[];
  /** Kinds of message that fit; all when empty. */
  msgtypes: IMMsgType[];
  /** Number of this page; 0 by position. */
  currentpage: number;
  /** Number of pages; 0 by position. */
  totalpage: number;
  /** Number of messages that fit; 0 by position. */
  totalcount: number;
  /** The messages, oldest first. */
  msgs: IMMessage[];
}

export interface SearchCidAnswer {
  /** Kinds of message that fit; all when empty. */
  msgtypes: IMMsgType[];
  /** The conversations. */
  cids: IMConversationID[];
}

export interface SendMsgStatusNotify {
  /** 0 when the message was sent, else why not. */
  code: number;
  /** A code that tells more of a failure. */
  subcode: number;
  /** Kind of the message. */
  msgtype: IMMsgType;
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** Time of the message by the server's clock, 0 if not known. */
  svrtime: string;
  /** "success", "failed", or why it failed. */
  result: string;
}

export interface ShallowTribe {
  /** What the account is there. */
  mylevel: TribeMemberLevel;
  /** The tribe in short, not only its identifier. */
  tribeid: TribeSummary;
  /** What it says of itself. */
  signature: string;
  /** What kind of tribe it is. */
  type: IMTribeType;
}

export interface ShallowTribes {
  /** The account's tribes. */
  tribelist: ShallowTribe[];
}

export interface ShallowTribesEx {
  /** Those of the tribes that are the account's. */
  tribelist: TribeNtfImages[];
}

export interface TransferAnswer {
  /** Where the file's transfer stands. */
  transferInfo: FileTransferInfo;
}

export interface TransferUpdate {
  /** Whose the file is. */
  type: FileOwnerType;
  /** Of a one-to-one conversation: The application that the user belongs to. */
  appkey?: string;
  /** Of a one-to-one conversation: The user's name there. */
  nick?: string;
  /** Of a tribe: The tribe. */
  tribeid?: string;
  /** The file's identifier. */
  id: string;
  /** Where its transfer stands. */
  transferInfo: FileTransferInfo;
}

export interface TranslateMsg {
  /** The message. */
  msgid: string;
  /** Its text; in the answer the translated one. */
  msgcontent: string;
}

export interface TranslateSetting {
  /** 1: messages are translated. */
  enable: number;
}

export interface TribeActor {
  /** Who did it. */
  actor: IMUserID;
  /** The tribe. */
  tribeid: string;
  /** Whom it was done to; may be the actor. */
  recipient: IMUserID;
}

export interface TribeAtReadedNotify {
  /** The tribe. */
  tribeid: string;
  /** Who has read: other members, or the account itself. */
  readers: IMUserID[];
  /** The messages, with how far they were read; 0 and 0 for those of others. */
  counts: IMAtReadCounts[];
}

export interface TribeBaseInfo {
  /** The tribe's name. */
  tribename: string;
  /** Its owner. */
  ownid: IMUserID;
  /** The tribe. */
  tribeid: string;
  /** Its description. */
  des: string;
  /** Its picture; empty for none. */
  portrait: string;
  /** Its class, see `GetAllClass`. */
  classtype: number;
  /** Its level: it grows with the members. */
  level: number;
}

export interface TribeBlackItem {
  /** Who may not join. */
  userid: IMUserID;
  /** The name to show. */
  nick: string;
  /** The user's picture; empty for none. */
  portrait: string;
  /** Since when. */
  addtime: number;
}

export interface TribeBlackItems {
  /** Who is on the black list. */
  list: TribeBlackItem[];
}

export interface TribeChange {
  /** The tribe. */
  tribeid: string;
  /** What changed. */
  detail: TribeChangeItem[];
}

export interface TribeChangeItem {
  /** What changed. */
  key: TribeModifyKey;
  /** The new value; numbers in decimal form. */
  value: string;
}

export interface TribeCount {
  /** The tribe. */
  tribeid: string;
  /** How many members are online. */
  online: number;
  /** How many members there are. */
  total: number;
}

export interface TribeJoin {
  /** Who did it. */
  actor: IMUserID;
  /** The tribe. */
  tribeid: string;
  /** Whom it was done to; may be the actor. */
  recipient: IMUserID;
  /** The new member. */
  info: IMTribeMember;
}

export interface TribeLevel {
  /** Who did it. */
  actor: IMUserID;
  /** The tribe. */
  tribeid: string;
  /** Whom it was done to; may be the actor. */
  recipient: IMUserID;
  /** The new level. */
  level: TribeMemberLevel;
}

export interface TribeMemberDisplay {
  /** The tribe. */
  tribeid: string;
  /** The member. */
  userid: IMUserID;
  /** The name to show. */
  display: string;
}

export interface TribeMemberStatus {
  /** The tribe. */
  tribeid: string;
  /** The member. */
  userid: IMUserID;
  /** Whether the member is online. */
  status: TribeMemberBasicStatus;
}

export interface TribeNtfImage {
  /** The tribe. */
  tribeid: string;
  /** The new picture. */
  ntfImage: string;
}

export interface TribeNtfImages {
  /** The picture beside its notices; empty for none. */
  ntfImage: string;
  /** The mark of a business, or empty. */
  businessImage: string;
  /** The tribe. */
  tribeid: string;
  /** How many of its messages are unread. */
  unreadNum: number;
}

export interface TribeSummary {
  /** The tribe. */
  tribeid: string;
  /** The name to show. */
  display: string;
  /** Its picture; empty for none. */
  portrait: string;
  /** How many of its messages are unread. */
  unreadnum: number;
  /** What kind of tribe it is. */
  type: IMTribeType;
}

export interface TribeVerifyMsg {
  /** Who asked to join, or invited. */
  fromid: IMUserID;
  /** The name of that user. */
  fromname: string;
  /** The tribe. */
  tribeid: string;
  /** Its name. */
  tribename: string;
  /** When it was asked. */
  msgtime: number;
  /** What names the message in a decision. */
  msgid: string;
  /** The words that came with it. */
  authinfo: string;
  /** Who has decided; empty while it is open. */
  managerid: IMUserID;
  /** What it is. */
  type: TribeVerifyType;
}

export interface TribeVerifyMsgs {
  /** The messages, oldest first. */
  msgs: TribeVerifyMsg[];
}

export interface TribemsgIMConversationID {
  /** The tribe. */
  tribeid: string;
  /** What the conversation is held with. */
  type: IMCIDType;
}

export interface TribemsgIMMessage {
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime: string;
  /** The conversation. */
  cid: TribemsgIMConversationID;
  /** The sender. */
  fromid: IMUserID;
  /** Kind of the message. */
  msgtype: IMMsgType;
  /** Whom it mentions. */
  tribeat: IMTribeAt;
  /** State of the message. */
  msgstatus: IMMsgStatus;
  /** Text, with pictures, files and emotions as tokens. */
  msgbody: string;
  /** Time of the message by the server's clock, 0 if not known. */
  svrtime: string;
  /** Extra information. */
  extinfo: IMMessageExt;
}

export interface TribemsgIMMessagePage {
  /** 1: nothing further there, or messages were dropped. */
  outofcache: number;
  /** The messages, oldest first. */
  msgs: TribemsgIMMessage[];
}

export interface TribemsgIMMsgWithdraw {
  /** The conversation. */
  cid: TribemsgIMConversationID;
  /** The sender. */
  fromid: IMUserID;
  /** Identifier of the message, unique for its sender. */
  msgid: string;
  /** Time of the message by its sender's clock, milliseconds. */
  msgtime: string;
  /** Time of the message by the server's clock, 0 if not known. */
  svrtime: string;
}

export interface TribemsgIMUnreadCount {
  /** The conversation. */
  cid: TribemsgIMConversationID;
  /** The number of its unread messages. */
  count: number;
}

export interface TribemsgIMUnreads {
  /** Unread counts by conversation. */
  unreads: TribemsgIMUnreadCount[];
}

export interface TribemsgMsgsNotify {
  /** The messages, oldest first. */
  msgs: TribemsgIMMessage[];
}

export interface TribemsgSearchAnswer {
  /** The conversation. */
  cid: TribemsgIMConversationID;
  /** The senders of messages that fit; all when empty. */
  fromids: IMUserID[];
  /** A message fits when it contains every one of these. */
  keywords: string[];
  /** Kinds of message that fit; all when empty. */
  msgtypes: IMMsgType[];
  /** How messages that fit relate to the account; all when empty. */
  atrelations: TribeAtRelation[];
  /** Number of this page; 0 by position. */
  currentpage: number;
  /** Number of pages; 0 by position. */
  totalpage: number;
  /** Number of messages that fit; 0 by position. */
  totalcount: number;
  /** The messages, oldest first. */
  msgs: TribemsgIMMessage[];
}

export interface TribemsgSearchCidAnswer {
  /** Kinds of message that fit; all when empty. */
  msgtypes: IMMsgType[];
  /** The conversations. */
  cids: TribemsgIMConversationID[];
}

export interface TribemsgWithdrawNotify {
  /** 0 or more for success, a negative code for a failure. */
  code: number;
  /** A code that tells more of a failure. */
  subcode: number;
  /** "success", "failed", or a text for the page's developer. */
  result: string;
  /** The messages taken back. */
  withdraws: TribemsgIMMsgWithdraw[];
}

export interface UserNick {
  /** The long identifier, as it was asked for. */
  uid: string;
  /** The name to show; empty when there is none. */
  snick: string;
  /** 1 when there is such a user. */
  is_valid: number;
}

export interface WithdrawNotify {
  /** 0 or more for success, a negative code for a failure. */
  code: number;
  /** A code that tells more of a failure. */
  subcode: number;
  /** "success", "failed", or a text for the page's developer. */
  result: string;
  /** The messages taken back. */
  withdraws: IMMsgWithdraw[];
}
