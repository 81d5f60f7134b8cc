// A session of the embedded server as its client holds it.
#pragma once

#include <cstdint>
#include <memory>
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

  void Deliver(const link::Message& message, link::DeliverCallback done) override {
    InRoom([number = number_, message, done = std::move(done)](MailRoom& room) {
      room.Deliver(number, message, done);
    });
  }

  void Acknowledge(std::int64_t upto) override {
    InRoom([number = number_, upto](MailRoom& room) { room.Acknowledge(number, upto); });
  }

  void Close(link::DoneCallback done) override {
    InRoom([number = number_, done = std::move(done)](MailRoom& room) {
      const bool closed = room.Close(number);
      done(closed ? biz::ResultCode{}
                  : biz::ResultCode{biz::kEngineNotLoggedIn, 0, L"the session is over"});
    });
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
