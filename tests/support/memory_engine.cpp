#include "tests/support/memory_engine.h"

namespace imsdk::test {

biz::IMMessage MakeMessage(std::int64_t msgid, const biz::IMUserID& from, const biz::IMUserID& to,
                           std::wstring body) {
  biz::IMMessage msg;
  msg.msgid = msgid;
  msg.msgtime = 1'700'000'000'000 + msgid;
  msg.cid = biz::IMConversationID(from);
  msg.fromid = from;
  msg.toid = to;
  msg.msgstatus = biz::kMsgReceived;
  msg.msgbody = std::move(body);
  msg.svrtime = msg.msgtime + 1;
  return msg;
}

void MemoryConversation::SendMsg(const biz::IMSendRequest& request, Done done) {
  sent = request.body ? *request.body : std::vector<biz::IMBodyItem>();
  sent_request = request;
  if (on_send) return on_send(std::move(done));
  done({send_status, 0, {}});
}

void MemoryConversation::GetFlagsMyMsgReaded(const biz::IMMsgsRequest& request,
                                             biz::IMCallback<biz::IMReadFlags> done) {
  msgids = request.msgids;
  biz::IMReadFlags flags;
  for (const std::int64_t id : msgids) flags.items.push_back({cid_, id, id + 1, biz::kMsgRead});
  done(result, flags);
}

void MemoryAccounts::LoginByToken(const biz::IMTokenLogin& request, LoginDone done) {
  const biz::IMUserID user = request.userid;
  if (request.token != L"demo") {
    const biz::ResultCode refused{biz::kEngineWrongPassword, 0, L"wrong password"};
    done(refused, {});
    return events.on_login_failed(user, refused);
  }
  const auto finish = [this, user, done = std::move(done)] {
    {
      const std::lock_guard hold(mutex_);
      auto& account = accounts_[user];
      if (!account) account = RefPtr<MemoryAccount>(new MemoryAccount(user));
    }
    done({}, {user, L"demo", 1});
    events.on_login_ok(user);
  };
  on_login ? on_login(finish) : finish();
}

void MemoryAccounts::Logout(const biz::IMUserRequest& request, biz::IMCallback<> done) {
  {
    const std::lock_guard hold(mutex_);
    if (accounts_.erase(request.userid) == 0) return done({biz::kEngineNotLoggedIn, 0, {}});
  }
  events.on_logouted(request.userid);
  done({});
}

void MemoryAccounts::NetReConnect(const biz::IMUserRequest& request, biz::IMCallback<> done) {
  if (!GetAccount(request.userid)) {
    const biz::ResultCode refused{biz::kEngineNotLoggedIn, 0, {}};
    events.on_net_reconnect_failed(request.userid, refused);
    return done(refused);
  }
  events.on_net_reconnect_ok(request.userid);
  done({});
}

RefPtr<biz::IIMAccount> MemoryAccounts::GetAccount(const biz::IMUserID& user) {
  const std::lock_guard hold(mutex_);
  const auto found = accounts_.find(user);
  return found == accounts_.end() ? nullptr : RefPtr<biz::IIMAccount>(found->second);
}

MemoryEngine::MemoryEngine() : accounts(new MemoryAccounts) {
  GetKexCOM()->RegisterService(biz::IIMAccountMgr::kServiceId, accounts.get());
  accounts->LoginByToken({kHarbor, L"demo"}, [](const auto&...) {});
}

MemoryEngine::~MemoryEngine() { GetKexCOM()->UnregisterService(biz::IIMAccountMgr::kServiceId); }

MemoryAccount& MemoryEngine::Account(const biz::IMUserID& user) {
  return static_cast<MemoryAccount&>(*accounts->GetAccount(user));
}

}  // namespace imsdk::test
