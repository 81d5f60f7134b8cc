// One conversation of an account: with a user, with a tribe, or virtual.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "imsdk/biz/callback.h"
#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/history.h"
#include "imsdk/biz/mentions.h"
#include "imsdk/biz/message.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// The items of a message, held once however many conversations it goes to.
using IMBody = std::shared_ptr<const std::vector<IMBodyItem>>;

// A message to send. An empty pointer is an empty body.
struct IMSendRequest {
  IMBody body;
  bool autosend = false;   // sent by the client itself, not typed by its user
  bool autoreply = false;  // an automatic reply
  // The message that is forwarded, 0 for none. Its kind is `forward_msgtype`; with an empty body
  // the body and kind of the account's stored message are sent.
  std::int64_t forward_msgid = 0;
  std::int32_t forward_msgtype = kMsgText;
  // Whom it mentions; only in a tribe. Nothing of it goes on when a stored message is forwarded.
  IMTribeAt tribeat{};

  static constexpr auto Bounds() {
    return Bounded(Entries("msgbody", &IMSendRequest::body, kMaxBodyItems),
                   Inner("tribeat", &IMSendRequest::tribeat),
                   Whole("msgbody", BoundUnit::kBytes, kMaxMessageBytes),
                   Whole("msgbody", BoundUnit::kContent, kMaxContentBytes));
  }
};

struct IMResendRequest {
  std::int64_t msgid = 0;
  bool at_once = false;  // does not wait for the pause of a lost link: it is tried again now
};

struct IMShieldRequest {
  bool setignore = false;
};

// A note of the client.
struct IMNote {
  std::wstring text;

  static constexpr auto Bounds() { return Bounded(Bytes("text", &IMNote::text, kMaxBodyBytes)); }
};

// Counted, any thread. What the kind of a conversation cannot do is refused with `kEngineRefused`:
// a virtual one has no peer to send to, to roam from or to report to; a tribe has no typing state
// and no automatic replies to shield; only a tribe has mentions. What the account's server cannot
// do is refused with `kEngineUnsupported`.
class IIMConversation : public IKexCOMRefCounted {
 public:
  virtual const IMConversationID& GetCID() const = 0;

  // The new messages: those received and not yet read, as far as the cache holds them. Reads only;
  // answered at once. `outofcache` tells that unread messages were dropped from the bounded cache,
  // or that the cache held fewer than `count`.
  virtual void GetNewMsg(const IMPageRequest& request, IMCallback<IMMessagePage> done) = 0;
  // The new messages that came while the account was not logged in, as far as the cache holds them.
  // Reads only; answered at once. `outofcache` tells that unread messages were dropped from it.
  virtual void GetOfflineMsg(const IMNothing& request, IMCallback<IMMessagePage> done) = 0;
  // Marks every message received so far as read, in the cache at once and in the store. The
  // account's other devices follow. Nobody else is told; `SetFlagsPeerMsgReaded` does that.
  virtual void SetMsgRead(const IMNothing& request, IMCallback<> done) = 0;
  // Answered at once.
  virtual void GetUnreadCount(const IMNothing& request, IMCallback<IMCount> done) = 0;
  // The newest received message up to which everything is read; none when nothing was.
  virtual void GetReadedBoundary(const IMNothing& request, IMCallback<IMMsgPosition> done) = 0;

  // A page of the account's own store. The store is complete from its boundary on; older messages
  // in it may have gaps between them. A page stops at the boundary, unless `ignoreboundary`; with
  // `autoroam` what is missing is fetched from the server first, and a failure of that is the
  // answer only when the store has nothing for the page.
  virtual void GetLocalHisMsg(const IMPageRequest& request, IMCallback<IMMessagePage> done) = 0;
  // A page of the server's store. With `autoroam` the account's store keeps it.
  virtual void GetRemoteHisMsg(const IMPageRequest& request, IMCallback<IMMessagePage> done) = 0;
  // Fetches messages from the server into the store.
  virtual void RoamMsg(const IMRoamRequest& request, IMCallback<IMRoamed> done) = 0;
  // Forgets how far the conversation is complete, so that it is roamed anew.
  virtual void ClearRoamedTime(const IMNothing& request, IMCallback<> done) = 0;
  // The message `msgid`, or `kEngineNotFound`.
  virtual void SearchMsgByID(const IMMsgRequest& request, IMCallback<IMMessagePage> done) = 0;
  virtual void SearchMsg(const IMSearchRequest& request, IMCallback<IMSearchPage> done) = 0;
  virtual void GetMsgPicture(const IMPictureRequest& request, IMCallback<IMPictures> done) = 0;
  // Removes messages from the account's store, on this device only and for good: roaming does not
  // bring them back. Unknown identifiers are passed over; answers the number removed.
  virtual void DeleteLocalMsg(const IMDeleteRequest& request, IMCallback<IMCount> done) = 0;

  // Sends a message. What each word promises:
  // - the answer, good: the message is in the account's store and survives the death of the process
  //   and of the machine; it is sent now or at the next login, and arrives once. `on_send_new_msg`
  //   is raised with it right behind the answer. Negative: refused, nothing was stored and no event
  //   follows. A typing state is answered when it is taken; nothing of it is stored.
  // - `on_send_new_msg`: as the answer, good.
  // - `on_send_msg_status`, good: the message is on the server's disk and is delivered, whatever
  //   happens here; the account's store says so too, or finds it out at the next login. Failed: the
  //   account does not try any more by itself; the message stays, and may be sent again. It comes
  //   once; once more, and good, when a message that was given up turns out to be in the server's
  //   archive. A process that dies between the two raises it after the next login, when the server
  //   has answered.
  // A message that mentions somebody outside a tribe is refused with `kEngineRefused`. Of the users
  // named the server leaves out those whom it does not know; who is no member stays named and is
  // not counted. With `kEngineRefused` a message fails that names nobody it knows
  // (`kTribeUserNotAMember`), and one to all members when the account may not mention all
  // (`kTribeAtAllRefused`).
  virtual void SendMsg(const IMSendRequest& request, IMCallback<> done) = 0;
  // Sends a stored message again, only one that failed; answered at once. Good: it is tried, and
  // `on_send_msg_status` follows; if the process dies before that, the message is still stored, as
  // failed or as one to be sent at the next login. Resending never delivers twice: the server knows
  // the message by its sender and identifier.
  virtual void ReSendMsg(const IMResendRequest& request, IMCallback<> done) = 0;
  // Takes back a message of this account. The server refuses with `kEngineRefused` by rules of its
  // own, for instance when the message is too old, and with `kEngineNotFound` when it does not know
  // it.
  virtual void WithdrawMsg(const IMWithdrawRequest& request, IMCallback<> done) = 0;
  // The flags of the account's own messages; of its newest 200 when none are named. Unknown
  // identifiers are passed over.
  virtual void GetFlagsMyMsgReaded(const IMMsgsRequest& request, IMCallback<IMReadFlags> done) = 0;
  // Tells the peer that these messages of it were read; all that are read and were not reported
  // when none are named. Changes no unread count.
  virtual void SetFlagsPeerMsgReaded(const IMMsgsRequest& request, IMCallback<> done) = 0;
  // Automatic replies of the peer are stored as read and not announced while `setignore` is set.
  // Lasts over restarts.
  virtual void ShieldAutoReply(const IMShieldRequest& request, IMCallback<> done) = 0;
  // Adds a note of the client to the conversation, on this device only: a read message from the
  // peer with `syschatmsg` set. `on_receive_new_msg` is raised with it.
  virtual void AddSysMsg(const IMNote& request, IMCallback<> done) = 0;

  // Mentions (mentions.h). A mention is unread until `SetTribeAtMsgsReaded` names it; reading the
  // conversation does not change that.

  // That a member can be mentioned, and under which name; `kEngineRefused` with
  // `kTribeUserNotAMember` or, for all members, `kTribeAtAllRefused` when not.
  virtual void AtTribeMember(const IMAtMemberRequest& request, IMCallback<IMAtMember> done) = 0;
  // The mention of a stored message, an own one when no sender is named; `kEngineNotFound` when it
  // is not there.
  virtual void GetSendMsgTribeAtInfo(const IMMsgRequest& request, IMCallback<IMTribeAt> done) = 0;
  // The unread mentions of the account here, and the read counts of those of its own messages that
  // are named, as the server knows them. Without names no server is asked. Messages that are not
  // its own or mention nobody are passed over.
  virtual void GetTribeAtMsgUnreadCount(const IMMsgsRequest& request,
                                        IMCallback<IMAtUnread> done) = 0;
  // Who has read an own message that mentions, as the server knows it. `kEngineNotFound` for one
  // that is not the account's or mentions nobody.
  virtual void GetTribeAtMsgUnreadUsers(const IMMsgRequest& request,
                                        IMCallback<IMAtReaders> done) = 0;
  // A page of the server's messages that mention the account; the account's store keeps them. The
  // request's boundary and `autoroam` do not count.
  virtual void RoamTribeAtMsgs(const IMPageRequest& request, IMCallback<IMMessagePage> done) = 0;
  // The messages around a mention, from the server; the account's store keeps them. About as many
  // are older as are newer. `kEngineNotFound` when the server does not know the message.
  // `outofcache` tells that there is nothing further in one of the directions.
  virtual void RoamTribeAtMsgContext(const IMAtContextRequest& request,
                                     IMCallback<IMMessagePage> done) = 0;
  // Marks mentions of the account as read; all unread ones here when none are named. The senders
  // and the account's other devices are told by `on_tribe_at_msg_readed`. What is no unread mention
  // of the account is passed over.
  virtual void SetTribeAtMsgsReaded(const IMMsgsRequest& request, IMCallback<> done) = 0;
  // Searches, in the account's store, the messages of the members whom the account pays attention
  // to; of `fromids` only those count who are among them.
  virtual void SearchAttentionMsg(const IMSearchRequest& request,
                                  IMCallback<IMSearchPage> done) = 0;

 protected:
  ~IIMConversation() = default;
};

}  // namespace imsdk::biz
