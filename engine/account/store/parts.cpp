#include "account/store/parts.h"

#include <algorithm>
#include <limits>

#include "account/store/message_places.h"

namespace imsdk::account {

namespace {

// How many fetches a walk makes for a message that must be there, and for one that may be older
// than everything the part has.
constexpr std::int64_t kFetchesIfLikely = 20;
constexpr std::int64_t kFetchesIfNot = 1;

Part ReadPart(const sqlite::Statement& row) {
  return {row.Int64(0),
          {row.Int64(1), row.Int64(2)},
          {row.Int64(3), row.Int64(4)},
          row.Text(5),
          row.Bool(6)};
}

bool BelongsTo(const Walked& message, const Part& part) {
  return message.place != 0 && message.part == part.number;
}

// A late message stands in the part before its oldest one and says nothing about what is between.
bool Meets(const Walked& message, const Part& part) {
  return BelongsTo(message, part) && (part.whole || message.position >= part.reach);
}

}  // namespace

bool Lacks(const Part& part, const biz::IMPageRequest& request, const biz::IMMessagePage& page) {
  if (part.whole) return false;
  const Position at{request.msgtime, request.msgid};
  if (request.gohistory || at.is_end()) return page.outofcache;
  return part.reach.is_end() || at < part.reach;
}

Part Parts::Current(std::int64_t conversation) {
  auto row = store_.Use().Prepare(
      "SELECT part, floor_time, floor_id, reach_time, reach_id, edge, whole "
      "FROM conversations WHERE id=?",
      conversation);
  return row.Step() ? ReadPart(row) : Part{};
}

std::optional<Part> Parts::Below(std::int64_t conversation) {
  auto row = store_.Use().Prepare(
      "SELECT part, floor_time, floor_id, reach_time, reach_id, edge, whole "
      "FROM below_holes WHERE conversation=?",
      conversation);
  return row.Step() ? std::optional(ReadPart(row)) : std::nullopt;
}

void Parts::Save(std::int64_t conversation, const Part& part) {
  store_.Use()
      .Prepare(
          "UPDATE conversations SET part=?2, floor_time=?3, floor_id=?4, reach_time=?5, "
          "reach_id=?6, edge=?7, whole=?8, last_part=max(last_part, ?2) WHERE id=?1",
          conversation, part.number, part.floor.msgtime, part.floor.msgid, part.reach.msgtime,
          part.reach.msgid, part.edge, std::int64_t{part.whole})
      .Run();
}

std::int64_t Parts::Cover(std::int64_t conversation, const Position& live,
                          const std::string& place) {
  Part part = Current(conversation);
  if (part.whole || (!part.empty() && part.floor <= live)) return part.number;
  if (part.empty()) {
    part.reach = live;
    part.edge = place;
  }
  part.floor = live;
  Save(conversation, part);
  return part.number;
}

bool Parts::ComesDown(std::int64_t conversation, const Walk& walk,
                      const link::GetHistory& request) {
  const Part part = Current(conversation);
  if (request.place.empty()) return request.time == 0 && request.etime == 0;
  return request.older && (walk.joined == part.number || request.place == part.edge);
}

void Parts::TakeIn(std::int64_t conversation, Walk& walk, const link::GetHistory& request,
                   const std::string& next, const std::vector<Walked>& walked,
                   const std::string& first_place) {
  Part part = Current(conversation);
  const bool from_edge = !request.place.empty() && request.place == part.edge && request.older;
  const bool to_newest = !request.older && next.empty() && request.etime == 0;
  const bool meets =
      ComesDown(conversation, walk, request) || to_newest ||
      std::any_of(walked.begin(), walked.end(), [&](const auto& one) { return Meets(one, part); });
  if (meets) walk.joined = part.number;
  if (walk.joined != part.number) return;

  const auto below = Below(conversation);
  const auto oldest = std::find_if(walked.begin(), walked.end(),
                                   [](const Walked& message) { return message.place != 0; });
  // Whether it goes on where the part ended, and whether it comes to what is below a hole.
  const bool beyond =
      from_edge || part.empty() || (oldest != walked.end() && !BelongsTo(*oldest, part));
  bool arrives = false;
  for (const Walked& message : walked) {
    if (below && message.cleared) arrives = true;
    if (message.place == 0) continue;
    if (part.floor.is_end() || message.position < part.floor) part.floor = message.position;
    if (below && Meets(message, *below)) arrives = true;
    if (message.part == part.number) continue;
    store_.Use()
        .Prepare("UPDATE messages SET part=? WHERE place=?", part.number, message.place)
        .Run();
  }
  if (beyond) {
    const bool ends_by_time = next.empty() && request.btime > 0;
    if (!walked.empty()) part.reach = walked.front().position;
    part.edge = request.older && !ends_by_time ? next : first_place;
  }
  if (request.older && next.empty() && request.btime <= 0) part.whole = true;
  Save(conversation, part);
  if (part.whole) {
    // The server has nothing further: what lies below a hole follows at once.
    CloseHole(conversation);
    SetWhole(conversation);
    walk.joined = Current(conversation).number;
    return;
  }
  if (!arrives || Wants(conversation)) return;
  const bool past = oldest != walked.end() && !BelongsTo(*oldest, *below);
  CloseHole(conversation);
  walk.joined = below->number;
  if (!past || below->whole) return;
  Part closed = Current(conversation);
  closed.reach = part.reach;
  closed.edge = part.edge;
  Save(conversation, closed);
}

void Parts::Clear(std::int64_t conversation, const Position& newest) {
  ForgetHole(conversation);
  Part part;
  part.number = NextNumber(conversation);
  part.floor = part.reach = newest;
  Save(conversation, part);
  store_.Use()
      .Prepare("UPDATE messages SET part=? WHERE msgid=? AND conversation=?", part.number,
               newest.msgid, conversation)
      .Run();
}

void Parts::SetWhole(std::int64_t conversation) {
  ForgetHole(conversation);
  Part part = Current(conversation);
  part.whole = true;
  Save(conversation, part);
}

void Parts::OpenHole(std::int64_t conversation) {
  const Part part = Current(conversation);
  if (part.empty()) return;
  // A second hole lies above the first one; one walk comes down through both. What is between them
  // is remembered by its oldest time.
  store_.Use()
      .Prepare(
          "UPDATE below_holes SET between_time=min(between_time, ?2) WHERE conversation=?1 "
          "AND ?3=0",
          conversation, part.floor.msgtime, std::int64_t{part.floor.is_end()})
      .Run();
  store_.Use()
      .Prepare(
          "INSERT OR IGNORE INTO below_holes(conversation, part, floor_time, floor_id, reach_time, "
          "reach_id, edge, whole) VALUES(?,?,?,?,?,?,?,?)",
          conversation, part.number, part.floor.msgtime, part.floor.msgid, part.reach.msgtime,
          part.reach.msgid, part.edge, std::int64_t{part.whole})
      .Run();
  Part above;
  above.number = NextNumber(conversation);
  Save(conversation, above);
}

void Parts::Want(std::int64_t conversation, std::int64_t sender, std::int64_t msgid, bool likely) {
  store_.Use()
      .Prepare(
          "INSERT OR IGNORE INTO holes(conversation, sender, msgid, likely, fetches) "
          "VALUES(?,?,?,?,?)",
          conversation, sender, msgid, std::int64_t{likely},
          likely ? kFetchesIfLikely : kFetchesIfNot)
      .Run();
}

bool Parts::Unwant(std::int64_t conversation, std::int64_t sender, std::int64_t msgid) {
  store_.Use()
      .Prepare("DELETE FROM holes WHERE conversation=? AND sender=? AND msgid=?", conversation,
               sender, msgid)
      .Run();
  return store_.Use().Changes() == 1;
}

bool Parts::Wants(std::int64_t conversation) {
  auto row = store_.Use().Prepare("SELECT 1 FROM holes WHERE conversation=? LIMIT 1", conversation);
  return row.Step();
}

void Parts::PassBy(std::int64_t conversation, std::int64_t sender, std::int64_t msgid) {
  store_.Use()
      .Prepare("DELETE FROM holes WHERE conversation=? AND sender=? AND msgid>?", conversation,
               sender, msgid)
      .Run();
}

void Parts::Tire(std::int64_t conversation) {
  store_.Use()
      .Prepare("UPDATE holes SET fetches=fetches-1 WHERE conversation=?", conversation)
      .Run();
  store_.Use()
      .Prepare("DELETE FROM holes WHERE conversation=? AND fetches<=0 AND likely=0", conversation)
      .Run();
  store_.Use().Prepare("DELETE FROM holes WHERE conversation=? AND fetches<=0", conversation).Run();
  if (store_.Use().Changes() > 0) ForgetHole(conversation);
}

void Parts::Found(std::int64_t conversation) {
  auto row = store_.Use().Prepare(
      "SELECT 1 FROM conversations WHERE id=?1 AND wanting=0 "
      "AND NOT EXISTS (SELECT 1 FROM holes WHERE conversation=?1)",
      conversation);
  if (row.Step()) CloseHole(conversation);
}

void Parts::CloseHole(std::int64_t conversation) {
  auto below = Below(conversation);
  if (!below) return;
  const Part part = Current(conversation);
  Position floor{std::numeric_limits<std::int64_t>::max(), 0};
  {
    auto row = store_.Use().Prepare("SELECT between_time FROM below_holes WHERE conversation=?",
                                    conversation);
    if (row.Step()) floor.msgtime = row.Int64(0);
  }
  if (!part.floor.is_end()) floor = std::min(floor, part.floor);
  // What came since the hole opened is less than what lies below it.
  store_.Use()
      .Prepare("UPDATE messages SET part=?1 WHERE conversation=?2 AND part>?1 AND place>=?3",
               below->number, conversation, MessagePlaces::FirstOf(floor.msgtime))
      .Run();
  if (below->floor.is_end() || floor < below->floor) below->floor = floor;
  if (below->reach.is_end()) below->reach = part.reach;
  Save(conversation, *below);
  ForgetHole(conversation);
}

std::int64_t Parts::NextNumber(std::int64_t conversation) {
  auto row = store_.Use().Prepare("SELECT last_part FROM conversations WHERE id=?", conversation);
  return row.Step() ? row.Int64(0) + 1 : 1;
}

void Parts::ForgetHole(std::int64_t conversation) {
  store_.Use().Prepare("DELETE FROM holes WHERE conversation=?", conversation).Run();
  store_.Use().Prepare("DELETE FROM below_holes WHERE conversation=?", conversation).Run();
}

}  // namespace imsdk::account
