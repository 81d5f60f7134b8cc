#include "account/session/account_state.h"

#include "kexbase/callback.h"

namespace imsdk::account {

AccountState::AccountState(std::shared_ptr<const Environment> env, const biz::IMUserID& user,
                           const Worker& worker)
    : environment(std::move(env)),
      self(user),
      runner(worker.runner),
      store(environment->folder.MessageStore(user), user, worker.stores),
      commit([this]() -> sqlite::Database& { return store.database(); },
             [this] {
               runner->PostTask(FROM_HERE,
                                base::BindWeak(weak_from_this(),
                                               [](AccountState& state) { state.commit.Flush(); }));
             }),
      line(std::make_shared<Line>(runner, environment->timeouts.request)),
      files(environment->folder.root(), environment->folder.FilesFolder(user),
            environment->send_from) {}

}  // namespace imsdk::account
