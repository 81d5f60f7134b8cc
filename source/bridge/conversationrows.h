// The rows that modules with conversations have in common. A module's table lists them in its own
// order, with rows of its own between.
#pragma once

#include "source/bridge/bridgeconversation.h"

namespace imsdk::bridge {

template <class M>
struct ConversationRows {
  using Chat = biz::IIMConversation;
  using Mgr = biz::IIMChatMgr;
  using Base = CBridgeConversation;
  using Nothing = biz::IMNothing;

  static constexpr MethodRow kGetNewMsg = Row<M, "GetNewMsg", &Base::GetNewMsg>(
      "The new messages; they count as read when the conversation's window can be seen.");
  static constexpr MethodRow kGetOfflineMsg = Row<M, "GetOfflineMsg", &Base::GetOfflineMsg>(
      "The new messages of the time logged out; marks them read if no others are unread.");
  static constexpr MethodRow kPeekNewMsg =
      Row<M, "PeekNewMsg", &Chat::GetNewMsg>("The new messages; marks nothing read.");
  static constexpr MethodRow kPeekOfflineMsg =
      Row<M, "PeekOfflineMsg", &Base::Fetch<&Chat::GetOfflineMsg, Nothing>>(
          "The new messages that came while nobody was logged in; marks nothing read.");
  static constexpr MethodRow kGetRemoteHisMsg =
      Row<M, "GetRemoteHisMsg", &Base::GetRemoteHisMsg>("A page of the server's history.");
  static constexpr MethodRow kGetLocalHisMsg =
      Row<M, "GetLocalHisMsg", &Chat::GetLocalHisMsg>("A page of the history on this machine.");
  static constexpr MethodRow kGetUnreadCount = Row<M, "GetUnreadCount", &Chat::GetUnreadCount>(
      "The number of unread messages of a conversation.");
  static constexpr MethodRow kGetUnreadCountInBulk = Row<M, "GetUnreadCountInBulk",
                                                         &Mgr::GetUnreadCounts>(
      "The unread counts of several conversations; of all that have messages if none is named.");
  static constexpr MethodRow kSetMsgRead = Row<M, "SetMsgRead", &Base::SetMsgRead>(
      "Marks every message received so far as read; nobody else is told.");
  static constexpr MethodRow kGetReadedBoundary =
      Row<M, "GetReadedBoundary", &Chat::GetReadedBoundary>(
          "The newest received message up to which everything is read; 0 when there is none.");
  static constexpr MethodRow kDeleteLocalMsg = Row<M, "DeleteLocalMsg", &Base::DeleteLocalMsg>(
      "Removes messages from this machine for good; answers their number.");
  static constexpr MethodRow kFastReSendChatMsg =
      Row<M, "FastReSendChatMsg", &Base::ReSendMsg<true>>(
          "Sends a message that failed again, and tries a lost link at once.");
  static constexpr MethodRow kReSendChatMsg =
      Row<M, "ReSendChatMsg", &Base::ReSendMsg<false>>("Sends a message that failed again.");
  static constexpr MethodRow kForwardChatMsg = Row<M, "ForwardChatMsg", &Base::ForwardChatMsg>(
      "Sends a message on to several conversations; the stored one when the body is empty.");
  static constexpr MethodRow kDoChatMsgWithdraw =
      Row<M, "DoChatMsgWithdraw", &Chat::WithdrawMsg>("Takes an own message back.");
  static constexpr MethodRow kSearchMsgByID =
      Row<M, "SearchMsgByID", &Base::Fetch<&Chat::SearchMsgByID, biz::IMMsgRequest>>(
          "The message with this identifier.");
  static constexpr MethodRow kSearchDBMsg = Row<M, "SearchDBMsg", &Base::Search<&Chat::SearchMsg>>(
      "Searches the messages of a conversation.");
  static constexpr MethodRow kSearchDBMsg2 = Row<M, "SearchDBMsg2", &Base::SearchDBMsg2>(
      "Searches the messages of a conversation, or of all when none is named.");
  static constexpr MethodRow kSearchDBMsgCid = Row<M, "SearchDBMsgCid", &Base::SearchDBMsgCid>(
      "The conversations with at least one message that fits.");
  static constexpr MethodRow kRoamMsg =
      Row<M, "RoamMsg", &Chat::RoamMsg>("Fetches messages from the server to this machine.");
  static constexpr MethodRow kClearRoamedTime = Row<M, "ClearRoamedTime", &Chat::ClearRoamedTime>(
      "Forgets how far the history on this machine is complete, so that it is fetched anew.");
  static constexpr MethodRow kGetRoamStatus =
      Row<M, "GetRoamStatus", &Mgr::GetRoamStatus>("Whether the server hands out history.");
  static constexpr MethodRow kSetRoamStatus =
      Row<M, "SetRoamStatus", &Mgr::SetRoamStatus>("Switches the server's history on or off.");
  static constexpr MethodRow kEditPic2SendMsg = Row<M, "EditPic2SendMsg", &Base::EditPic2SendMsg>(
      "Lets the user edit a picture and sends the result to several conversations.");
  static constexpr MethodRow kConvertMsgText2Emotion = Row<M, "ConvertMsgText2Emotion",
                                                           &Base::ConvertMsgText2Emotion>(
      "Makes the body of a typed text: shortcuts of emotions become tokens, the rest stays text.");
  static constexpr MethodRow kSetNewMsgMaxCache =
      Row<M, "SetNewMsgMaxCache", &Mgr::SetNewMsgMaxCache>(
          "Bounds the number of new messages kept in memory; 0 sets the engine's own bound.");
  static constexpr MethodRow kGetDynamicMsg = Row<M, "GetDynamicMsg", &Base::GetDynamicMsg>(
      "The present content of a message that only names it.");

  // Traced by another name in some modules.
  template <Name kHandler>
  static constexpr MethodRow kGetMsgPicture =
      Row<M, "GetMsgPicture", &Chat::GetMsgPicture, kHandler>("Pictures of a conversation.");
};

}  // namespace imsdk::bridge
