// An engine that answers from memory at once, for tests and benchmarks of the bridge.
#pragma once

#include <map>
#include <vector>

#include "imsdk/biz/account.h"
#include "kexcore/kexcom.h"

namespace imsdk::test {

inline const biz::IMUserID kHarbor{L"cnbazaro", L"harbor"};
inline const biz::IMUserID kLighthouse{L"cnbazaro", L"lighthouse"};

// A message from `from` to `to` as the receiver sees it.
biz::IMMessage MakeMessage(std::int64_t msgid, const biz::IMUserID& from, const biz::IMUserID& to,
                           std::wstring body);

// A conversation whose answers a test sets and which keeps what it was asked.
class MemoryConversation final : public RefPtrCounted<biz::IIMConversation> {
 public:
  explicit MemoryConversation(biz::IMUserID cid) : cid_(std::move(cid)) {}

  const biz::IMUserID& GetCID() const override { return cid_; }
  biz::IMMessagePage GetNewMsg(const biz::IMPageRequest& request) override;
  void GetOfflineMsg(biz::IMPageCallback done) override { done(result, page); }
  void SetNewMsgReaded(biz::IMDoneCallback done) override;
  std::int32_t GetUnreadCount() const override { return unread; }
  void GetReadedBoundary(biz::IMPositionCallback done) override { done(result, position); }
  void GetLocalHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) override;
  void GetRemoteHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) override;
  void RoamMsg(const biz::IMRoamRequest& request, biz::IMRoamCallback done) override;
  void ClearRoamedTime(biz::IMDoneCallback done) override { done(result); }
  void SearchMsgByID(std::int64_t msgid, biz::IMPageCallback done) override;
  void SearchMsg(const biz::IMSearchRequest& request, biz::IMSearchCallback done) override;
  void GetMsgPicture(const biz::IMPictureRequest& request, biz::IMPicturesCallback done) override;
  void DeleteLocalMsg(const std::vector<std::int64_t>& msgids, biz::IMCountCallback done) override;
  void DeleteAllLocalMsg(biz::IMCountCallback done) override { done(result, 100); }
  std::int32_t SendMsg(std::vector<biz::IMBodyItem> body,
                       const biz::IMSendOptions& options) override;
  std::int32_t ReSendMsg(std::int64_t msgid, bool at_once) override;
  void WithdrawMsg(std::int64_t msgid, biz::IMDoneCallback done) override;
  void GetFlagsMyMsgReaded(const std::vector<std::int64_t>& msgids,
                           biz::IMFlagsCallback done) override;
  void SetFlagsPeerMsgReaded(const std::vector<std::int64_t>& msgids,
                             biz::IMDoneCallback done) override;
  void ShieldAutoReply(bool ignore, biz::IMDoneCallback done) override;
  void AddSysMsg(const std::wstring& text, biz::IMDoneCallback done) override;

  // Answers.
  biz::ResultCode result;   // of every operation with a callback
  biz::IMMessagePage page;  // what every request for messages gets
  biz::IMMsgPosition position;
  biz::IMSearchPage found;
  std::vector<biz::IMMsgPicture> pictures;
  std::int32_t unread = 0;
  std::int32_t send_status = 0;
  // When set, GetLocalHisMsg hands its callback over instead of calling it.
  std::function<void(biz::IMPageCallback)> on_history;

  // What was asked.
  biz::IMPageRequest last_request;
  biz::IMRoamRequest last_roam;
  biz::IMSearchRequest last_search;
  biz::IMPictureRequest last_pictures;
  std::vector<biz::IMBodyItem> sent;
  biz::IMSendOptions sent_options;
  std::vector<std::int64_t> msgids;  // of the last operation on messages
  bool at_once = false;
  bool ignored = false;
  std::wstring note;

 private:
  const biz::IMUserID cid_;
};

class MemoryChats final : public RefPtrCounted<biz::IIMSingleChatMgr> {
 public:
  RefPtr<biz::IIMConversation> GetConversation(const biz::IMUserID& cid) override;
  std::vector<biz::IMUnreadCount> GetConversations() override;
  void SearchMsg(const biz::IMSearchRequest& request, biz::IMSearchCallback done) override;
  void SearchConversations(const biz::IMSearchRequest& request, biz::IMUsersCallback done) override;
  void SetNewMsgMaxCache(std::int32_t count) override { max_cache = count; }
  void GetRoamStatus(biz::IMRoamStatusCallback done) override { done({}, roaming); }
  void SetRoamStatus(std::int32_t status, biz::IMDoneCallback done) override;
  biz::IMSingleChatEvents& Events() override { return events; }

  MemoryConversation& Chat(const biz::IMUserID& cid);

  biz::IMSingleChatEvents events;
  biz::IMSearchRequest last_search;
  std::int32_t max_cache = 0;
  biz::IMRoamStatus roaming;

 private:
  std::map<biz::IMUserID, RefPtr<MemoryConversation>> chats_;
};

// Knows one virtual conversation.
class MemoryVirtualChats final : public RefPtrCounted<biz::IIMVirtualChatMgr> {
 public:
  RefPtr<biz::IIMConversation> GetConversation(const biz::IMUserID& cid) override;
  std::vector<biz::IMUnreadCount> GetConversations() override;
  biz::IMVirtualChatEvents& Events() override { return events; }

  biz::IMVirtualChatEvents events;
  const RefPtr<MemoryConversation> chat{new MemoryConversation({L"cnbazaro", L"system"})};
};

class MemoryAccount final : public RefPtrCounted<biz::IIMAccount> {
 public:
  explicit MemoryAccount(biz::IMUserID self) : self_(std::move(self)) {}
  const biz::IMUserID& GetSelfID() const override { return self_; }
  biz::IMAccountType GetAccountType() const override { return type; }
  bool IsOnline() const override { return true; }
  RefPtr<biz::IIMSingleChatMgr> GetIMSingleChatMgr() override { return chats; }
  RefPtr<biz::IIMVirtualChatMgr> GetIMVirtualChatMgr() override { return virtual_chats; }

  biz::IMAccountType type = biz::kMainAccount;
  const RefPtr<MemoryChats> chats{new MemoryChats};
  const RefPtr<MemoryVirtualChats> virtual_chats{new MemoryVirtualChats};

 private:
  const biz::IMUserID self_;
};

// Every user's password and token are "demo".
class MemoryAccounts final : public RefPtrCounted<biz::IIMAccountMgr> {
 public:
  void LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                       biz::IMLoginCallback done) override;
  void LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                    biz::IMLoginCallback done) override;
  void Logout(const biz::IMUserID& user, biz::IMResultCallback done) override;
  void NetReConnect(const biz::IMUserID& user, biz::IMResultCallback done) override;
  RefPtr<biz::IIMAccount> GetAccount(const biz::IMUserID& user) override;
  biz::IMAccountEvents& Events() override { return events; }

  biz::IMAccountEvents events;

 private:
  std::map<biz::IMUserID, RefPtr<MemoryAccount>> accounts_;
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
