// What a conversation's identifier names on the server.
#pragma once

#include <cstdint>
#include <optional>

#include "embedded/outcome.h"
#include "embedded/server_store.h"

namespace imsdk::embedded {

// The conversation that `cid` names for the caller.
struct Found {
  biz::ResultCode result;         // why there is none
  std::int64_t conversation = 0;  // 0 when nothing was ever said there
  std::int64_t peer = 0;          // the other account; 0 for a tribe
  std::optional<Stay> stay;       // in a tribe
  bool open_history = false;      // of the tribe
  bool closed = false;            // the tribe is
};

// `kEngineUnknownUser` when there is no such user; `kEngineRefused` for a tribe that the caller is
// no member of, or that does not exist, which outsiders cannot tell apart. May throw
// `sqlite::Error`.
Found FindConversation(ServerStore& store, const Caller& caller, const biz::IMConversationID& cid);

}  // namespace imsdk::embedded
