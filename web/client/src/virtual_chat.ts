import type { MessagesNotification, SingleChatMethods } from "./single_chat.ts";

/**
 * The methods of "im.virtualmsg": system and subscription messages that look as if a user had sent
 * them. They are as those of "im.singlemsg"; nothing can be sent, withdrawn or reported.
 */
export type VirtualChatMethods = Pick<
  SingleChatMethods,
  | "GetNewMsg"
  | "PeekNewMsg"
  | "GetLocalHisMsg"
  | "GetUnreadCount"
  | "GetUnreadCountInBulk"
  | "SetMsgRead"
  | "GetReadedBoundary"
  | "DeleteLocalMsg"
>;

/** The notifications of virtual conversations. */
export interface VirtualChatNotifications {
  onReceiveSysMsg: MessagesNotification;
  onReceiveSubscribeMsg: MessagesNotification;
}
