#include "engine_fixture.h"

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
  setup.hash_cost = {1, 8192};
  setup.timeouts.send = std::chrono::milliseconds(400);
  setup.timeouts.request = std::chrono::milliseconds(400);
  setup.timeouts.login = std::chrono::milliseconds(1500);
  setup.timeouts.first_retry = std::chrono::milliseconds(50);
  return setup;
}

std::unique_ptr<Engine> Start(const EngineSetup& setup) {
  std::string error;
  auto engine = StartEngine(setup, &error);
  EXPECT_TRUE(engine) << error;
  return engine;
}

RefPtr<biz::IIMAccountMgr> Accounts() { return kexcore::GetService<biz::IIMAccountMgr>(); }

biz::IMLoginResult Login(const biz::IMUserID& user, const std::wstring& password) {
  return Wait<biz::IMLoginResult>(
      [&](auto done) { Accounts()->LoginByPassword(user, password, done); });
}

biz::IMLoginResult LoginByToken(const biz::IMUserID& user, const std::wstring& token) {
  return Wait<biz::IMLoginResult>([&](auto done) { Accounts()->LoginByToken(user, token, done); });
}

biz::ResultCode Logout(const biz::IMUserID& user) {
  return Wait<biz::ResultCode>([&](auto done) { Accounts()->Logout(user, done); });
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
  on_login_ = accounts_->Events().on_login_ok.connect([this, link = link_](const auto& who) {
    std::unique_lock hold(link->lock);
    if (!link->witness || !(who == user_)) return;
    hold.unlock();
    Listen();
  });
  Listen();
}

Witness::~Witness() {
  on_login_.disconnect();
  std::lock_guard hold(link_->lock);
  link_->witness = nullptr;
}

void Witness::Listen() {
  const auto account = accounts_->GetAccount(user_);
  if (!account) return;
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

RefPtr<biz::IIMConversation> Chat(const biz::IMUserID& self, const biz::IMUserID& peer,
                                  const RefPtr<biz::IIMAccountMgr>& accounts) {
  const auto account = accounts->GetAccount(self);
  return account ? account->GetIMSingleChatMgr()->GetConversation(peer)
                 : RefPtr<biz::IIMConversation>();
}

biz::IMBodyItem Text(const std::wstring& text) {
  biz::IMBodyItem item;
  item.value = text;
  return item;
}

std::int32_t Send(const biz::IMUserID& from, const biz::IMUserID& to, const std::wstring& text) {
  return Chat(from, to)->SendMsg({Text(text)}, {});
}

biz::IMMessagePage History(const biz::IMUserID& self, const biz::IMUserID& peer,
                           const biz::IMPageRequest& request) {
  return Wait<biz::IMMessagePage>([&](auto done) {
    Chat(self, peer)->GetLocalHisMsg(request, [done](const auto& result, auto page) {
      EXPECT_TRUE(result.ok());
      done(std::move(page));
    });
  });
}

biz::ResultCode Done(const std::function<void(biz::IMDoneCallback)>& operation) {
  return Wait<biz::ResultCode>([&](auto done) { operation(done); });
}

std::vector<std::wstring> Bodies(const std::vector<biz::IMMessage>& messages) {
  std::vector<std::wstring> bodies;
  for (const auto& message : messages) bodies.push_back(message.msgbody);
  return bodies;
}

}  // namespace imsdk::test
