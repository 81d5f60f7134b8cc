// Finds messages and pictures in an account's store.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "account/store/conversation_table.h"
#include "account/store/message_places.h"
#include "account/store/open_stores.h"
#include "account/store/parts.h"
#include "imsdk/biz/history.h"

namespace imsdk::account {

// Kinds of conversation that belong together.
using ChatKinds = std::vector<biz::IMCIDType>;

// Used on the account's worker only. Every function may throw `sqlite::Error`. Keywords are plain
// text without a syntax. Requests keep their bounds.
class MessageSearch {
 public:
  MessageSearch(LazyStore& store, ConversationTable& conversations, Parts& parts,
                MessagePlaces& places, const biz::IMUserID& self)
      : store_(store), conversations_(conversations), parts_(parts), places_(places), self_(self) {}

  // Messages of one conversation. A search by number does not stop at the boundary.
  biz::IMSearchPage Search(const biz::IMConversationID& cid, const biz::IMSearchRequest& request);
  // Messages of all conversations of these kinds; there is no boundary then.
  biz::IMSearchPage SearchAll(const ChatKinds& kinds, const biz::IMSearchRequest& request);
  // The conversations of these kinds with a message that fits, the newest such message first.
  std::vector<biz::IMConversationID> Conversations(const ChatKinds& kinds,
                                                   const biz::IMSearchRequest& request);
  std::vector<biz::IMMsgPicture> Pictures(const biz::IMConversationID& cid,
                                          const biz::IMPictureRequest& request);

  // What a reader of the conversation sees unless it ignores the boundary.
  struct Visible {
    PlaceRange range;
    std::int64_t part = kAllParts;  // its messages only
  };
  static constexpr std::int64_t kAllParts = -1;
  Visible VisiblePart(std::int64_t conversation, bool ignore_boundary);

 private:
  // What a message has to be besides what the index tells, as lists of numbers in a text; empty:
  // anything.
  struct Filter {
    std::string senders{};
    std::string relations{};
    bool empty() const { return senders.empty() && relations.empty(); }
  };
  Filter FilterOf(const biz::IMSearchRequest& request);

  // Calls `take` with the places that fit, from one end of the range, until it returns false.
  void Walk(const std::string& expression, const Visible& visible, const Filter& filter, bool older,
            const std::function<bool(std::int64_t place)>& take);
  biz::IMSearchPage Find(const std::string& expression, Visible visible,
                         const biz::IMSearchRequest& request);
  std::vector<biz::IMMessage> Load(const std::vector<std::int64_t>& places, std::size_t most_text);

  LazyStore& store_;
  ConversationTable& conversations_;
  Parts& parts_;
  MessagePlaces& places_;
  const biz::IMUserID& self_;
};

}  // namespace imsdk::account
