#include "engine_fixture.h"

#include <chrono>
#include <thread>

#include "account/files/data_folder.h"
#include "kexbase/guid.h"
#include "kexcore/kexcom.h"

namespace imsdk::test {

TempFolder::TempFolder()
    : path_(std::filesystem::temp_directory_path() / ("imsdk-" + base::GenerateGUID())) {
  std::filesystem::create_directories(path_);
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

EngineSetup QuickSetup(const std::filesystem::path& data) {
  EngineSetup setup;
  setup.options.data = account::FromPath(data);
  setup.timeouts.send = std::chrono::milliseconds(1000);
  setup.timeouts.request = std::chrono::milliseconds(1000);
  setup.timeouts.transfer = std::chrono::milliseconds(1000);
  setup.timeouts.login = std::chrono::milliseconds(5000);
  setup.timeouts.first_retry = std::chrono::milliseconds(50);
  return setup;
}

void ServerTest::SetUp() {
  server_ = GetParam().start(folder_.path());
  ASSERT_TRUE(server_);
  Begin();
}

bool ServerTest::CreateAccount(const biz::IMUserID& user) {
  return server_->CreateAccount(account::WellFormed(user), L"pass");
}

void ServerTest::Begin() {
  engine_.reset();
  setup_.options.link = [this] { return server_->Link(); };
  engine_ = Start(setup_);
}

std::unique_ptr<Engine> Start(const EngineSetup& setup) {
  std::string error;
  auto engine = StartEngine(setup, &error);
  EXPECT_TRUE(engine) << error;
  return engine;
}

RefPtr<biz::IIMAccountMgr> Accounts() { return kexcore::GetService<biz::IIMAccountMgr>(); }

LoginOutcome Login(const biz::IMUserID& user, const std::wstring& password) {
  const auto [result, grant] = Answer<biz::IMLoginGrant>([&](auto done) {
    Accounts()->LoginByPassword({user, password}, done);
  });
  return {result, grant.token};
}

LoginOutcome LoginByToken(const biz::IMUserID& user, const std::wstring& token) {
  const auto [result, grant] = Answer<biz::IMLoginGrant>([&](auto done) {
    Accounts()->LoginByToken({user, token}, done);
  });
  return {result, grant.token};
}

biz::ResultCode Logout(const biz::IMUserID& user) {
  return Done([&](auto done) { Accounts()->Logout({user}, done); });
}

// Handlers outlive the witness: an event may be in the middle of a call.
struct Witness::Link {
  std::mutex lock;
  std::condition_variable changed;
  Witness* witness = nullptr;

  void Change(const std::function<void(Witness&)>& change) {
    std::lock_guard hold(lock);
    if (witness) change(*witness);
    changed.notify_all();
  }
};

Witness::Witness(const biz::IMUserID& user, RefPtr<biz::IIMAccountMgr> accounts)
    : user_(account::WellFormed(user)),
      accounts_(std::move(accounts)),
      link_(std::make_shared<Link>()) {
  link_->witness = this;
  on_login_ = accounts_->Events().on_login_ok.connect([link = link_](const auto& who) {
    std::lock_guard hold(link->lock);
    if (link->witness && who == link->witness->user_) link->witness->Listen();
  });
  std::lock_guard hold(link_->lock);
  Listen();
}

Witness::~Witness() {
  on_login_.disconnect();
  std::lock_guard hold(link_->lock);
  link_->witness = nullptr;
}

void Witness::Listen() {
  const auto account = accounts_->GetAccount(user_);
  // The event of a login comes after its answer: somebody may listen already.
  if (!account || listens_to_.get() == account.get()) return;
  listens_to_ = account;
  auto& events = account->GetIMSingleChatMgr()->Events();
  events.on_receive_new_msg.connect([link = link_](const auto&, const auto& messages) {
    link->Change([&](Witness& witness) {
      witness.order.push_back("new");
      witness.received.insert(witness.received.end(), messages.begin(), messages.end());
    });
  });
  events.on_receive_offline_msg.connect(
      [link = link_](bool follows, const auto&, const auto& messages) {
        link->Change([&](Witness& witness) {
          witness.order.push_back("offline");
          witness.more.push_back(follows);
          witness.received.insert(witness.received.end(), messages.begin(), messages.end());
          witness.offline.insert(witness.offline.end(), messages.begin(), messages.end());
        });
      });
  events.on_send_new_msg.connect([link = link_](const auto&, const auto& messages) {
    link->Change([&](Witness& witness) {
      witness.order.push_back("send");
      witness.sent.insert(witness.sent.end(), messages.begin(), messages.end());
    });
  });
  events.on_send_msg_status.connect(
      [link = link_](const auto&, auto, auto msgid, auto svrtime, const auto& result) {
        link->Change([&](Witness& witness) {
          witness.order.push_back("status");
          witness.statuses.push_back({msgid, svrtime, result.code});
        });
      });
  events.on_msg_withdraw.connect([link = link_](const auto&, const auto& what, const auto&) {
    link->Change([&](Witness& witness) {
      witness.order.push_back("withdraw");
      witness.withdrawn.push_back(what);
    });
  });
  events.on_flag_my_msg_readed.connect([link = link_](const auto&, const auto& changed) {
    link->Change([&](Witness& witness) {
      witness.order.push_back("flags");
      witness.flags.insert(witness.flags.end(), changed.begin(), changed.end());
    });
  });
  events.on_shake_msg.connect([link = link_](const auto&) {
    link->Change([&](Witness& witness) { witness.order.push_back("shake"); });
  });
  events.on_peer_input.connect([link = link_](const auto& peer, auto status) {
    link->Change([&](Witness& witness) { witness.inputs.emplace_back(peer, status); });
  });
  auto& tribes = account->GetIMTribeChatMgr()->Events();
  const auto add = [](auto& to, const auto& messages) {
    to.insert(to.end(), messages.begin(), messages.end());
  };
  tribes.on_receive_new_msg.connect([link = link_, add](const auto&, const auto& messages) {
    link->Change([&](Witness& witness) { add(witness.tribe_received, messages); });
  });
  tribes.on_receive_offline_msg.connect(
      [link = link_, add](bool, const auto&, const auto& messages) {
        link->Change([&](Witness& witness) { add(witness.tribe_received, messages); });
      });
  tribes.on_send_new_msg.connect([link = link_, add](const auto&, const auto& messages) {
    link->Change([&](Witness& witness) { add(witness.tribe_sent, messages); });
  });
  tribes.on_send_msg_status.connect(
      [link = link_](const auto&, auto, auto msgid, auto svrtime, const auto& result) {
        link->Change([&](Witness& witness) {
          witness.tribe_statuses.push_back({msgid, svrtime, result.code});
        });
      });
  tribes.on_msg_withdraw.connect([link = link_](const auto&, const auto& what, const auto&) {
    link->Change([&](Witness& witness) { witness.tribe_withdrawn.push_back(what); });
  });
  auto& virtuals = account->GetIMVirtualChatMgr()->Events();
  virtuals.on_receive_sys_msg.connect([link = link_](const auto& messages) {
    link->Change([&](Witness& witness) {
      witness.system.insert(witness.system.end(), messages.begin(), messages.end());
    });
  });
  virtuals.on_receive_subscribe_msg.connect([link = link_](const auto& messages) {
    link->Change([&](Witness& witness) {
      witness.subscribed.insert(witness.subscribed.end(), messages.begin(), messages.end());
    });
  });
}

bool Witness::Await(const std::function<bool(const Witness&)>& enough) {
  std::unique_lock hold(link_->lock);
  const bool came =
      link_->changed.wait_for(hold, std::chrono::seconds(20), [&] { return enough(*this); });
  EXPECT_TRUE(came) << "the events did not come";
  return came;
}

bool Witness::AwaitStatuses(std::size_t count) {
  return Await([count](const Witness& witness) { return witness.statuses.size() >= count; });
}

bool Witness::AwaitReceived(std::size_t count) {
  return Await([count](const Witness& witness) { return witness.received.size() >= count; });
}

RefPtr<biz::IIMConversation> Chat(const biz::IMUserID& self, const biz::IMConversationID& cid,
                                  const RefPtr<biz::IIMAccountMgr>& accounts) {
  const auto account = accounts->GetAccount(self);
  if (!account) return {};
  if (cid.is_tribe()) return account->GetIMTribeChatMgr()->GetConversation(cid);
  if (cid.is_virtual()) return account->GetIMVirtualChatMgr()->GetConversation(cid);
  return account->GetIMSingleChatMgr()->GetConversation(cid);
}

RefPtr<biz::IIMSingleChatMgr> Chats(const biz::IMUserID& self) {
  return Accounts()->GetAccount(self)->GetIMSingleChatMgr();
}

biz::IMBodyItem Text(const std::wstring& text) {
  biz::IMBodyItem item;
  item.value = text;
  return item;
}

std::int32_t SendItems(const RefPtr<biz::IIMConversation>& chat, std::vector<biz::IMBodyItem> items,
                       biz::IMSendRequest request) {
  request.body = std::make_shared<const std::vector<biz::IMBodyItem>>(std::move(items));
  return Done([&](auto done) { chat->SendMsg(request, done); }).code;
}

std::int32_t Resend(const RefPtr<biz::IIMConversation>& chat, std::int64_t msgid, bool at_once) {
  std::int32_t code = 1;
  chat->ReSendMsg({msgid, at_once}, [&](const biz::ResultCode& result) { code = result.code; });
  return code;
}

std::int32_t Unread(const RefPtr<biz::IIMConversation>& chat) {
  std::int32_t count = -1;
  chat->GetUnreadCount({}, [&](const auto&, const biz::IMCount& found) { count = found.count; });
  return count;
}

biz::IMMessagePage NewMessages(const RefPtr<biz::IIMConversation>& chat,
                               const biz::IMPageRequest& request) {
  biz::IMMessagePage page;
  chat->GetNewMsg(request, [&](const auto&, const biz::IMMessagePage& found) { page = found; });
  return page;
}

std::int32_t Send(const biz::IMUserID& from, const biz::IMUserID& to, const std::wstring& text) {
  return SendItems(Chat(from, to), {Text(text)});
}

biz::IMMessagePage LocalPage(const RefPtr<biz::IIMConversation>& chat,
                             const biz::IMPageRequest& request) {
  const auto [result, page] =
      Answer<biz::IMMessagePage>([&](auto done) { chat->GetLocalHisMsg(request, done); });
  EXPECT_TRUE(result.ok());
  return page;
}

biz::IMMessagePage History(const biz::IMUserID& self, const biz::IMUserID& peer,
                           const biz::IMPageRequest& request) {
  return LocalPage(Chat(self, peer), request);
}

biz::ResultCode Done(const std::function<void(biz::IMCallback<>)>& operation) {
  return Wait<biz::ResultCode>([&](auto done) { operation(done); });
}

std::vector<std::wstring> Bodies(const std::vector<biz::IMMessage>& messages) {
  std::vector<std::wstring> bodies;
  for (const auto& message : messages) bodies.push_back(message.msgbody);
  return bodies;
}

std::vector<std::int64_t> Ids(const std::vector<biz::IMMessage>& messages) {
  std::vector<std::int64_t> ids;
  for (const auto& message : messages) ids.push_back(message.msgid);
  return ids;
}

void Eventually(const std::function<bool()>& holds, const char* what) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!holds()) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << what;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

}  // namespace imsdk::test
