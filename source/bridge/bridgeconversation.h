// What single chats and virtual conversations have in common: new messages, local history, unread
// counts.
#pragma once

#include <functional>
#include <vector>

#include "imsdk/biz/single_chat.h"
#include "source/bridge/jsparams/hisrecords.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {

// The base of the modules whose conversations are named by a user. View's thread.
class CBridgeConversation : public CBridgeBase {
 public:
  using CBridgeBase::CBridgeBase;
  using Conversation = RefPtr<biz::IIMConversation>;

  void GetNewMsg(const HisMsgRequest& request, Conversation chat, Call<biz::IMMessagePage> call);
  void PeekNewMsg(const HisMsgRequest& request, Conversation chat, Call<biz::IMMessagePage> call);
  void GetLocalHisMsg(const HisMsgRequest& request, Conversation chat,
                      Call<biz::IMMessagePage> call);
  void GetUnreadCount(const CidRequest& request, Conversation chat, Call<CountAnswer> call);
  void GetUnreadCountInBulk(const CidsRequest& request, Call<UnreadsAnswer> call);
  void SetMsgRead(const CidRequest& request, Conversation chat, Call<NoKeys> call);
  void GetReadedBoundary(const CidRequest& request, Conversation chat,
                         Call<biz::IMMsgPosition> call);
  void DeleteLocalMsg(const DeleteMsgRequest& request, Conversation chat, Call<CountAnswer> call);

  // The target of a handler: the conversation of the request's "cid".
  template <class Request>
  biz::ResultCode Find(const Request& request, Conversation* chat, const CallBase& call) {
    return FindConversation(request.cid, chat, call);
  }

 protected:
  // The account's conversation, null when there is none.
  virtual Conversation GetConversation(const biz::IMUserID& cid) const = 0;
  // The account's conversations, nothing while nobody is logged in.
  virtual std::vector<biz::IMUnreadCount> GetConversations() const = 0;
  virtual bool IsReady() const = 0;

  // Returns what marks as read what a person can see when it is called. Any thread may call it.
  std::function<void()> MarkSeen(const Conversation& chat, const CallBase& call) const;

 private:
  biz::ResultCode FindConversation(const biz::IMUserID& cid, Conversation* chat,
                                   const CallBase& call) const;
};

}  // namespace imsdk::bridge
