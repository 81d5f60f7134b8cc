// Which messages of a conversation the account's store knows to be all there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "account/store/open_stores.h"
#include "account/store/positions.h"
#include "imsdk/biz/history.h"
#include "link/operations.h"

namespace imsdk::account {

// The newest part of a conversation, in the order of the server: the store has everything of it.
// Its messages bear its number. Others lie outside until the part reaches them: islands that were
// fetched by time, and what was a part once.
struct Part {
  std::int64_t number = 1;
  Position floor;      // no message of it is older by its sender's clock; the end: it has none
  Position reach;      // of its oldest message by the server's order; the end: it has none
  std::string edge;    // where the server's history goes on before it; empty: from the newest end
  bool whole = false;  // nothing is before it

  bool empty() const { return !whole && floor.is_end(); }
};

// Whether the part may lack something for this page, which was found within it.
bool Lacks(const Part& part, const biz::IMPageRequest& request, const biz::IMMessagePage& page);

// A walk through the server's history, fetch by fetch.
struct Walk {
  std::int64_t joined = 0;  // the part that it meets without a gap between; 0: none that is known
};

// A message that a fetch of the walk brought.
struct Walked {
  std::int64_t place = 0;  // of the store's row; 0 for a message that was deleted here
  std::int64_t part = 0;   // that it belonged to
  Position position;
  bool cleared = false;  // went when all was deleted, so it lies below every hole
};

// Used on the account's worker only. Every function may throw `sqlite::Error`. Conversations are
// given by their number.
//
// A hole is opened when messages turn out to be missing inside the part: what was the part lies
// below the hole then, and a new part begins above it. The hole closes when a walk has come down
// through it.
class Parts {
 public:
  explicit Parts(LazyStore& store) : store_(store) {}

  Part Current(std::int64_t conversation);
  // What lies below the hole; nothing without a hole.
  std::optional<Part> Below(std::int64_t conversation);
  void Save(std::int64_t conversation, const Part& part);

  // A live message of the part came: it may be older than those that are there. Returns the part's
  // number.
  std::int64_t Cover(std::int64_t conversation, const Position& live, const std::string& place);
  // Whether a fetch is known beforehand to go on from the part towards older messages.
  bool ComesDown(std::int64_t conversation, const Walk& walk, const link::GetHistory& request);
  // Takes in what a fetch of a walk brought, oldest first; `first_place` is the server's place of
  // the first one.
  void TakeIn(std::int64_t conversation, Walk& walk, const link::GetHistory& request,
              const std::string& next, const std::vector<Walked>& walked,
              const std::string& first_place);
  // Nothing is known to be complete any more but the newest message.
  void Clear(std::int64_t conversation, const Position& newest);
  // Everything is deleted: nothing is missing.
  void SetWhole(std::int64_t conversation);

  // Inside the part something is missing. Everything that comes from now on lies above the hole.
  void OpenHole(std::int64_t conversation);
  // A message of `sender` that is missing there. `likely`: the sender's messages before it are
  // there, so that it cannot lie further back than they.
  void Want(std::int64_t conversation, std::int64_t sender, std::int64_t msgid, bool likely);
  // The message came. True when it was wanted.
  bool Unwant(std::int64_t conversation, std::int64_t sender, std::int64_t msgid);
  bool Wants(std::int64_t conversation);
  // The sender's messages from before this one are reached: wanted ones behind it do not come.
  void PassBy(std::int64_t conversation, std::int64_t sender, std::int64_t msgid);
  // A walk for the hole has made another fetch: what is not found after too many is given up. What
  // was likely to be there leaves the hole's lower side out of the part for good.
  void Tire(std::int64_t conversation);
  // A wanted message came by itself: the hole closes when that was all there is to it.
  void Found(std::int64_t conversation);
  // The part goes on below the hole, if there is one; whatever was wanted there does not come.
  void CloseHole(std::int64_t conversation);

 private:
  std::int64_t NextNumber(std::int64_t conversation);
  void ForgetHole(std::int64_t conversation);

  LazyStore& store_;
};

}  // namespace imsdk::account
