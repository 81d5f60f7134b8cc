#include "account/store/message_places.h"

#include <algorithm>

namespace imsdk::account {

namespace {

// Room left to the neighbour when messages come in order, or in the order of paging back.
constexpr std::int64_t kStep = 16;

}  // namespace

std::int64_t MessagePlaces::FirstOf(std::int64_t msgtime) {
  return std::clamp<std::int64_t>(msgtime, 0, kLastPlacedTime) << kTieBits;
}

std::int64_t MessagePlaces::LastOf(std::int64_t msgtime) { return FirstOf(msgtime) + (kTies - 1); }

std::int64_t MessagePlaces::LastBefore(const Position& position) {
  auto row = store_.Use().Prepare(
      "SELECT place FROM messages WHERE place BETWEEN ? AND ? AND (msgtime, msgid) < (?, ?) "
      "ORDER BY place DESC LIMIT 1",
      FirstOf(position.msgtime), LastOf(position.msgtime), position.msgtime, position.msgid);
  return row.Step() ? row.Int64(0) : FirstOf(position.msgtime);
}

std::int64_t MessagePlaces::FirstAfter(const Position& position) {
  auto row = store_.Use().Prepare(
      "SELECT place FROM messages WHERE place BETWEEN ? AND ? AND (msgtime, msgid) > (?, ?) "
      "ORDER BY place LIMIT 1",
      FirstOf(position.msgtime), LastOf(position.msgtime), position.msgtime, position.msgid);
  return row.Step() ? row.Int64(0) : LastOf(position.msgtime);
}

std::int64_t MessagePlaces::Choose(const Position& position) {
  const std::int64_t first = FirstOf(position.msgtime);
  const std::int64_t last = LastOf(position.msgtime);
  const std::int64_t below = LastBefore(position);
  std::int64_t above = last;
  {
    auto row = store_.Use().Prepare(
        "SELECT place FROM messages WHERE place > ? AND place < ? ORDER BY place LIMIT 1", below,
        last);
    if (row.Step()) above = row.Int64(0);
  }
  const std::int64_t middle = below + (above - below) / 2;
  if (middle == below) {
    Spread(first, last);
    return Choose(position);
  }
  if (below > first && above == last) return std::min(middle, below + kStep);
  if (below == first && above < last) return std::max(middle, above - kStep);
  return middle;
}

void MessagePlaces::Spread(std::int64_t first, std::int64_t last) {
  sqlite::Database& database = store_.Use();
  std::int64_t count = 0;
  {
    auto row =
        database.Prepare("SELECT count(*) FROM messages WHERE place BETWEEN ? AND ?", first, last);
    if (row.Step()) count = row.Int64(0);
  }
  if (count >= kMostTies) throw sqlite::Error("too many messages of one millisecond");
  // By way of the negative numbers, where nothing is in the way. Half of the room stays at the
  // ends.
  database.Prepare("UPDATE messages SET place = -place WHERE place BETWEEN ? AND ?", first, last)
      .Run();
  const std::int64_t step = kMostTies / (count + 1);
  std::int64_t place = first + kMostTies / 2;
  std::int64_t from = -last;
  for (std::int64_t i = 0; i < count; ++i) {
    database
        .Prepare(
            "UPDATE messages SET place = ? WHERE place = "
            "(SELECT max(place) FROM messages WHERE place BETWEEN ? AND ?)",
            place += step, from, -first)
        .Run();
  }
}

void PlaceRange::GoOnFrom(MessagePlaces& places, const Position& position, bool older) {
  if (position.is_end()) return;
  if (older) {
    last = std::min(last, places.LastBefore(position));
  } else {
    first = std::max(first, places.FirstAfter(position));
  }
}

void PlaceRange::Between(std::int64_t btime, std::int64_t etime) {
  if (btime != 0) first = std::max(first, MessagePlaces::FirstOf(btime));
  if (etime != 0) last = std::min(last, MessagePlaces::LastOf(etime));
}

}  // namespace imsdk::account
