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

class MemoryConversation final : public RefPtrCounted<biz::IIMConversation> {
 public:
  explicit MemoryConversation(biz::IMUserID cid) : cid_(std::move(cid)) {}

  const biz::IMUserID& GetCID() const override { return cid_; }
  biz::IMMessagePage GetNewMsg(const biz::IMPageRequest& request) override;
  void SetNewMsgReaded(biz::IMDoneCallback done) override;
  std::int32_t GetUnreadCount() const override { return unread; }
  void GetLocalHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) override;
  std::int32_t SendMsg(std::vector<biz::IMBodyItem> body,
                       const biz::IMSendOptions& options) override;
  std::int32_t ReSendMsg(std::int64_t msgid) override;

  biz::IMMessagePage page;  // what every request for messages gets
  biz::IMPageRequest last_request;
  std::int32_t unread = 0;
  std::int32_t send_status = 0;
  std::vector<biz::IMBodyItem> sent;
  biz::IMSendOptions sent_options;
  std::int64_t resent = 0;
  // When set, GetLocalHisMsg hands its callback over instead of calling it.
  std::function<void(biz::IMPageCallback)> on_history;

 private:
  const biz::IMUserID cid_;
};

class MemoryChats final : public RefPtrCounted<biz::IIMSingleChatMgr> {
 public:
  RefPtr<biz::IIMConversation> GetConversation(const biz::IMUserID& cid) override;
  std::vector<biz::IMUnreadCount> GetConversations() override;
  biz::IMSingleChatEvents& Events() override { return events; }

  MemoryConversation& Chat(const biz::IMUserID& cid);

  biz::IMSingleChatEvents events;

 private:
  std::map<biz::IMUserID, RefPtr<MemoryConversation>> chats_;
};

class MemoryAccount final : public RefPtrCounted<biz::IIMAccount> {
 public:
  explicit MemoryAccount(biz::IMUserID self) : self_(std::move(self)), chats(new MemoryChats) {}
  const biz::IMUserID& GetSelfID() const override { return self_; }
  bool IsOnline() const override { return true; }
  RefPtr<biz::IIMSingleChatMgr> GetIMSingleChatMgr() override { return chats; }

 private:
  const biz::IMUserID self_;

 public:
  const RefPtr<MemoryChats> chats;
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
  MemoryChats& Chats(const biz::IMUserID& user = kHarbor);

  const RefPtr<MemoryAccounts> accounts;
};

}  // namespace imsdk::test
