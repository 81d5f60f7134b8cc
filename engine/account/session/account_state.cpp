#include "account/session/account_state.h"

#include "kexbase/callback.h"
#include "kexbase/strings.h"
#include "kexnet/escape.h"

namespace imsdk::account {

namespace {

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
      store({environment->folder.MessageStore(user), environment->folder.MessageStoreRecord(user)},
            user, worker.stores),
      commit([this]() -> sqlite::Database& { return store.database(); },
             [this] {
               runner->PostTask(FROM_HERE,
                                base::BindWeak(weak_from_this(),
                                               [](AccountState& state) { state.commit.Flush(); }));
             },
             [this] { return patience->over() ? NotLoggedIn() : biz::ResultCode{}; }),
      line(std::make_shared<Line>(
          runner, Line::Limits{environment->timeouts.request, environment->timeouts.send,
                               environment->timeouts.transfer, environment->timeouts.logout})),
      files(environment->folder.root(), environment->folder.FilesFolder(user),
            environment->send_from),
      files_in_tokens(InTokens(environment->folder.FilesFolder(user) + '/')) {}

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
