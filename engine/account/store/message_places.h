// Gives every message of a store a number that grows with (msgtime, msgid).
#pragma once

#include <cstdint>
#include <limits>

#include "account/store/open_stores.h"
#include "account/store/positions.h"

namespace imsdk::account {

// A message's place is its row number, so that the table, its indexes and the full-text index all
// run in the order of time without a column for it. The upper bits are the time; the messages of
// one millisecond share the `kTies` numbers below it, with gaps for those that come later. The
// first and the last of these numbers are never given.
inline constexpr int kTieBits = 21;
inline constexpr std::int64_t kTies = std::int64_t{1} << kTieBits;
// A place has 63 bits. Times before 1970 or after 2109 share the first and the last millisecond.
inline constexpr std::int64_t kLastPlacedTime = (std::int64_t{1} << (63 - kTieBits)) - 1;
// A million messages of one millisecond are all that a store takes.
inline constexpr std::int64_t kMostTies = kTies / 2;

// Used on the account's worker only. Every function may throw `sqlite::Error`.
class MessagePlaces {
 public:
  explicit MessagePlaces(LazyStore& store) : store_(store) {}

  // A free place for a message of this position. May move other messages of its millisecond.
  std::int64_t Choose(const Position& position);

  // The limits of what lies before or after a position: a message lies strictly before it exactly
  // when its place is not above `LastBefore`, strictly after it when not below `FirstAfter`.
  std::int64_t LastBefore(const Position& position);
  std::int64_t FirstAfter(const Position& position);

  // The limits of what was sent from a time on, and up to and with a time.
  static std::int64_t FirstOf(std::int64_t msgtime);
  static std::int64_t LastOf(std::int64_t msgtime);

 private:
  void Spread(std::int64_t first, std::int64_t last);

  LazyStore& store_;
};

// The places that a query reads, both limits included.
struct PlaceRange {
  std::int64_t first = 0;
  std::int64_t last = std::numeric_limits<std::int64_t>::max();

  // Leaves what lies on one side of a position; everything when that is the end.
  void GoOnFrom(MessagePlaces& places, const Position& position, bool older);
  // Leaves what was sent from `btime` up to and with `etime`, where they are not 0.
  void Between(std::int64_t btime, std::int64_t etime);
};

}  // namespace imsdk::account
