#include "tests/support/memory_engine.h"

namespace imsdk::test {

biz::IMMessage MakeMessage(std::int64_t msgid, const biz::IMUserID& from, const biz::IMUserID& to,
                           std::wstring body) {
  biz::IMMessage msg;
  msg.msgid = msgid;
  msg.msgtime = 1'700'000'000'000 + msgid;
  msg.cid = from;
  msg.fromid = from;
  msg.toid = to;
  msg.msgstatus = biz::kMsgReceived;
  msg.msgbody = std::move(body);
  msg.svrtime = msg.msgtime + 1;
  return msg;
}

biz::IMMessagePage MemoryConversation::GetNewMsg(const biz::IMPageRequest& request) {
  last_request = request;
  return page;
}

void MemoryConversation::SetNewMsgReaded(biz::IMDoneCallback done) {
  unread = 0;
  done({});
}

void MemoryConversation::GetLocalHisMsg(const biz::IMPageRequest& request,
                                        biz::IMPageCallback done) {
  last_request = request;
  if (on_history) return on_history(std::move(done));
  done({}, page);
}

std::int32_t MemoryConversation::SendMsg(std::vector<biz::IMBodyItem> body,
                                         const biz::IMSendOptions& options) {
  sent = std::move(body);
  sent_options = options;
  return send_status;
}

std::int32_t MemoryConversation::ReSendMsg(std::int64_t msgid) {
  resent = msgid;
  return send_status;
}

RefPtr<biz::IIMConversation> MemoryChats::GetConversation(const biz::IMUserID& cid) {
  if (!cid.valid()) return nullptr;
  return RefPtr<biz::IIMConversation>(&Chat(cid));
}

std::vector<biz::IMUnreadCount> MemoryChats::GetConversations() {
  std::vector<biz::IMUnreadCount> counts;
  for (const auto& [cid, chat] : chats_) counts.push_back({cid, chat->unread});
  return counts;
}

MemoryConversation& MemoryChats::Chat(const biz::IMUserID& cid) {
  auto& chat = chats_[cid];
  if (!chat) chat = RefPtr<MemoryConversation>(new MemoryConversation(cid));
  return *chat;
}

void MemoryAccounts::LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                                     biz::IMLoginCallback done) {
  LoginByToken(user, password, std::move(done));
}

void MemoryAccounts::LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                                  biz::IMLoginCallback done) {
  if (token != L"demo") {
    const biz::ResultCode refused{biz::kEngineWrongPassword, 0, L"wrong password"};
    events.on_login_failed(user, refused);
    return done({refused, user, {}, 0});
  }
  auto& account = accounts_[user];
  if (!account) account = RefPtr<MemoryAccount>(new MemoryAccount(user));
  events.on_login_ok(user);
  done({{}, user, L"demo", 1});
}

void MemoryAccounts::Logout(const biz::IMUserID& user, biz::IMResultCallback done) {
  if (accounts_.erase(user) == 0) return done({biz::kEngineNotLoggedIn, 0, {}});
  events.on_logouted(user);
  done({});
}

void MemoryAccounts::NetReConnect(const biz::IMUserID& user, biz::IMResultCallback done) {
  if (!accounts_.contains(user)) {
    const biz::ResultCode refused{biz::kEngineNotLoggedIn, 0, {}};
    events.on_net_reconnect_failed(user, refused);
    return done(refused);
  }
  events.on_net_reconnect_ok(user);
  done({});
}

RefPtr<biz::IIMAccount> MemoryAccounts::GetAccount(const biz::IMUserID& user) {
  const auto found = accounts_.find(user);
  return found == accounts_.end() ? nullptr : RefPtr<biz::IIMAccount>(found->second);
}

MemoryEngine::MemoryEngine() : accounts(new MemoryAccounts) {
  GetKexCOM()->RegisterService(biz::IIMAccountMgr::kServiceId, accounts.get());
  accounts->LoginByToken(kHarbor, L"demo", [](const biz::IMLoginResult&) {});
}

MemoryEngine::~MemoryEngine() { GetKexCOM()->UnregisterService(biz::IIMAccountMgr::kServiceId); }

MemoryChats& MemoryEngine::Chats(const biz::IMUserID& user) {
  const auto account = accounts->GetAccount(user);
  return *static_cast<MemoryAccount&>(*account).chats;
}

}  // namespace imsdk::test
