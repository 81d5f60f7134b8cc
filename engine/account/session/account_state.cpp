#include "account/session/account_state.h"

#include <utility>

#include "kexbase/callback.h"
#include "kexbase/strings.h"
#include "kexnet/escape.h"

namespace imsdk::account {

namespace {

constexpr std::chrono::milliseconds kQuiet{300};

std::wstring InTokens(const std::string& path) {
  return base::UTF8ToWide(net::EscapeQueryParamValue(path, false));
}

}  // namespace

AccountState::AccountState(std::shared_ptr<const Environment> env, const biz::IMUserID& user,
                           const Worker& worker)
    : environment(std::move(env)),
      self(user),
      runner(worker.runner),
      patience(worker.patience),
      aside(worker.aside),
      store({environment->folder.MessageStore(user), environment->folder.MessageStoreRecord(user)},
            user, worker.stores),
      commit([this]() -> sqlite::Database& { return store.database(); },
             [this] {
               runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), &AccountState::Flush));
             },
             [this] { return patience->over() ? NotLoggedIn() : biz::ResultCode{}; },
             [this] { store.index().AddLittle(); }),
      line(std::make_shared<Line>(
          runner, Line::Limits{environment->timeouts.request, environment->timeouts.send,
                               environment->timeouts.transfer, environment->timeouts.logout})),
      files(environment->folder.root(), environment->folder.FilesFolder(user),
            environment->send_from),
      files_in_tokens(InTokens(environment->folder.FilesFolder(user) + '/')) {}

void AccountState::Flush() {
  commit.Flush();
  ++flushes_;
  bool behind = false;
  if (!ended) sqlite::Guarded([&] { behind = store.index().IsBehind(); });
  if (behind) IndexSoon();
}

void AccountState::IndexSoon() {
  if (std::exchange(indexes_soon_, true)) return;
  runner->PostDelayedTask(FROM_HERE,
                          base::BindWeak(weak_from_this(),
                                         [seen = flushes_](AccountState& state) {
                                           state.indexes_soon_ = false;
                                           if (state.flushes_ != seen) return state.IndexSoon();
                                           state.Index([](const biz::ResultCode&) {});
                                         }),
                          kQuiet);
}

void AccountState::Index(biz::IMCallback<> done) {
  if (ended) return done(NotLoggedIn());
  bool behind = false;
  const biz::ResultCode read = sqlite::Guarded([&] { behind = store.index().IsBehind(); });
  if (!read.ok() || !behind) return done(read);
  commit.Add([this](sqlite::Database&) { store.index().AddSlice(); },
             [this, done = std::move(done)](const biz::ResultCode& stored) {
               if (!stored.ok()) return done(stored);
               const bool posted = runner->PostTask(
                   FROM_HERE, [state = shared_from_this(), done] { state->Index(done); });
               if (!posted) done(NotLoggedIn());
             });
}

void AccountState::RaiseSent(const biz::IMMessage& message) {
  if (message.cid.is_tribe()) {
    tribe_events.on_send_new_msg({message.cid.tribe}, {message});
  } else {
    events.on_send_new_msg({message.cid.user}, {message});
  }
}

void AccountState::RaiseStatus(const biz::IMMessage& message, std::int64_t svrtime,
                               const biz::ResultCode& result) {
  const auto type = static_cast<biz::IMMsgType>(message.msgtype);
  if (message.cid.is_tribe()) {
    tribe_events.on_send_msg_status(message.cid.tribe, type, message.msgid, svrtime, result);
  } else {
    events.on_send_msg_status(message.cid.user, type, message.msgid, svrtime, result);
  }
}

void AccountState::RaiseWithdrawn(const biz::IMMsgWithdraw& what) {
  if (what.cid.is_tribe()) {
    tribe_events.on_msg_withdraw(what.cid.tribe, what, {});
  } else {
    events.on_msg_withdraw(what.cid.user, what, {});
  }
}

}  // namespace imsdk::account
