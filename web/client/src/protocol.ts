/**
 * The protocol's methods and notifications. Keys are those on the wire, misspellings
 * included. Times are milliseconds since the Unix epoch; they and message identifiers travel as
 * decimal text. A request may leave any key out: the host then reads "", 0 or an empty list.
 */
import type { Empty, Envelope, Plain, UserId } from "./records.ts";
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
