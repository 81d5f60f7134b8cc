// The archive of the embedded server: pages of history, and the switch of it.
#pragma once

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A desk; see `PostDesk`.
class HistoryDesk {
 public:
  explicit HistoryDesk(ServerStore& store) : store_(store) {}

  Outcome<link::History> Answer(const Caller& caller, const link::GetHistory& request);
  Outcome<biz::IMRoamStatus> Answer(const Caller& caller, const link::GetRoaming& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetRoaming& request);

 private:
  struct Range;
  // What of the conversation lies in the times that are asked for and open.
  Range OpenRange(std::int64_t conversation, std::int64_t from_time, std::int64_t to_time);
  // The first position of the conversation with this time or a later one; `kNever` when there is
  // none.
  Position FirstFrom(std::int64_t conversation, std::int64_t time);

  ServerStore& store_;
};

}  // namespace imsdk::embedded
