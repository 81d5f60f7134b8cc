#include "embedded/tribe_table.h"

#include <algorithm>

#include "embedded/streams.h"

namespace imsdk::embedded {

namespace {

// The server's choice of identifiers begins behind this.
constexpr std::int64_t kTribesFrom = 10000;

#define INFO_COLUMNS                                                                  \
  "t.id, t.type, t.name, o.appkey, o.nick, t.description, t.portrait, t.bulletin, "   \
  "t.ntfimage, t.businessimage, t.class, t.level, t.auth, t.at_all, t.open_history, " \
  "t.visitors, t.enabled, t.members, m.level, m.nickname, m.remind, "
#define INFO_JOINS(account)               \
  "LEFT JOIN accounts o ON o.id=t.owner " \
  "LEFT JOIN members m ON m.conversation=t.conversation AND m.account=" account " "
constexpr int kInfoColumns = 21;

biz::IMTribeInfo ReadInfo(const sqlite::Statement& row, TribeView view) {
  biz::IMTribeInfo info;
  info.tribeid = {row.Int64(0)};
  info.type = static_cast<biz::IMTribeType>(row.Int32(1));
  info.name = row.Wide(2);
  info.portrait = row.Wide(6);
  if (view == TribeView::kFormer) return info;
  info.owner = {row.Wide(3), row.Wide(4)};
  info.description = row.Wide(5);
  info.ntfimage = row.Wide(8);
  info.businessimage = row.Wide(9);
  info.classtype = row.Int32(10);
  info.level = row.Int32(11);
  info.authtype = static_cast<biz::TribeAuthType>(row.Int32(12));
  info.atall = static_cast<biz::TribeAtAllPermission>(row.Int32(13));
  info.open_history = row.Bool(14);
  info.visitors = row.Bool(15);
  info.enabled = row.Bool(16);
  info.members = row.Int32(17);
  if (view == TribeView::kPublic) return info;
  info.bulletin = row.Wide(7);
  info.mine.level = static_cast<biz::TribeMemberLevel>(row.Int32(18));
  info.mine.nickname = row.Wide(19);
  info.mine.remind = static_cast<biz::TribeMsgRemindType>(row.Int32(20));
  return info;
}

#define SET_WHEN_OTHER(column) "UPDATE tribes SET " column "=?2 WHERE id=?1 AND " column "<>?2"
#define SET_NUMBER(column)                                                   \
  "UPDATE tribes SET " column "=CAST(?2 AS INTEGER) WHERE id=?1 AND " column \
  "<>CAST(?2 AS "                                                            \
  "INTEGER)"

const char* SettingOf(biz::TribeModifyKey key) {
  switch (key) {
    case biz::kTribeKeyName:
      return SET_WHEN_OTHER("name");
    case biz::kTribeKeyDescription:
      return SET_WHEN_OTHER("description");
    case biz::kTribeKeyPortrait:
      return SET_WHEN_OTHER("portrait");
    case biz::kTribeKeyBulletin:
      return SET_WHEN_OTHER("bulletin");
    case biz::kTribeKeyJoinPassword:
      return SET_WHEN_OTHER("password");
    case biz::kTribeKeyNtfImage:
      return SET_WHEN_OTHER("ntfimage");
    case biz::kTribeKeyBusinessImage:
      return SET_WHEN_OTHER("businessimage");
    case biz::kTribeKeyClass:
      return SET_NUMBER("class");
    case biz::kTribeKeyAuthType:
      return SET_NUMBER("auth");
    case biz::kTribeKeyOpenHistory:
      return SET_NUMBER("open_history");
    case biz::kTribeKeyVisitors:
      return SET_NUMBER("visitors");
    case biz::kTribeKeyAtAll:
      return SET_NUMBER("at_all");
    case biz::kTribeKeyLevel:
      return SET_NUMBER("level");
  }
  throw sqlite::Error("a tribe has no such property");
}

}  // namespace

std::optional<StoredTribe> TribeTable::Find(biz::IMTribeID tribe) {
  auto row = database_.Prepare(
      "SELECT conversation, owner, open_history, type, auth, visitors, enabled, members, level, "
      "at_all "
      "FROM tribes WHERE id=?",
      tribe.id);
  if (!row.Step()) return std::nullopt;
  return StoredTribe{tribe,
                     row.Int64(0),
                     row.Int64(1),
                     row.Bool(2),
                     static_cast<biz::IMTribeType>(row.Int32(3)),
                     static_cast<biz::TribeAuthType>(row.Int32(4)),
                     row.Bool(5),
                     row.Bool(6),
                     row.Int32(7),
                     row.Int32(8),
                     static_cast<biz::TribeAtAllPermission>(row.Int32(9))};
}

biz::IMTribeInfo TribeTable::Info(const StoredTribe& tribe, std::int64_t account, TribeView view) {
  auto row =
      database_.Prepare("SELECT " INFO_COLUMNS "0 FROM tribes t " INFO_JOINS("?2") "WHERE t.id=?1",
                        tribe.id.id, account);
  return row.Step() ? ReadInfo(row, view) : biz::IMTribeInfo{};
}

std::vector<ListedTribe> TribeTable::Of(std::int64_t account, std::int64_t place,
                                        std::int64_t count) {
  auto row = database_.Prepare(
      "SELECT " INFO_COLUMNS
      "t.id FROM stays s JOIN tribes t ON t.conversation=s.conversation " INFO_JOINS(
          "?1") "WHERE s.account=?1 AND s.until=?2 AND t.id>?3 ORDER BY t.id LIMIT ?4",
      account, kNever, place, count);
  std::vector<ListedTribe> listed;
  while (row.Step()) {
    listed.push_back({ReadInfo(row, TribeView::kMember), row.Int64(kInfoColumns)});
  }
  return listed;
}

std::vector<ListedTribe> TribeTable::QuittedBy(std::int64_t account, std::int64_t place,
                                               std::int64_t count) {
  auto row = database_.Prepare("SELECT " INFO_COLUMNS
                               "s.last FROM (SELECT conversation, max(until) AS last FROM stays "
                               "WHERE account=?1 GROUP BY conversation) s JOIN tribes t ON "
                               "t.conversation=s.conversation " INFO_JOINS(
                                   "?1") "WHERE s.last<?2 ORDER BY s.last DESC LIMIT ?3",
                               account, place == 0 ? kNever : place, count);
  std::vector<ListedTribe> listed;
  while (row.Step()) {
    listed.push_back({ReadInfo(row, TribeView::kFormer), row.Int64(kInfoColumns)});
  }
  return listed;
}

std::int64_t TribeTable::OwnedBy(std::int64_t account, std::int64_t most) {
  auto row = database_.Prepare(
      "SELECT count(*) FROM (SELECT 1 FROM members INDEXED BY managed_by "
      "WHERE account=? AND level>1 AND level=3 LIMIT ?)",
      account, most);
  return row.Step() ? row.Int64(0) : 0;
}

biz::IMTribeID TribeTable::Free() {
  auto row = database_.Prepare("SELECT max(id) FROM tribes");
  return {std::max(row.Step() ? row.Int64(0) : 0, kTribesFrom) + 1};
}

void TribeTable::Add(const StoredTribe& tribe, const std::wstring& name) {
  database_
      .Prepare("INSERT INTO tribes(id, conversation, name, owner, type, auth) VALUES(?,?,?,?,?,?)",
               tribe.id.id, tribe.conversation, name, tribe.owner, tribe.type, tribe.auth)
      .Run();
}

bool TribeTable::Set(biz::IMTribeID tribe, biz::TribeModifyKey key, const std::wstring& value) {
  database_.Prepare(SettingOf(key), tribe.id, value).Run();
  return database_.Changes() == 1;
}

void TribeTable::SetOwner(biz::IMTribeID tribe, std::int64_t owner) {
  database_.Prepare("UPDATE tribes SET owner=? WHERE id=?", owner, tribe.id).Run();
}

bool TribeTable::SetEnabled(biz::IMTribeID tribe, bool enabled) {
  database_
      .Prepare("UPDATE tribes SET enabled=?2 WHERE id=?1 AND enabled<>?2", tribe.id,
               static_cast<std::int64_t>(enabled))
      .Run();
  return database_.Changes() == 1;
}

std::wstring TribeTable::Password(biz::IMTribeID tribe) {
  auto row = database_.Prepare("SELECT password FROM tribes WHERE id=?", tribe.id);
  return row.Step() ? row.Wide(0) : std::wstring();
}

std::int32_t TribeTable::CountMembers(biz::IMTribeID tribe, std::int32_t more) {
  auto row = database_.Prepare("UPDATE tribes SET members=members+? WHERE id=? RETURNING members",
                               more, tribe.id);
  std::int32_t members = 0;
  while (row.Step()) members = row.Int32(0);
  return members;
}

void TribeTable::AddVisit(const StoredTribe& tribe, std::int64_t account) {
  database_
      .Prepare(
          "INSERT INTO visitors(conversation, account, era) "
          "SELECT conversation, ?2, visit_era FROM tribes WHERE id=?1 "
          "ON CONFLICT DO UPDATE SET era=excluded.era WHERE era<>excluded.era",
          tribe.id.id, account)
      .Run();
  if (database_.Changes() == 0) return;
  database_.Prepare("UPDATE tribes SET visits=visits+1 WHERE id=?", tribe.id.id).Run();
}

std::int32_t TribeTable::Visits(biz::IMTribeID tribe) {
  auto row = database_.Prepare("SELECT visits FROM tribes WHERE id=?", tribe.id);
  return row.Step() ? row.Int32(0) : 0;
}

void TribeTable::ClearVisits(biz::IMTribeID tribe) {
  database_.Prepare("UPDATE tribes SET visits=0, visit_era=visit_era+1 WHERE id=?", tribe.id).Run();
}

}  // namespace imsdk::embedded
