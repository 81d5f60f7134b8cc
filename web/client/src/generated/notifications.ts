// Made from the tables of the library by ./dev generate; not edited by hand.
import type {
  IMReadFlags,
  IMUserID,
  IMUserRequest,
  MsgsNotify,
  PeerInputNotify,
  ResultCode,
  SendMsgStatusNotify,
  TranslateMsg,
  TranslateSetting,
  WithdrawNotify,
} from "./records.ts";

/**
 * Every notification: its payload, and the routing path that it comes from. Where several paths
 * send one name, the path tells which payload it is.
 */
export interface Notifications {
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
  onReceiveNewMsg: [payload: MsgsNotify, path: "im.singlemsg"];
  /** Messages came that were sent while nobody was logged in. */
  onReceiveOfflineMsg: [payload: MsgsNotify, path: "im.singlemsg"];
  /** Messages are being sent from this account, also on another device. */
  onSendNewMsg: [payload: MsgsNotify, path: "im.singlemsg"];
  /** A message was sent, or failed. */
  onSendMsgStatus: [payload: SendMsgStatusNotify, path: "im.singlemsg"];
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
  /** A message was taken back, by the peer or by this account. */
  onMsgWithdrawNty: [payload: WithdrawNotify, path: "im.singlemsg"];
  /** Subscription messages came. */
  onReceiveSubscribeMsg: [payload: MsgsNotify, path: "subscribemsg"];
  /** System messages came. */
  onReceiveSysMsg: [payload: MsgsNotify, path: "sysmsg"];
}
