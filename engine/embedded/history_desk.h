// The archive of the embedded server: pages of history, what is around a message, and the switch of
// it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A desk; see `PostDesk`.
class HistoryDesk {
 public:
  explicit HistoryDesk(ServerStore& store) : store_(store) {}

  Outcome<link::History> Answer(const Caller& caller, const link::GetHistory& request);
  Outcome<link::Context> Answer(const Caller& caller, const link::GetContext& request);
  Outcome<biz::IMRoamStatus> Answer(const Caller& caller, const link::GetRoaming& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SetRoaming& request);

 private:
  // Positions without both ends.
  struct Range {
    Position after = 0;
    Position before = kNever;
  };
  // What of a conversation an account may see.
  struct Window {
    std::int64_t caller = 0;
    std::int64_t conversation = 0;  // 0: there is none yet
    std::int64_t opened = 0;        // nothing from before this time
    Position joined = 0;            // of its stay in a tribe
    Position hidden = 0;            // sees nothing up to this
  };
  struct Part {
    Range range{};
    bool older = true;
    bool mentions = false;
    std::size_t count = 0;
  };
  biz::ResultCode OpenFor(const Caller& caller, const biz::IMConversationID& cid, Window* window);
  link::Message Show(const Window& window, const sqlite::Statement& row);
  // Oldest first. True when there are more of them in the direction.
  bool ReadPart(const Window& window, const Part& part, std::vector<link::Message>* msgs);
  // What of the conversation lies in the times that are asked for and open.
  Range OpenRange(std::int64_t conversation, std::int64_t from_time, std::int64_t to_time);
  // The first position of the conversation with this time or a later one; `kNever` when there is
  // none.
  Position FirstFrom(std::int64_t conversation, std::int64_t time);

  ServerStore& store_;
};

}  // namespace imsdk::embedded
