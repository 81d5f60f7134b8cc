// What clients change on the embedded server: messages, withdrawals, read reports, settings.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "embedded/server_store.h"
#include "link/server_link.h"

namespace imsdk::embedded {

// Who asks.
struct Caller {
  biz::IMUserID user;
  std::int64_t account = 0;
  std::int64_t device = 0;
};

// What became of it.
struct Outcome {
  biz::ResultCode result;
  std::int64_t svrtime = 0;
  std::vector<std::int64_t> push;  // accounts with new entries
};

// Decides and writes. Every operation runs inside a transaction, may run again when that was rolled
// back, and may throw `sqlite::Error`.
class PostDesk {
 public:
  PostDesk(ServerStore& store, std::chrono::milliseconds withdraw_limit);

  Outcome Deliver(const Caller& caller, link::Message message);
  Outcome Withdraw(const Caller& caller, const biz::IMUserID& peer, std::int64_t msgid);
  Outcome ReportRead(const Caller& caller, const biz::IMUserID& peer,
                     const std::vector<std::int64_t>& msgids);
  Outcome MarkRead(const Caller& caller, const biz::IMUserID& peer, const biz::IMMsgPosition& upto);
  Outcome SetRoaming(const Caller& caller, std::int32_t status);
  // A message of a virtual user, who is made when it is new.
  Outcome Publish(link::Message message);

 private:
  // The server's time: never goes back.
  std::int64_t Now();
  void Tell(Outcome& outcome, const NewEntry& entry);

  ServerStore& store_;
  const std::chrono::milliseconds withdraw_limit_;
  std::int64_t last_time_;
};

}  // namespace imsdk::embedded
