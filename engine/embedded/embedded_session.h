// A session of the embedded server as its client holds it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "embedded/mail_room.h"
#include "kexbase/callback.h"
#include "kexbase/task_runner.h"
#include "link/server_link.h"

namespace imsdk::embedded {

// Hands everything to the mail room's thread. A server that stopped forgets what it is asked.
class EmbeddedSession final : public link::Session {
 public:
  EmbeddedSession(std::weak_ptr<MailRoom> room, std::shared_ptr<base::TaskRunner> runner,
                  std::int64_t number)
      : room_(std::move(room)), runner_(std::move(runner)), number_(number) {}

  ~EmbeddedSession() override {
    InRoom([number = number_](MailRoom& room) { room.Close(number); });
  }

  // Whoever sends: what breaks its bounds never comes into the server's queue.
  void Ask(link::Request request) override {
    const bool refused = std::visit(
        [](const auto& asked) {
          const biz::ResultCode why = link::CheckBounds(asked.operation);
          if (!why.ok() && asked.done) asked.done(why, {});
          return !why.ok();
        },
        request);
    if (refused) return;
    const auto held = std::make_shared<link::Request>(std::move(request));
    InRoom([number = number_, held](MailRoom& room) { room.Ask(number, std::move(*held)); });
  }

  void Acknowledge(const std::string& position) override {
    InRoom([number = number_, position](MailRoom& room) { room.Acknowledge(number, position); });
  }

 private:
  template <class F>
  void InRoom(F work) {
    runner_->PostTask(FROM_HERE, base::BindWeak(room_, std::move(work)));
  }

  const std::weak_ptr<MailRoom> room_;
  const std::shared_ptr<base::TaskRunner> runner_;
  const std::int64_t number_;
};

}  // namespace imsdk::embedded
