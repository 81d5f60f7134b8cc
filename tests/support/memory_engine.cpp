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
  done(result, page);
}

std::int32_t MemoryConversation::SendMsg(std::vector<biz::IMBodyItem> body,
                                         const biz::IMSendOptions& options) {
  sent = std::move(body);
  sent_options = options;
  return send_status;
}

std::int32_t MemoryConversation::ReSendMsg(std::int64_t msgid, bool now) {
  msgids = {msgid};
  at_once = now;
  return send_status;
}

void MemoryConversation::GetRemoteHisMsg(const biz::IMPageRequest& request,
                                         biz::IMPageCallback done) {
  last_request = request;
  done(result, page);
}

void MemoryConversation::RoamMsg(const biz::IMRoamRequest& request, biz::IMRoamCallback done) {
  last_roam = request;
  done(result, {9, 7});
}

void MemoryConversation::SearchMsgByID(std::int64_t msgid, biz::IMPageCallback done) {
  msgids = {msgid};
  done(result, page);
}

void MemoryConversation::SearchMsg(const biz::IMSearchRequest& request,
                                   biz::IMSearchCallback done) {
  last_search = request;
  done(result, found);
}

void MemoryConversation::GetMsgPicture(const biz::IMPictureRequest& request,
                                       biz::IMPicturesCallback done) {
  last_pictures = request;
  done(result, pictures);
}

void MemoryConversation::DeleteLocalMsg(const std::vector<std::int64_t>& ids,
                                        biz::IMCountCallback done) {
  msgids = ids;
  done(result, static_cast<std::int32_t>(ids.size()));
}

void MemoryConversation::WithdrawMsg(std::int64_t msgid, biz::IMDoneCallback done) {
  msgids = {msgid};
  done(result);
}

void MemoryConversation::GetFlagsMyMsgReaded(const std::vector<std::int64_t>& ids,
                                             biz::IMFlagsCallback done) {
  msgids = ids;
  std::vector<biz::IMFlagMsgReaded> flags;
  for (const std::int64_t id : ids) flags.push_back({cid_, id, id + 1, biz::kMsgRead});
  done(result, flags);
}

void MemoryConversation::SetFlagsPeerMsgReaded(const std::vector<std::int64_t>& ids,
                                               biz::IMDoneCallback done) {
  msgids = ids;
  done(result);
}

void MemoryConversation::ShieldAutoReply(bool ignore, biz::IMDoneCallback done) {
  ignored = ignore;
  done(result);
}

void MemoryConversation::AddSysMsg(const std::wstring& text, biz::IMDoneCallback done) {
  note = text;
  done(result);
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

void MemoryChats::SearchMsg(const biz::IMSearchRequest& request, biz::IMSearchCallback done) {
  last_search = request;
  done({}, {});
}

void MemoryChats::SearchConversations(const biz::IMSearchRequest& request,
                                      biz::IMUsersCallback done) {
  last_search = request;
  done({}, {kLighthouse});
}

void MemoryChats::SetRoamStatus(std::int32_t status, biz::IMDoneCallback done) {
  roaming = {77, status};
  done({});
}

MemoryConversation& MemoryChats::Chat(const biz::IMUserID& cid) {
  auto& chat = chats_[cid];
  if (!chat) chat = RefPtr<MemoryConversation>(new MemoryConversation(cid));
  return *chat;
}

RefPtr<biz::IIMConversation> MemoryVirtualChats::GetConversation(const biz::IMUserID& cid) {
  return cid == chat->GetCID() ? RefPtr<biz::IIMConversation>(chat) : nullptr;
}

std::vector<biz::IMUnreadCount> MemoryVirtualChats::GetConversations() {
  return {{chat->GetCID(), chat->unread}};
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

MemoryAccount& MemoryEngine::Account(const biz::IMUserID& user) {
  return static_cast<MemoryAccount&>(*accounts->GetAccount(user));
}

}  // namespace imsdk::test
