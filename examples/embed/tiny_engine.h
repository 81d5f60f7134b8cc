// A messaging engine in one file: accounts with one password, and peers that repeat what they hear.
// It keeps nothing and talks to nobody; what it shows is which contracts an engine implements. What
// it cannot do it refuses with `kEngineUnsupported`.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "imsdk/biz/account.h"

namespace tiny {

namespace biz = imsdk::biz;

inline biz::ResultCode Unsupported() {
  return {biz::kEngineUnsupported, 0, L"the tiny engine cannot do that"};
}

// The operations that are refused, one line each.
class Conversation : public RefPtrCounted<biz::IIMConversation> {
 public:
  using Done = biz::IMCallback<>;
  using Page = biz::IMCallback<biz::IMMessagePage>;
  using Count = biz::IMCallback<biz::IMCount>;
  template <class... Answer>
  static void Refuse(const biz::IMCallback<Answer...>& done) {
    done(Unsupported(), Answer()...);
  }

  void GetOfflineMsg(const biz::IMNothing&, Page done) override { Refuse(done); }
  void GetReadedBoundary(const biz::IMNothing&, biz::IMCallback<biz::IMMsgPosition> done) override {
    Refuse(done);
  }
  void GetLocalHisMsg(const biz::IMPageRequest&, Page done) override { Refuse(done); }
  void GetRemoteHisMsg(const biz::IMPageRequest&, Page done) override { Refuse(done); }
  void RoamMsg(const biz::IMRoamRequest&, biz::IMCallback<biz::IMRoamed> done) override {
    Refuse(done);
  }
  void ClearRoamedTime(const biz::IMNothing&, Done done) override { Refuse(done); }
  void SearchMsgByID(const biz::IMMsgRequest&, Page done) override { Refuse(done); }
  void SearchMsg(const biz::IMSearchRequest&, biz::IMCallback<biz::IMSearchPage> done) override {
    Refuse(done);
  }
  void GetMsgPicture(const biz::IMPictureRequest&, biz::IMCallback<biz::IMPictures> done) override {
    Refuse(done);
  }
  void DeleteLocalMsg(const biz::IMDeleteRequest&, Count done) override { Refuse(done); }
  void ReSendMsg(const biz::IMResendRequest&, Done done) override { Refuse(done); }
  void WithdrawMsg(const biz::IMWithdrawRequest&, Done done) override { Refuse(done); }
  void GetFlagsMyMsgReaded(const biz::IMMsgsRequest&,
                           biz::IMCallback<biz::IMReadFlags> done) override {
    Refuse(done);
  }
  void SetFlagsPeerMsgReaded(const biz::IMMsgsRequest&, Done done) override { Refuse(done); }
  void ShieldAutoReply(const biz::IMShieldRequest&, Done done) override { Refuse(done); }
  void AddSysMsg(const biz::IMNote&, Done done) override { Refuse(done); }
  void AtTribeMember(const biz::IMAtMemberRequest&,
                     biz::IMCallback<biz::IMAtMember> done) override {
    Refuse(done);
  }
  void GetSendMsgTribeAtInfo(const biz::IMMsgRequest&,
                             biz::IMCallback<biz::IMTribeAt> done) override {
    Refuse(done);
  }
  void GetTribeAtMsgUnreadCount(const biz::IMMsgsRequest&,
                                biz::IMCallback<biz::IMAtUnread> done) override {
    Refuse(done);
  }
  void GetTribeAtMsgUnreadUsers(const biz::IMMsgRequest&,
                                biz::IMCallback<biz::IMAtReaders> done) override {
    Refuse(done);
  }
  void RoamTribeAtMsgs(const biz::IMPageRequest&, Page done) override { Refuse(done); }
  void RoamTribeAtMsgContext(const biz::IMAtContextRequest&, Page done) override { Refuse(done); }
  void SetTribeAtMsgsReaded(const biz::IMMsgsRequest&, Done done) override { Refuse(done); }
  void SearchAttentionMsg(const biz::IMSearchRequest&,
                          biz::IMCallback<biz::IMSearchPage> done) override {
    Refuse(done);
  }
};

// The conversations of one kind: `I` is the manager's contract, `Raised` its events. There are
// none.
template <class I, class Raised>
class NoChats : public RefPtrCounted<I> {
 public:
  RefPtr<biz::IIMConversation> GetConversation(const biz::IMConversationID&) override { return {}; }
  void GetUnreadCounts(const biz::IMConversations&, biz::IMCallback<biz::IMUnreads> done) override {
    done({}, {});
  }
  void SearchMsg(const biz::IMSearchRequest&, biz::IMCallback<biz::IMSearchPage> done) override {
    Conversation::Refuse(done);
  }
  void SearchConversations(const biz::IMSearchRequest&,
                           biz::IMCallback<biz::IMConversations> done) override {
    Conversation::Refuse(done);
  }
  void SetNewMsgMaxCache(const biz::IMMaxCacheRequest&, biz::IMCallback<> done) override {
    Conversation::Refuse(done);
  }
  void GetRoamStatus(const biz::IMNothing&, biz::IMCallback<biz::IMRoamStatus> done) override {
    Conversation::Refuse(done);
  }
  void SetRoamStatus(const biz::IMSetRoamRequest&, biz::IMCallback<> done) override {
    Conversation::Refuse(done);
  }
  Raised& Events() override { return events_; }

 private:
  Raised events_;
};

class Chats;

// A chat with a peer that repeats what it hears.
class EchoChat final : public Conversation {
 public:
  EchoChat(biz::IMConversationID cid, biz::IMUserID self, RefPtr<Chats> chats)
      : cid_(std::move(cid)), self_(std::move(self)), chats_(std::move(chats)) {}

  const biz::IMConversationID& GetCID() const override { return cid_; }
  void GetNewMsg(const biz::IMPageRequest&, Page done) override { done({}, {}); }
  void SetMsgRead(const biz::IMNothing&, Done done) override { done({}); }
  void GetUnreadCount(const biz::IMNothing&, Count done) override { done({}, {}); }
  void SendMsg(const biz::IMSendRequest& request, Done done) override;

 private:
  const biz::IMConversationID cid_;
  const biz::IMUserID self_;
  const RefPtr<Chats> chats_;  // whose events tell what happens here
};

class Chats final : public NoChats<biz::IIMSingleChatMgr, biz::IMSingleChatEvents> {
 public:
  explicit Chats(biz::IMUserID self) : self_(std::move(self)) {}
  RefPtr<biz::IIMConversation> GetConversation(const biz::IMConversationID& cid) override {
    if (!cid.is_user() || !cid.user.valid()) return {};
    return RefPtr<biz::IIMConversation>(new EchoChat(cid, self_, RefPtr<Chats>(this)));
  }

 private:
  const biz::IMUserID self_;
};

inline void EchoChat::SendMsg(const biz::IMSendRequest& request, Done done) {
  biz::IMMessage message;
  if (request.body) {
    for (const biz::IMBodyItem& item : *request.body) message.msgbody += item.value;
  }
  if (message.msgbody.empty()) return done({biz::kEngineEmpty, 0, L"the message is empty"});
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  message.msgtime = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  message.msgid = message.msgtime;
  message.cid = cid_;
  message.fromid = self_;
  message.toid = cid_.user;
  done({});
  biz::IMSingleChatEvents& events = chats_->Events();
  events.on_send_new_msg({cid_.user}, {message});
  events.on_send_msg_status(cid_.user, biz::kMsgText, message.msgid, message.msgtime, {});
  std::swap(message.fromid, message.toid);
  message.msgid += 1;
  message.msgstatus = biz::kMsgReceived;
  events.on_receive_new_msg({cid_.user}, {message});
}

class Account final : public RefPtrCounted<biz::IIMAccount> {
 public:
  explicit Account(const biz::IMUserID& self) : self_(self), chats_(new Chats(self)) {}

  const biz::IMUserID& GetSelfID() const override { return self_; }
  biz::IMAccountType GetAccountType() const override { return biz::kMainAccount; }
  biz::IMAccountState GetState() const override { return biz::kAccountOnline; }
  RefPtr<biz::IIMSingleChatMgr> GetIMSingleChatMgr() override { return chats_; }
  RefPtr<biz::IIMTribeChatMgr> GetIMTribeChatMgr() override { return tribe_chats_; }
  RefPtr<biz::IIMVirtualChatMgr> GetIMVirtualChatMgr() override { return virtual_chats_; }
  RefPtr<biz::IIMTribeMgr> GetIMTribeMgr() override { return {}; }
  RefPtr<biz::IIMFileTransfer> GetIMFileTransfer() override { return {}; }
  RefPtr<biz::IIMContactMgr> GetIMContactMgr() override { return {}; }

 private:
  const biz::IMUserID self_;
  const RefPtr<Chats> chats_;
  const RefPtr<biz::IIMTribeChatMgr> tribe_chats_{
      new NoChats<biz::IIMTribeChatMgr, biz::IMTribeChatEvents>};
  const RefPtr<biz::IIMVirtualChatMgr> virtual_chats_{
      new NoChats<biz::IIMVirtualChatMgr, biz::IMVirtualChatEvents>};
};

// The service that the bridge finds in the component registry. This one is used by one thread; an
// engine with threads of its own calls back on those.
class Accounts final : public RefPtrCounted<biz::IIMAccountMgr> {
 public:
  using LoginDone = biz::IMCallback<biz::IMLoginGrant>;

  // Every user has the password "demo".
  void LoginByPassword(const biz::IMPasswordLogin& request, LoginDone done) override {
    if (request.password != L"demo") {
      const biz::ResultCode wrong{biz::kEngineWrongPassword, 0, L"wrong password"};
      done(wrong, {});
      return events_.on_login_failed(request.userid, wrong);
    }
    RefPtr<Account>& account = accounts_[request.userid];
    if (!account) account = RefPtr<Account>(new Account(request.userid));
    done({}, {request.userid, request.password, 0});
    events_.on_login_ok(request.userid);
  }
  void LoginByToken(const biz::IMTokenLogin& request, LoginDone done) override {
    LoginByPassword({request.userid, request.token}, std::move(done));
  }
  void Logout(const biz::IMUserRequest& request, biz::IMCallback<> done) override {
    accounts_.erase(request.userid);
    done({});
    events_.on_logouted(request.userid);
  }
  void NetReConnect(const biz::IMUserRequest&, biz::IMCallback<> done) override { done({}); }
  RefPtr<biz::IIMAccount> GetAccount(const biz::IMUserID& user) override {
    const auto found = accounts_.find(user);
    return found == accounts_.end() ? nullptr : RefPtr<biz::IIMAccount>(found->second);
  }
  biz::IMAccountEvents& Events() override { return events_; }

 private:
  std::map<biz::IMUserID, RefPtr<Account>> accounts_;
  biz::IMAccountEvents events_;
};

}  // namespace tiny
