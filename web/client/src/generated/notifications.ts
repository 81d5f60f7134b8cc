// Made from the tables of the library by ./dev generate; not edited by hand.
import type {
  Empty,
  CloudFileUpdate,
  ContactChange,
  ContactStatuses,
  EnableNumChange,
  IMContactVerifyMsg,
  IMReadFlags,
  IMTribeRequest,
  IMUserID,
  IMUserRequest,
  MsgsNotify,
  OfflineMsgsNotify,
  PeerInputNotify,
  ResultCode,
  SendMsgStatusNotify,
  TransferUpdate,
  TranslateMsg,
  TranslateSetting,
  TribeActor,
  TribeAtReadedNotify,
  TribeChange,
  TribeCount,
  TribeJoin,
  TribeLevel,
  TribeMemberDisplay,
  TribeMemberStatus,
  TribeNtfImage,
  TribemsgMsgsNotify,
  TribemsgWithdrawNotify,
  WithdrawNotify,
} from "./records.ts";

/**
 * Every notification: its payload, and the routing path that it comes from. Where several paths
 * send one name, the path tells which payload it is.
 */
export interface Notifications {
  /** Somebody is a contact now, is another one than before, or is none. */
  onContactChanged: [payload: ContactChange, path: "im.contact"];
  /** The groups of the list changed. */
  onContactGroupsChanged: [payload: Empty, path: "im.contact"];
  /** Contacts came or went; gathered. */
  onContactStatus: [payload: ContactStatuses, path: "im.contact"];
  /** A request to become a contact came, or was decided on. */
  onContactVerifyMsg: [payload: IMContactVerifyMsg, path: "im.contact"];
  /** A file came into a conversation, changed or was deleted. */
  onUpdateCloudFileMeta: [payload: CloudFileUpdate, path: "im.filetransfer"];
  /** A file's transfer went on or ended. */
  onUpdateTransferInfo: [payload: TransferUpdate, path: "im.filetransfer"];
  /** The account is logged in. */
  onIMLoginOK: [payload: IMUserRequest, path: "im.login"];
  /** A login failed. */
  onIMLoginFailed: [payload: ResultCode, path: "im.login"];
  /** The account was logged out, by the page or by the server. */
  onIMLogouted: [payload: IMUserRequest, path: "im.login"];
  /** The account has a link to its server again. */
  onNetReConnectOK: [payload: IMUserRequest, path: "im.login"];
  /** The account lost its link, and the first try to renew it failed. */
  onNetReConnectFailed: [payload: ResultCode, path: "im.login"];
  /** New messages came. */
  onReceiveNewMsg: [payload: MsgsNotify, path: "im.singlemsg"] | [payload: TribemsgMsgsNotify, path: "im.tribemsg"];
  /** Messages came that were sent while nobody was logged in. */
  onReceiveOfflineMsg: [payload: MsgsNotify, path: "im.singlemsg"] | [payload: OfflineMsgsNotify, path: "im.tribemsg"];
  /** Messages are being sent from this account, also on another device. */
  onSendNewMsg: [payload: MsgsNotify, path: "im.singlemsg"] | [payload: TribemsgMsgsNotify, path: "im.tribemsg"];
  /** A message was sent, or failed. */
  onSendMsgStatus: [payload: SendMsgStatusNotify, path: "im.singlemsg" | "im.tribemsg"];
  /** The peer began or stopped typing. */
  onPeerInputNotify: [payload: PeerInputNotify, path: "im.singlemsg"];
  /** The peer sent a window shake. */
  onShakeMsgNotify: [payload: IMUserID, path: "im.singlemsg"];
  /** A message was translated. */
  onTranslateMsgNotify: [payload: TranslateMsg, path: "im.singlemsg"];
  /** Translation was switched on or off. */
  onTranslateSettingNotify: [payload: TranslateSetting, path: "im.singlemsg"];
  /** The peer has read own messages. */
  onFlagMyMsgReaded: [payload: IMReadFlags, path: "im.singlemsg"];
  /** A message was taken back, by its sender or by this account. */
  onMsgWithdrawNty: [payload: WithdrawNotify, path: "im.singlemsg"] | [payload: TribemsgWithdrawNotify, path: "im.tribemsg"];
  /** The tribe's visitors were cleared. */
  onClearTribeVisitor: [payload: TribeActor, path: "im.tribemgr"];
  /** The tribe was closed. */
  onTribeClose: [payload: TribeActor, path: "im.tribemgr"];
  /** The tribe was enabled again. */
  onEnabledTribe: [payload: IMTribeRequest, path: "im.tribemgr"];
  /** The number of enabled tribes changed; `GetEnableTribeNum` tells it. */
  onEnableTribeNumChange: [payload: EnableNumChange, path: "im.tribemgr"];
  /** The account joined a tribe. */
  onJoinTribe: [payload: TribeJoin, path: "im.tribemgr"];
  /** Somebody joined a tribe. */
  onJoinTribeEx: [payload: TribeJoin, path: "im.tribemgr"];
  /** The account was removed from a tribe. */
  onTribeKickMember: [payload: TribeActor, path: "im.tribemgr"];
  /** Somebody was removed from a tribe. */
  onTribeKickMemberEx: [payload: TribeActor, path: "im.tribemgr"];
  /** The tribe's notice image changed. */
  onTribeNtfTypeChange: [payload: TribeNtfImage, path: "im.tribemgr"];
  /** A member left the tribe. */
  onQuitTribe: [payload: TribeActor, path: "im.tribemgr"];
  /** The tribe was handed over from actor to recipient. */
  onTribeTransfer: [payload: TribeActor, path: "im.tribemgr"];
  /** What the tribe says of itself changed. */
  onTribeBaseInfoChange: [payload: TribeChange, path: "im.tribemgr"];
  /** The bulletin changed. */
  onTribeBulletinUpdate: [payload: IMTribeRequest, path: "im.tribemgr"];
  /** A member's level was changed. */
  onTribeMemberChgLevel: [payload: TribeLevel, path: "im.tribemgr"];
  /** A member came online or went; of tribes whose members were listed. */
  onTribeMemberStatusChange: [payload: TribeMemberStatus, path: "im.tribemgr"];
  /** How many members there are, or are online, changed; gathered, of tribes whose members were listed. */
  onTribeMemberCntChange: [payload: TribeCount, path: "im.tribemgr"];
  /** The account's tribes are known from now on. */
  onTribeShallowLogin: [payload: Empty, path: "im.tribemgr"];
  /** A member has another name to show. */
  onTribeMemberBaseInfoChange: [payload: TribeMemberDisplay, path: "im.tribemgr"];
  /** Mentions were read: by others in own messages, or by the account on some device. */
  onTribeAtMsgReaded: [payload: TribeAtReadedNotify, path: "im.tribemsg"];
  /** Subscription messages came. */
  onReceiveSubscribeMsg: [payload: MsgsNotify, path: "subscribemsg"];
  /** System messages came. */
  onReceiveSysMsg: [payload: MsgsNotify, path: "sysmsg"];
}
