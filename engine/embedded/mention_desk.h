// Mentions on the embedded server: whether a message may mention, who has read that.
#pragma once

#include <cstdint>
#include <vector>

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// Whom a message of the caller's mentions, in the server's numbers.
struct Mentioned {
  biz::ResultCode result;  // why it may not
  std::int32_t type = biz::kAtNobody;
  std::vector<std::int64_t> named{};
  std::int32_t unread = 0;  // who are to read it
};
// Names that nobody has are passed over. May throw `sqlite::Error`.
Mentioned CheckMention(ServerStore& store, const Caller& caller, const link::Message& message);

// A desk; see `PostDesk`.
class MentionDesk {
 public:
  explicit MentionDesk(ServerStore& store) : store_(store) {}

  Outcome<link::Nothing> Answer(const Caller& caller, const link::ReadMentions& request);
  Outcome<link::MentionCounts> Answer(const Caller& caller,
                                      const link::CountMentionReaders& request);
  Outcome<link::MentionReaders> Answer(const Caller& caller,
                                       const link::GetMentionReaders& request);

 private:
  ServerStore& store_;
};

}  // namespace imsdk::embedded
