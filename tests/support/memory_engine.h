// An engine that answers from memory at once, for tests and benchmarks of the bridge.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <vector>

#include "imsdk/biz/account.h"
#include "kexcore/kexcom.h"
#include "tests/support/memory_answers.h"
#include "tests/support/memory_contacts.h"
#include "tests/support/memory_files.h"
#include "tests/support/memory_tribes.h"

namespace imsdk::test {

inline const biz::IMUserID kHarbor{L"cnbazaro", L"harbor"};
inline const biz::IMUserID kLighthouse{L"cnbazaro", L"lighthouse"};

// A message from `from` to `to` as the receiver sees it.
biz::IMMessage MakeMessage(std::int64_t msgid, const biz::IMUserID& from, const biz::IMUserID& to,
                           std::wstring body);

using Done = biz::IMCallback<>;
using PageDone = biz::IMCallback<biz::IMMessagePage>;

// A conversation whose answers a test sets and which keeps what it was asked.
class MemoryConversation final
    : public RefPtrCounted<biz::IIMConversation>,
      public MemoryAnswers<biz::IMAtMember, biz::IMTribeAt, biz::IMAtUnread, biz::IMAtReaders> {
 public:
  explicit MemoryConversation(biz::IMConversationID cid) : cid_(std::move(cid)) {}

  const biz::IMConversationID& GetCID() const override { return cid_; }
  void GetNewMsg(const biz::IMPageRequest& request, PageDone done) override {
    last_request = request;
    done(result, page);
  }
  void GetOfflineMsg(const biz::IMNothing&, PageDone done) override { done(result, page); }
  void SetMsgRead(const biz::IMNothing&, Done done) override {
    unread = 0;
    done({});
  }
  void GetUnreadCount(const biz::IMNothing&, biz::IMCallback<biz::IMCount> done) override {
    done(result, {unread});
  }
  void GetReadedBoundary(const biz::IMNothing&, biz::IMCallback<biz::IMMsgPosition> done) override {
    done(result, position);
  }
  void GetLocalHisMsg(const biz::IMPageRequest& request, PageDone done) override {
    last_request = request;
    if (on_history) return on_history(std::move(done));
    done(result, page);
  }
  void GetRemoteHisMsg(const biz::IMPageRequest& request, PageDone done) override {
    last_request = request;
    done(result, page);
  }
  void RoamMsg(const biz::IMRoamRequest& request, biz::IMCallback<biz::IMRoamed> done) override {
    last_roam = request;
    done(result, {9, 7});
  }
  void ClearRoamedTime(const biz::IMNothing&, Done done) override { done(result); }
  void SearchMsgByID(const biz::IMMsgRequest& request, PageDone done) override {
    msgids = {request.msgid};
    done(result, page);
  }
  void SearchMsg(const biz::IMSearchRequest& request,
                 biz::IMCallback<biz::IMSearchPage> done) override {
    last_search = request;
    done(result, found);
  }
  void GetMsgPicture(const biz::IMPictureRequest& request,
                     biz::IMCallback<biz::IMPictures> done) override {
    last_pictures = request;
    done(result, pictures);
  }
  void DeleteLocalMsg(const biz::IMDeleteRequest& request,
                      biz::IMCallback<biz::IMCount> done) override {
    msgids = request.msgids;
    done(result, {request.all ? 100 : static_cast<std::int32_t>(msgids.size())});
  }
  void SendMsg(const biz::IMSendRequest& request, Done done) override;
  void ReSendMsg(const biz::IMResendRequest& request, Done done) override {
    msgids = {request.msgid};
    at_once = request.at_once;
    done({send_status, 0, {}});
  }
  void WithdrawMsg(const biz::IMWithdrawRequest& request, Done done) override {
    msgids = {request.msgid};
    done(result);
  }
  void GetFlagsMyMsgReaded(const biz::IMMsgsRequest& request,
                           biz::IMCallback<biz::IMReadFlags> done) override;
  void SetFlagsPeerMsgReaded(const biz::IMMsgsRequest& request, Done done) override {
    msgids = request.msgids;
    done(result);
  }
  void ShieldAutoReply(const biz::IMShieldRequest& request, Done done) override {
    ignored = request.setignore;
    done(result);
  }
  void AddSysMsg(const biz::IMNote& request, Done done) override {
    note = request.text;
    done(result);
  }
  IMSDK_MEMORY_ANSWERS(AtTribeMember, IMAtMemberRequest, biz::IMAtMember)
  IMSDK_MEMORY_ANSWERS(GetSendMsgTribeAtInfo, IMMsgRequest, biz::IMTribeAt)
  IMSDK_MEMORY_ANSWERS(GetTribeAtMsgUnreadCount, IMMsgsRequest, biz::IMAtUnread)
  IMSDK_MEMORY_ANSWERS(GetTribeAtMsgUnreadUsers, IMMsgRequest, biz::IMAtReaders)
  IMSDK_MEMORY_ANSWERS(SetTribeAtMsgsReaded, IMMsgsRequest)
  void RoamTribeAtMsgs(const biz::IMPageRequest& request, PageDone done) override {
    last_request = request;
    done(result, page);
  }
  void RoamTribeAtMsgContext(const biz::IMAtContextRequest& request, PageDone done) override {
    last = request;
    done(result, page);
  }
  void SearchAttentionMsg(const biz::IMSearchRequest& request,
                          biz::IMCallback<biz::IMSearchPage> done) override {
    last_search = request;
    done(result, found);
  }

  // Answers. `result` is that of every operation but sending.
  biz::IMMessagePage page;  // what every request for messages gets
  biz::IMMsgPosition position;
  biz::IMSearchPage found;
  biz::IMPictures pictures;
  std::int32_t unread = 0;
  std::int32_t send_status = 0;
  // When set, GetLocalHisMsg and SendMsg hand their callbacks over instead of calling them.
  std::function<void(PageDone)> on_history;
  std::function<void(Done)> on_send;

  // What was asked.
  biz::IMPageRequest last_request;
  biz::IMRoamRequest last_roam;
  biz::IMSearchRequest last_search;
  biz::IMPictureRequest last_pictures;
  std::vector<biz::IMBodyItem> sent;
  biz::IMSendRequest sent_request;
  std::vector<std::int64_t> msgids;  // of the last operation on messages
  bool at_once = false;
  bool ignored = false;
  std::wstring note;

 private:
  const biz::IMConversationID cid_;
};

// The conversations of one kind: `I` is the manager's contract, `Raised` its events. Those of users
// are made when they are asked for, others by the test.
template <class I, class Raised, biz::IMCIDType kKind>
class MemoryChatMgr final : public RefPtrCounted<I> {
 public:
  RefPtr<biz::IIMConversation> GetConversation(const biz::IMConversationID& cid) override {
    if (cid.type != kKind) return nullptr;
    const auto found = chats_.find(cid);
    if (found != chats_.end()) return RefPtr<biz::IIMConversation>(found->second);
    if (kKind != biz::kCIDUser || !cid.user.valid()) return nullptr;
    return RefPtr<biz::IIMConversation>(&Chat(cid));
  }
  void GetUnreadCounts(const biz::IMConversations& request,
                       biz::IMCallback<biz::IMUnreads> done) override {
    biz::IMUnreads answer;
    for (const auto& cid : request.cids) {
      const auto found = chats_.find(cid);
      answer.unreads.push_back({cid, found == chats_.end() ? 0 : found->second->unread});
    }
    if (request.cids.empty()) {
      for (const auto& [cid, chat] : chats_) answer.unreads.push_back({cid, chat->unread});
    }
    done({}, answer);
  }
  void SearchMsg(const biz::IMSearchRequest& request,
                 biz::IMCallback<biz::IMSearchPage> done) override {
    last_search = request;
    done({}, {});
  }
  void SearchConversations(const biz::IMSearchRequest& request,
                           biz::IMCallback<biz::IMConversations> done) override {
    last_search = request;
    biz::IMConversations all;
    for (const auto& [cid, chat] : chats_) all.cids.push_back(cid);
    done({}, all);
  }
  void SetNewMsgMaxCache(const biz::IMMaxCacheRequest& request, biz::IMCallback<> done) override {
    max_cache = request.maxmsgcount;
    done({});
  }
  void GetRoamStatus(const biz::IMNothing&, biz::IMCallback<biz::IMRoamStatus> done) override {
    done(result, roaming);
  }
  void SetRoamStatus(const biz::IMSetRoamRequest& request, biz::IMCallback<> done) override {
    roaming = {77, request.roamstatus};
    done({});
  }
  Raised& Events() override { return events; }

  // The conversation, made when it is new.
  MemoryConversation& Chat(const biz::IMConversationID& cid) {
    auto& chat = chats_[cid];
    if (!chat) chat = RefPtr<MemoryConversation>(new MemoryConversation(cid));
    return *chat;
  }
  MemoryConversation& Chat(const biz::IMUserID& user) {
    return Chat(biz::IMConversationID(user, kKind));
  }

  Raised events;
  biz::IMSearchRequest last_search;
  std::int32_t max_cache = 0;
  biz::IMRoamStatus roaming;
  biz::ResultCode result;  // of asking for the roaming

 private:
  std::map<biz::IMConversationID, RefPtr<MemoryConversation>> chats_;
};

using MemoryChats = MemoryChatMgr<biz::IIMSingleChatMgr, biz::IMSingleChatEvents, biz::kCIDUser>;
using MemoryTribeChats =
    MemoryChatMgr<biz::IIMTribeChatMgr, biz::IMTribeChatEvents, biz::kCIDTribe>;
using MemoryVirtualChats =
    MemoryChatMgr<biz::IIMVirtualChatMgr, biz::IMVirtualChatEvents, biz::kCIDSystem>;

class MemoryAccount final : public RefPtrCounted<biz::IIMAccount> {
 public:
  explicit MemoryAccount(biz::IMUserID self) : self_(std::move(self)) {}
  const biz::IMUserID& GetSelfID() const override { return self_; }
  biz::IMAccountType GetAccountType() const override { return type; }
  biz::IMAccountState GetState() const override { return state; }
  RefPtr<biz::IIMSingleChatMgr> GetIMSingleChatMgr() override { return chats; }
  RefPtr<biz::IIMTribeChatMgr> GetIMTribeChatMgr() override { return tribe_chats; }
  RefPtr<biz::IIMVirtualChatMgr> GetIMVirtualChatMgr() override { return virtual_chats; }
  RefPtr<biz::IIMTribeMgr> GetIMTribeMgr() override { return tribes; }
  RefPtr<biz::IIMFileTransfer> GetIMFileTransfer() override { return files; }
  RefPtr<biz::IIMContactMgr> GetIMContactMgr() override { return contacts; }
  // The conversation with a user or a tribe, made when it is new.
  MemoryConversation& Chat(const biz::IMConversationID& cid) {
    return cid.is_tribe() ? tribe_chats->Chat(cid) : chats->Chat(cid);
  }

  biz::IMAccountType type = biz::kMainAccount;
  biz::IMAccountState state = biz::kAccountOnline;
  const RefPtr<MemoryChats> chats{new MemoryChats};
  const RefPtr<MemoryTribeChats> tribe_chats{new MemoryTribeChats};
  const RefPtr<MemoryVirtualChats> virtual_chats{new MemoryVirtualChats};
  const RefPtr<MemoryTribeMgr> tribes{new MemoryTribeMgr};
  const RefPtr<MemoryFileTransfer> files{new MemoryFileTransfer};
  const RefPtr<MemoryContacts> contacts{new MemoryContacts};

 private:
  const biz::IMUserID self_;
};

// Every user's password and token are "demo". Any thread.
class MemoryAccounts final : public RefPtrCounted<biz::IIMAccountMgr> {
 public:
  using LoginDone = biz::IMCallback<biz::IMLoginGrant>;

  void LoginByPassword(const biz::IMPasswordLogin& request, LoginDone done) override {
    LoginByToken({request.userid, request.password}, std::move(done));
  }
  void LoginByToken(const biz::IMTokenLogin& request, LoginDone done) override;
  void Logout(const biz::IMUserRequest& request, biz::IMCallback<> done) override;
  void NetReConnect(const biz::IMUserRequest& request, biz::IMCallback<> done) override;
  RefPtr<biz::IIMAccount> GetAccount(const biz::IMUserID& user) override;
  biz::IMAccountEvents& Events() override { return events; }

  biz::IMAccountEvents events;
  // When set, a good login is finished by calling what this is given, which a test may do on a
  // thread of its own.
  std::function<void(std::function<void()>)> on_login;

 private:
  std::mutex mutex_;
  std::map<biz::IMUserID, RefPtr<MemoryAccount>> accounts_;  // under mutex_
};

// The engine, registered for as long as this lives, with `kHarbor` logged in.
class MemoryEngine {
 public:
  MemoryEngine();
  ~MemoryEngine();
  MemoryAccount& Account(const biz::IMUserID& user = kHarbor);
  MemoryChats& Chats(const biz::IMUserID& user = kHarbor) { return *Account(user).chats; }

  const RefPtr<MemoryAccounts> accounts;
};

}  // namespace imsdk::test
