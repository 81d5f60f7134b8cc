// From which position on the account's store has every message of a conversation, and what an
// answer of the server adds to that.
#pragma once

#include "account/store/conversation_table.h"
#include "imsdk/biz/message.h"
#include "link/server_link.h"

namespace imsdk::account {

// Whether the store may lack something for this page, which it found within its boundary.
bool Lacks(const Completeness& complete, const biz::IMPageRequest& request,
           const biz::IMMessagePage& page);

// How far the store is complete once it has `history`, the answer to `request`.
Completeness Extended(const Completeness& before, const link::HistoryRequest& request,
                      const link::History& history);

}  // namespace imsdk::account
