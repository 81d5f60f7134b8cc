// A session of the embedded server as its client holds it.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

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
    auto work = [message](PostDesk& desk, const Caller& caller) {
      return desk.Deliver(caller, message);
    };
    auto after = [done = std::move(done)](const biz::ResultCode& result, const Outcome& outcome) {
      done(result, outcome.svrtime);
    };
    InRoom([number = number_, work = std::move(work), after = std::move(after)](MailRoom& room) {
      room.Change(number, work, after);
    });
  }

  void Withdraw(const biz::IMUserID& peer, std::int64_t msgid, link::DoneCallback done) override {
    Change([peer, msgid](PostDesk& desk,
                         const Caller& caller) { return desk.Withdraw(caller, peer, msgid); },
           std::move(done));
  }

  void ReportRead(const biz::IMUserID& peer, const std::vector<std::int64_t>& msgids,
                  link::DoneCallback done) override {
    Change([peer, msgids](PostDesk& desk,
                          const Caller& caller) { return desk.ReportRead(caller, peer, msgids); },
           std::move(done));
  }

  void MarkRead(const biz::IMUserID& peer, const biz::IMMsgPosition& upto,
                link::DoneCallback done) override {
    Change([peer, upto](PostDesk& desk,
                        const Caller& caller) { return desk.MarkRead(caller, peer, upto); },
           std::move(done));
  }

  void Signal(const biz::IMUserID& peer, std::int32_t status) override {
    InRoom([number = number_, peer, status](MailRoom& room) { room.Signal(number, peer, status); });
  }

  void GetHistory(const link::HistoryRequest& request, link::HistoryCallback done) override {
    InRoom([number = number_, request, done = std::move(done)](MailRoom& room) {
      room.GetHistory(number, request, done);
    });
  }

  void GetRoaming(link::RoamingCallback done) override {
    InRoom([number = number_, done = std::move(done)](MailRoom& room) {
      room.GetRoaming(number, done);
    });
  }

  void SetRoaming(std::int32_t status, link::DoneCallback done) override {
    Change(
        [status](PostDesk& desk, const Caller& caller) { return desk.SetRoaming(caller, status); },
        std::move(done));
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
  void Change(MailRoom::Work work, link::DoneCallback done) {
    InRoom([number = number_, work = std::move(work), done = std::move(done)](MailRoom& room) {
      room.Change(number, work,
                  [done](const biz::ResultCode& result, const Outcome&) { done(result); });
    });
  }

  template <class F>
  void InRoom(F work) {
    runner_->PostTask(FROM_HERE, base::BindWeak(room_, std::move(work)));
  }

  const std::weak_ptr<MailRoom> room_;
  const std::shared_ptr<base::TaskRunner> runner_;
  const std::int64_t number_;
};

}  // namespace imsdk::embedded
