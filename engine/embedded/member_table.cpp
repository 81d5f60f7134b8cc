#include "embedded/member_table.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kOneMessage = 1000;
// What a member wrote counts half after this time.
constexpr double kHalfLife = 7.0 * 24 * 3600 * 1000;
// So many messages lately make the first level, the second, and so on.
constexpr std::int64_t kActiveLevels[] = {1, 5, 20, 50, 200};

std::int64_t Faded(std::int64_t activity, std::int64_t since, std::int64_t now) {
  if (now <= since) return activity;
  return std::llround(static_cast<double>(activity) *
                      std::exp2(-static_cast<double>(now - since) / kHalfLife));
}

std::int32_t ActiveLevel(std::int64_t activity) {
  // A message that was written an hour ago still is one.
  const std::int64_t messages = (activity + kOneMessage / 2) / kOneMessage;
  const auto* above =
      std::upper_bound(std::begin(kActiveLevels), std::end(kActiveLevels), messages);
  return static_cast<std::int32_t>(above - std::begin(kActiveLevels));
}

#define MEMBER_COLUMNS "m.account, a.appkey, a.nick, m.level, m.nickname, m.activity, m.active_at "
#define MEMBER_JOIN "JOIN accounts a ON a.id=m.account "

StoredMember ReadMember(const sqlite::Statement& row) {
  return {row.Int64(0),
          {row.Wide(1), row.Wide(2)},
          static_cast<biz::TribeMemberLevel>(row.Int32(3)),
          row.Wide(4),
          row.Int64(5),
          row.Int64(6)};
}

std::vector<StoredMember> ReadMembers(sqlite::Statement row) {
  std::vector<StoredMember> members;
  while (row.Step()) members.push_back(ReadMember(row));
  return members;
}

}  // namespace

biz::IMTribeMember ToMember(const StoredMember& member, biz::TribeMemberBasicStatus status,
                            std::int64_t now) {
  return {member.user,      status, member.nickname.empty() ? member.user.nick : member.nickname,
          member.user.nick, {},     ActiveLevel(Faded(member.activity, member.active_at, now)),
          member.level};
}

std::optional<StoredMember> MemberTable::Find(std::int64_t conversation, std::int64_t account) {
  auto row = database_.Prepare("SELECT " MEMBER_COLUMNS "FROM members m " MEMBER_JOIN
                               "WHERE m.conversation=? AND m.account=?",
                               conversation, account);
  if (!row.Step()) return std::nullopt;
  return ReadMember(row);
}

std::vector<StoredMember> MemberTable::Behind(std::int64_t conversation, std::int64_t account,
                                              std::int64_t count) {
  // The order is that of the members' table, whose part is read and no more.
  return ReadMembers(
      database_.Prepare("SELECT " MEMBER_COLUMNS "FROM members m CROSS " MEMBER_JOIN
                        "WHERE m.conversation=? AND m.account>? ORDER BY m.account LIMIT ?",
                        conversation, account, count));
}

std::vector<std::int64_t> MemberTable::Managers(std::int64_t conversation, std::int64_t count) {
  auto row = database_.Prepare(
      "SELECT account FROM members WHERE conversation=? AND level>1 LIMIT ?", conversation, count);
  std::vector<std::int64_t> managers;
  while (row.Step()) managers.push_back(row.Int64(0));
  return managers;
}

void MemberTable::Add(std::int64_t conversation, std::int64_t account,
                      biz::TribeMemberLevel level) {
  database_
      .Prepare("INSERT INTO members(conversation, account, level) VALUES(?,?,?)", conversation,
               account, level)
      .Run();
}

void MemberTable::Remove(std::int64_t conversation, std::int64_t account) {
  database_.Prepare("DELETE FROM members WHERE conversation=? AND account=?", conversation, account)
      .Run();
  database_
      .Prepare("DELETE FROM attention WHERE account=? AND conversation=?", account, conversation)
      .Run();
}

void MemberTable::SetLevel(std::int64_t conversation, std::int64_t account,
                           biz::TribeMemberLevel level) {
  database_
      .Prepare("UPDATE members SET level=? WHERE conversation=? AND account=?", level, conversation,
               account)
      .Run();
}

bool MemberTable::SetNickname(std::int64_t conversation, std::int64_t account,
                              const std::wstring& nickname) {
  database_
      .Prepare(
          "UPDATE members SET nickname=?3 WHERE conversation=?1 AND account=?2 AND nickname<>?3",
          conversation, account, nickname)
      .Run();
  return database_.Changes() == 1;
}

void MemberTable::SetRemind(std::int64_t conversation, std::int64_t account,
                            biz::TribeMsgRemindType type) {
  database_
      .Prepare("UPDATE members SET remind=? WHERE conversation=? AND account=?", type, conversation,
               account)
      .Run();
}

void MemberTable::NoteMessage(std::int64_t conversation, std::int64_t account, std::int64_t now) {
  std::int64_t activity = 0;
  {
    auto row = database_.Prepare(
        "SELECT activity, active_at FROM members WHERE conversation=? AND account=?", conversation,
        account);
    if (!row.Step()) return;
    activity = Faded(row.Int64(0), row.Int64(1), now);
  }
  database_
      .Prepare("UPDATE members SET activity=?, active_at=? WHERE conversation=? AND account=?",
               activity + kOneMessage, now, conversation, account)
      .Run();
}

void MemberTable::SetAttention(std::int64_t account, std::int64_t conversation, std::int64_t member,
                               bool on) {
  database_
      .Prepare(on ? "INSERT OR IGNORE INTO attention(account, conversation, member) VALUES(?,?,?)"
                  : "DELETE FROM attention WHERE account=? AND conversation=? AND member=?",
               account, conversation, member)
      .Run();
}

std::vector<StoredMember> MemberTable::Attention(std::int64_t account, std::int64_t conversation) {
  return ReadMembers(database_.Prepare(
      "SELECT " MEMBER_COLUMNS
      "FROM attention t JOIN members m ON m.conversation=t.conversation "
      "AND m.account=t.member " MEMBER_JOIN "WHERE t.account=? AND t.conversation=?",
      account, conversation));
}

bool MemberTable::IsBlack(std::int64_t conversation, std::int64_t account) {
  return database_
      .Prepare("SELECT 1 FROM black WHERE conversation=? AND account=?", conversation, account)
      .Step();
}

void MemberTable::SetBlack(std::int64_t conversation, std::int64_t account, bool on,
                           std::int64_t now) {
  if (!on) {
    database_.Prepare("DELETE FROM black WHERE conversation=? AND account=?", conversation, account)
        .Run();
    return;
  }
  database_
      .Prepare("INSERT OR IGNORE INTO black(conversation, account, addtime) VALUES(?,?,?)",
               conversation, account, now)
      .Run();
}

std::vector<MemberTable::Black> MemberTable::BlackBehind(std::int64_t conversation,
                                                         std::int64_t account, std::int64_t count) {
  auto row = database_.Prepare(
      "SELECT b.account, a.appkey, a.nick, b.addtime FROM black b JOIN accounts a ON "
      "a.id=b.account WHERE b.conversation=? AND b.account>? ORDER BY b.account LIMIT ?",
      conversation, account, count);
  std::vector<Black> found;
  while (row.Step()) {
    found.push_back({row.Int64(0), {{row.Wide(1), row.Wide(2)}, row.Wide(2), {}, row.Int64(3)}});
  }
  return found;
}

}  // namespace imsdk::embedded
