// One-to-one conversations of one account.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "imsdk/biz/history.h"
#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/event.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// How a message is sent.
struct IMSendOptions {
  bool autosend = false;   // sent by the client itself, not typed by its user
  bool autoreply = false;  // an automatic reply
  // The message that is forwarded, 0 for none. Its kind is `forward_msgtype`; with an empty body
  // the body and kind of the account's stored message are sent.
  std::int64_t forward_msgid = 0;
  std::int32_t forward_msgtype = kMsgText;
};

// One conversation. Counted, any thread; operations without a callback do not wait for a disk or
// the server.
class IIMConversation : public IKexCOMRefCounted {
 public:
  virtual const IMUserID& GetCID() const = 0;

  // The new messages: those received and not yet read, as far as the cache holds them. Reads only.
  // `outofcache` tells that unread messages were dropped from the bounded cache, or that the cache
  // held fewer than `count`.
  virtual IMMessagePage GetNewMsg(const IMPageRequest& request) = 0;
  // The new messages that came while the account was not logged in. Reads only.
  virtual void GetOfflineMsg(IMPageCallback done) = 0;
  // Marks every message received so far as read, in the cache at once and in the store. The
  // account's other devices follow. The peer is not told; `SetFlagsPeerMsgReaded` does that.
  virtual void SetNewMsgReaded(IMDoneCallback done) = 0;
  virtual std::int32_t GetUnreadCount() const = 0;
  // The newest received message up to which everything is read; none when nothing was.
  virtual void GetReadedBoundary(IMPositionCallback done) = 0;

  // A page of the account's own store. The store is complete from its boundary on; older messages
  // in it may have gaps between them. A page stops at the boundary, unless `ignoreboundary`; with
  // `autoroam` what is missing is fetched from the server first, and a failure of that is the
  // answer only when the store has nothing for the page.
  virtual void GetLocalHisMsg(const IMPageRequest& request, IMPageCallback done) = 0;
  // A page of the server's store. With `autoroam` the account's store keeps it.
  virtual void GetRemoteHisMsg(const IMPageRequest& request, IMPageCallback done) = 0;
  // Fetches messages from the server into the store.
  virtual void RoamMsg(const IMRoamRequest& request, IMRoamCallback done) = 0;
  // Forgets how far the conversation is complete, so that it is roamed anew.
  virtual void ClearRoamedTime(IMDoneCallback done) = 0;
  // The message `msgid`, or `kEngineNotFound`.
  virtual void SearchMsgByID(std::int64_t msgid, IMPageCallback done) = 0;
  virtual void SearchMsg(const IMSearchRequest& request, IMSearchCallback done) = 0;
  virtual void GetMsgPicture(const IMPictureRequest& request, IMPicturesCallback done) = 0;
  // Removes messages from the account's store, on this device only and for good: roaming does not
  // bring them back. Unknown identifiers are passed over; `done` gets the number removed.
  virtual void DeleteLocalMsg(const std::vector<std::int64_t>& msgids, IMCountCallback done) = 0;
  // The same for all messages up to now.
  virtual void DeleteAllLocalMsg(IMCountCallback done) = 0;

  // Sends a message. Returns 0 or more when it was taken: it is in the store, `on_send_new_msg`
  // has been or will be raised with it, and `on_send_msg_status` follows once. A negative value is
  // an `EngineCode`: refused, nothing was stored.
  virtual std::int32_t SendMsg(std::vector<IMBodyItem> body, const IMSendOptions& options) = 0;
  // Sends the stored message `msgid` again; only one that failed. Returns as `SendMsg`. Resending
  // never delivers twice: the server knows the message by its identifier. `at_once` does not wait
  // for the pause of a lost link: the link is tried again now.
  virtual std::int32_t ReSendMsg(std::int64_t msgid, bool at_once) = 0;
  // Takes back a message of this account. The server refuses with `kEngineRefused` when it is too
  // old, and with `kEngineNotFound` when it does not know it.
  virtual void WithdrawMsg(std::int64_t msgid, IMDoneCallback done) = 0;
  // The flags of the account's own messages; of its newest 200 when `msgids` is empty. Unknown
  // identifiers are passed over.
  virtual void GetFlagsMyMsgReaded(const std::vector<std::int64_t>& msgids,
                                   IMFlagsCallback done) = 0;
  // Tells the peer that these messages of it were read; all that are read and were not reported
  // when `msgids` is empty. Changes no unread count.
  virtual void SetFlagsPeerMsgReaded(const std::vector<std::int64_t>& msgids,
                                     IMDoneCallback done) = 0;
  // Automatic replies of the peer are stored as read and not announced while `ignore` is set. Lasts
  // over restarts.
  virtual void ShieldAutoReply(bool ignore, IMDoneCallback done) = 0;
  // Adds a note of the client to the conversation, on this device only: a read message from the
  // peer with `syschatmsg` set. `on_receive_new_msg` is raised with it.
  virtual void AddSysMsg(const std::wstring& text, IMDoneCallback done) = 0;

 protected:
  ~IIMConversation() = default;
};

// One conversation in a list.
struct IMUnreadCount {
  IMUserID cid;
  std::int32_t count = 0;
};

// Single-chat events of one account. Raised on engine threads, in the order in which things
// happened to the account. The two lists of the message events run side by side: the
// conversation and its message.
struct IMSingleChatEvents {
  base::event<void(const std::vector<IMUserID>&, const std::vector<IMMessage>&)> on_receive_new_msg;
  // The truth value tells whether more offline messages follow. The lists are empty when more were
  // promised and none of those that came is to be told of.
  base::event<void(bool, const std::vector<IMUserID>&, const std::vector<IMMessage>&)>
      on_receive_offline_msg;
  // Also for a message that another device of the account sent; it has its final status then.
  base::event<void(const std::vector<IMUserID>&, const std::vector<IMMessage>&)> on_send_new_msg;
  // Conversation, kind, msgid, server time (0 when it failed), outcome.
  base::event<void(const IMUserID&, IMMsgType, std::int64_t, std::int64_t, const ResultCode&)>
      on_send_msg_status;
  // The peer's typing state. It is not repeated; a state of typing is over after some seconds.
  base::event<void(const IMUserID&, IMInputStatus)> on_peer_input;
  // The peer shook the window. Comes after the event of the message that carries the shake, and
  // not for offline messages.
  base::event<void(const IMUserID&)> on_shake_msg;
  // The peer has reported messages of this account read.
  base::event<void(const IMUserID&, const std::vector<IMFlagMsgReaded>&)> on_flag_my_msg_readed;
  // A message was taken back, by the peer or by this account.
  base::event<void(const IMUserID&, const IMMsgWithdraw&, const ResultCode&)> on_msg_withdraw;
};

// The conversations of one account. Counted, any thread.
class IIMSingleChatMgr : public IKexCOMRefCounted {
 public:
  // The conversation with `cid`, made when it is new. Null when `cid` cannot name a user (a part
  // is empty or over 256 UTF-16 code units) or the account is logged out.
  virtual RefPtr<IIMConversation> GetConversation(const IMUserID& cid) = 0;
  // Every conversation that has a message, the one with the newest message first.
  virtual std::vector<IMUnreadCount> GetConversations() = 0;
  // Searches all conversations.
  virtual void SearchMsg(const IMSearchRequest& request, IMSearchCallback done) = 0;
  // The conversations with at least one message that fits; keywords, kinds and times count.
  virtual void SearchConversations(const IMSearchRequest& request, IMUsersCallback done) = 0;
  // At most this many new messages are kept in memory; the oldest ones give way, and are still in
  // the store. 0 or less sets the engine's own bound, which is also the largest one.
  virtual void SetNewMsgMaxCache(std::int32_t count) = 0;
  virtual void GetRoamStatus(IMRoamStatusCallback done) = 0;
  // `status` is an `IMRoaming`; anything else is refused with `kEngineRefused`. Switching roaming
  // on sets its open time to now.
  virtual void SetRoamStatus(std::int32_t status, IMDoneCallback done) = 0;
  // Lives as long as the manager.
  virtual IMSingleChatEvents& Events() = 0;

 protected:
  ~IIMSingleChatMgr() = default;
};

}  // namespace imsdk::biz
