#include "account/session/account_core.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "account/session/answer_within.h"
#include "kexbase/callback.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

// A session of this age has proved that its link is good.
constexpr std::chrono::seconds kLasting{10};

}  // namespace

// Hears one session and passes what it says to the worker.
class AccountCore::Listener : public link::SessionListener {
 public:
  Listener(std::weak_ptr<AccountCore> core, std::shared_ptr<base::TaskRunner> runner,
           std::uint64_t attempt)
      : core_(std::move(core)), runner_(std::move(runner)), attempt_(attempt) {}

  void OnBatch(link::Batch batch) override {
    auto shared = std::make_shared<const link::Batch>(std::move(batch));
    Pass([shared](AccountCore& core, std::uint64_t attempt) { core.Receive(attempt, shared); });
  }
  void OnTyping(const biz::IMConversationID& cid, std::int32_t status) override {
    Pass([cid, status](AccountCore& core, std::uint64_t attempt) {
      core.Hear(attempt, cid, status);
    });
  }
  void OnTribePresence(const link::TribePresence& presence) override {
    Pass([presence](AccountCore& core, std::uint64_t attempt) { core.Hear(attempt, presence); });
  }
  void OnContactPresence(const link::ContactPresence& presence) override {
    Pass([presence](AccountCore& core, std::uint64_t attempt) { core.Hear(attempt, presence); });
  }
  void OnEnded(const biz::ResultCode& why) override {
    Pass([why](AccountCore& core, std::uint64_t attempt) { core.SessionEnded(attempt, why); });
  }

 private:
  template <class Work>
  void Pass(Work work) {
    runner_->PostTask(FROM_HERE,
                      base::BindWeak(core_, [attempt = attempt_, work = std::move(work)](
                                                AccountCore& core) { work(core, attempt); }));
  }

  const std::weak_ptr<AccountCore> core_;
  const std::shared_ptr<base::TaskRunner> runner_;
  const std::uint64_t attempt_;
};

AccountCore::AccountCore(std::shared_ptr<const Environment> environment, const biz::IMUserID& user,
                         const Worker& worker, std::wstring token, AccountHooks hooks)
    : state_(std::make_shared<AccountState>(std::move(environment), user, worker)),
      mailbox_(std::make_shared<Mailbox>(*state_)),
      courier_(std::make_shared<Courier>(state_)),
      transfers_(std::make_shared<Transfers>(state_, courier_)),
      outbox_(std::make_shared<Outbox>(state_, courier_, transfers_)),
      roamer_(std::make_shared<Roamer>(state_, mailbox_)),
      reporter_(std::make_shared<Reporter>(state_)),
      mentions_(std::make_shared<Mentions>(state_)),
      tribes_(std::make_shared<TribeBook>(state_, mailbox_)),
      contacts_(std::make_shared<ContactBook>(state_)),
      hooks_(std::move(hooks)),
      token_(std::move(token)) {
  mailbox_->SetHooks({base::BindWeak(std::weak_ptr(outbox_), &Outbox::Archived),
                      base::BindWeak(std::weak_ptr(roamer_), &Roamer::CatchUp),
                      base::BindWeak(std::weak_ptr(tribes_), &TribeBook::Happened),
                      base::BindWeak(std::weak_ptr(tribes_), &TribeBook::Joined),
                      base::BindWeak(std::weak_ptr(tribes_), &TribeBook::TakeRemind),
                      base::BindWeak(std::weak_ptr(transfers_), &Transfers::Came),
                      base::BindWeak(std::weak_ptr(transfers_), &Transfers::Deleted),
                      base::BindWeak(std::weak_ptr(contacts_), &ContactBook::Happened)});
  transfers_->Listen();
}

void AccountCore::Open(biz::IMCallback<> done) {
  state_->runner->PostTask(
      FROM_HERE, base::BindWeak(weak_from_this(), [done = std::move(done)](AccountCore& core) {
        if (core.state_->ended) return done(NotLoggedIn());
        const biz::ResultCode opened = core.OpenStore();
        if (!opened.ok()) return done(opened);
        core.waiting_.push_back(done);
        core.outbox_->WantLink(base::BindWeak(core.weak_from_this(), &AccountCore::ConnectNow));
        core.Connect();
      }));
}

biz::ResultCode AccountCore::OpenStore() {
  std::error_code failure;
  const DataFolder& folder = state_->environment->folder;
  std::filesystem::create_directories(folder.AccountFolder(state_->self), failure);
  courier_->DropOldParts();
  return sqlite::Guarded([&] {
    state_->store.database();
    if (const auto loss = state_->store.TakeLoss()) Recover(*loss);
    for (const StoredConversation& stored : state_->store.Conversations()) {
      state_->chat.AddConversation(stored);
    }
    for (Arrived& arrived : state_->store.NewestUnread(kMostCachedMessages)) {
      state_->chat.AddUnread(std::move(arrived));
    }
    outbox_->Load();
    tribes_->Load();
    // An earlier session may have left some.
    if (state_->store.index().IsBehind()) state_->IndexSoon();
  });
}

void AccountCore::Recover(const sqlite::Loss& loss) {
  const std::string what = loss.Text("the account's store");
  warning_ = {biz::kEngineOk, biz::kEngineDamaged, base::UTF8ToWide(what)};
  const auto& report = state_->environment->report;
  if (report) report(what + " (" + AccountFolderName(state_->self) + ")");
  sqlite::Transaction transaction(state_->store.database());
  state_->store.Recover(loss);
  transaction.Commit();
}

void AccountCore::RenewToken(std::wstring token) {
  state_->runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), [token](AccountCore& core) {
                             core.token_ = token;
                           }));
}

void AccountCore::Reconnect(biz::IMCallback<> done) {
  state_->runner->PostTask(
      FROM_HERE, base::BindWeak(weak_from_this(), [done = std::move(done)](AccountCore& core) {
        if (core.state_->ended) return done(NotLoggedIn());
        core.waiting_.push_back(done);
        core.DropSession();
        core.Connect();
      }));
}

void AccountCore::Connect() {
  const std::uint64_t attempt = ++attempt_;
  connecting_ = true;
  listener_ = std::make_shared<Listener>(weak_from_this(), state_->runner, attempt);
  std::function<void(const biz::ResultCode&, const link::Connected&)> answered =
      base::BindWeak(weak_from_this(), [attempt](AccountCore& core, const biz::ResultCode& result,
                                                 const link::Connected& connected) {
        core.ConnectAnswered(attempt, result, connected);
      });
  const biz::ResultCode late{biz::kEngineTimeout, 0, L"the server did not answer in time"};
  const Environment& environment = *state_->environment;
  link::ConnectRequest request{state_->self, token_, environment.device, {}, listener_};
  const biz::ResultCode read = sqlite::Guarded([&] {
    request.position = state_->store.LinkPosition();
    request.restore = state_->store.IsMending();
    const std::string life = state_->store.Generation();
    if (!life.empty()) request.device += '.' + life;
  });
  auto answer = AnswerWithin(state_->runner, environment.timeouts.login, std::move(answered), late,
                             link::Connected{});
  if (!read.ok()) return answer(read, {});
  environment.link->Connect(request, std::move(answer));
}

void AccountCore::ConnectAnswered(std::uint64_t attempt, const biz::ResultCode& result,
                                  const link::Connected& connected) {
  if (attempt != attempt_) return;
  connecting_ = false;
  if (result.code == biz::kEnginePositionLost) return BeginAnew(result);
  if (!result.ok()) return ConnectFailed(result);
  session_ = connected.session;
  state_->line->Connect(connected);
  state_->online = true;
  const bool first = std::exchange(opening_, false);
  outage_told_ = false;
  connected_at_ = std::chrono::steady_clock::now();
  proved_ = first;
  if (!first) hooks_.reconnected();
  Tell(warning_.subcode != 0 ? std::exchange(warning_, {}) : result);
  outbox_->Connected();
  reporter_->Connected();
  mentions_->Connected();
  roamer_->Connected();
  tribes_->Connected();
  transfers_->Connected();
  contacts_->Connected();
}

void AccountCore::BeginAnew(const biz::ResultCode& why) {
  std::string position;
  sqlite::Guarded([&] { position = state_->store.LinkPosition(); });
  if (position.empty()) return ConnectFailed(why);  // there was nothing to lose
  tribes_->Lost();
  state_->commit.Add([this](sqlite::Database&) { state_->store.LosePosition(); },
                     [this, attempt = attempt_](const biz::ResultCode& stored) {
                       if (attempt != attempt_ || state_->ended) return;
                       if (!stored.ok()) return ConnectFailed(stored);
                       Connect();
                     });
}

void AccountCore::ConnectNow() {
  if (!session_ && !connecting_ && !state_->ended) Connect();
}

void AccountCore::ConnectFailed(const biz::ResultCode& why) {
  DropSession();
  if (opening_) return Tell(why);  // the login fails and takes the account away
  outbox_->GiveUp(why);
  const bool told = std::exchange(outage_told_, true);
  if (!told || !waiting_.empty()) hooks_.reconnect_failed(why);
  Tell(why);
  const bool may_pass = why.code == biz::kEngineNoLink || why.code == biz::kEngineTimeout ||
                        why.code == biz::kEngineBusy || why.code == biz::kEngineStorage;
  if (may_pass) RetryLater();
}

void AccountCore::RetryLater() {
  const Timeouts& timeouts = state_->environment->timeouts;
  retry_ = std::clamp(retry_ * 2, timeouts.first_retry, timeouts.longest_retry);
  state_->runner->PostDelayedTask(
      FROM_HERE,
      base::BindWeak(weak_from_this(),
                     [attempt = attempt_](AccountCore& core) {
                       if (attempt == core.attempt_ && !core.state_->ended) core.Connect();
                     }),
      retry_);
}

void AccountCore::DropSession() {
  ++attempt_;
  connecting_ = false;
  state_->online = false;
  state_->line->Drop({biz::kEngineNoLink, 0, L"the link was lost"});
  outbox_->Disconnected();
  contacts_->Disconnected();
  listener_.reset();
  session_.reset();
}

void AccountCore::Lost(const biz::ResultCode& why) {
  DropSession();
  // The next login reads out of the store what can be read.
  if (why.code == biz::kEngineDamaged) return hooks_.ended();
  // A session that was good for something is renewed at once; one that breaks before that, or whose
  // messages the store cannot take, is renewed after a pause.
  const bool lasted = std::chrono::steady_clock::now() - connected_at_ > kLasting;
  if (!std::exchange(proved_, false) && !lasted) return ConnectFailed(why);
  retry_ = {};
  Connect();
}

void AccountCore::Receive(std::uint64_t attempt, const std::shared_ptr<const link::Batch>& batch) {
  if (attempt != attempt_ || !session_) return;
  const auto happenings = std::make_shared<Mailbox::Happenings>();
  state_->commit.Add(
      [this, attempt, batch, happenings](sqlite::Database&) {
        happenings->clear();
        // Behind a batch that could not be stored no other one moves the position on.
        if (attempt != attempt_) return;
        *happenings = mailbox_->Store(*batch);
        // What was lost has come again.
        const bool again = batch->offline && batch->more;
        if (!again && state_->store.IsMending()) state_->store.SetMended();
      },
      [this, attempt, batch, happenings](const biz::ResultCode& stored) {
        const bool current = attempt == attempt_;
        if (!stored.ok()) return current ? Lost(stored) : void();
        if (current) {
          session_->Acknowledge(batch->position);
          proved_ = true;
        }
        mailbox_->MakeKnown(*batch, std::move(*happenings));
      });
}

void AccountCore::Hear(std::uint64_t attempt, const biz::IMConversationID& cid,
                       std::int32_t status) {
  if (attempt != attempt_ || !cid.is_user()) return;
  state_->events.on_peer_input(cid.user, static_cast<biz::InputStatus>(status));
}

void AccountCore::Hear(std::uint64_t attempt, const link::TribePresence& presence) {
  if (attempt == attempt_) tribes_->Present(presence);
}

void AccountCore::Hear(std::uint64_t attempt, const link::ContactPresence& presence) {
  if (attempt == attempt_) contacts_->Present(presence);
}

void AccountCore::SessionEnded(std::uint64_t attempt, const biz::ResultCode& why) {
  if (attempt != attempt_) return;
  if (why.code == biz::kEngineNoLink || why.code == biz::kEngineTimeout) return Lost(why);
  DropSession();
  hooks_.ended();
}

bool AccountCore::Close(biz::IMCallback<> done) {
  if (!outbox_->StopTaking()) return false;
  state_->runner->PostTask(
      FROM_HERE, [core = shared_from_this(), done = std::move(done)] { core->End(done); });
  return true;
}

void AccountCore::End(biz::IMCallback<> done) {
  outbox_->Finish();
  state_->commit.Flush();
  state_->ended = true;
  ++attempt_;
  connecting_ = false;
  state_->online = false;
  listener_.reset();
  session_.reset();
  outbox_->Close();
  state_->line->Close([done = std::move(done)] { done({}); });
  state_->store.Close();
  Tell(NotLoggedIn());
}

void AccountCore::Tell(const biz::ResultCode& outcome) {
  for (const auto& done : std::exchange(waiting_, {})) done(outcome);
}

}  // namespace imsdk::account
