#include "embedded/contact_table.h"

#include <cwctype>

namespace imsdk::embedded {

namespace {

#define USER_COLUMNS \
  "a.id, a.appkey, a.nick, coalesce(nullif(p.display, ''), a.nick), coalesce(p.portrait, '') "
#define PROFILE_JOIN "LEFT JOIN profiles p ON p.account=a.id "
// Accounts that could not be read and only keep their numbers have no application.
#define OF_USERS "a.kind=0 AND a.appkey<>'' "
constexpr int kUserColumns = 5;

StoredUser ReadUser(const sqlite::Statement& row) {
  return {row.Int64(0),
          {.userid = {row.Wide(1), row.Wide(2)}, .display = row.Wide(3), .portrait = row.Wide(4)}};
}

std::optional<StoredUser> ReadOne(sqlite::Statement row) {
  if (!row.Step()) return std::nullopt;
  return ReadUser(row);
}

std::vector<StoredUser> ReadUsers(sqlite::Statement row) {
  std::vector<StoredUser> users;
  while (row.Step()) users.push_back(ReadUser(row));
  return users;
}

std::vector<std::int64_t> ReadNumbers(sqlite::Statement row) {
  std::vector<std::int64_t> numbers;
  while (row.Step()) numbers.push_back(row.Int64(0));
  return numbers;
}

#define CONTACT_QUERY    \
  "SELECT " USER_COLUMNS \
  ", c.gid, c.asterisk FROM contacts c CROSS JOIN accounts a ON a.id=c.contact " PROFILE_JOIN

StoredContact ReadContact(const sqlite::Statement& row) {
  StoredUser user = ReadUser(row);
  return {user.account,
          {std::move(user.shown), row.Int64(kUserColumns), row.Bool(kUserColumns + 1)}};
}

std::wstring Folded(std::wstring text) {
  for (wchar_t& letter : text) {
    letter = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(letter)));
  }
  return text;
}

}  // namespace

std::optional<StoredUser> ContactTable::User(const biz::IMUserID& user) {
  return ReadOne(database_.Prepare("SELECT " USER_COLUMNS "FROM accounts a " PROFILE_JOIN
                                   "WHERE a.appkey=? AND a.nick=? AND " OF_USERS,
                                   user.appkey, user.nick));
}

std::optional<StoredUser> ContactTable::User(std::int64_t account) {
  return ReadOne(database_.Prepare("SELECT " USER_COLUMNS "FROM accounts a " PROFILE_JOIN
                                   "WHERE a.id=? AND " OF_USERS,
                                   account));
}

std::vector<StoredUser> ContactTable::Search(const std::wstring& key, std::int64_t count) {
  return ReadUsers(database_.Prepare(
      "SELECT " USER_COLUMNS "FROM accounts a " PROFILE_JOIN "WHERE " OF_USERS
      "AND instr(coalesce(p.folded, lower(a.nick)), ?)>0 ORDER BY a.nick, a.appkey LIMIT ?",
      Folded(key), count));
}

bool ContactTable::SetProfile(const StoredUser& user) {
  const biz::IMContact& shown = user.shown;
  database_
      .Prepare(
          "INSERT INTO profiles(account, display, portrait, folded) VALUES(?1,?2,?3,?4) "
          "ON CONFLICT(account) DO UPDATE SET display=?2, portrait=?3, folded=?4 "
          "WHERE display<>?2 OR portrait<>?3",
          user.account, shown.display, shown.portrait,
          Folded(shown.userid.nick + L'\n' + shown.display))
      .Run();
  return database_.Changes() > 0;
}

std::optional<StoredContact> ContactTable::Find(std::int64_t owner, std::int64_t contact) {
  auto row = database_.Prepare(CONTACT_QUERY "WHERE c.owner=? AND c.contact=?", owner, contact);
  if (!row.Step()) return std::nullopt;
  return ReadContact(row);
}

std::vector<StoredContact> ContactTable::Behind(std::int64_t owner, std::int64_t contact,
                                                std::int64_t count) {
  auto row =
      database_.Prepare(CONTACT_QUERY "WHERE c.owner=? AND c.contact>? ORDER BY c.contact LIMIT ?",
                        owner, contact, count);
  std::vector<StoredContact> contacts;
  while (row.Step()) contacts.push_back(ReadContact(row));
  return contacts;
}

std::int64_t ContactTable::Count(std::int64_t owner) {
  auto row = database_.Prepare("SELECT count(*) FROM contacts WHERE owner=?", owner);
  row.Step();
  return row.Int64(0);
}

void ContactTable::Put(std::int64_t owner, const StoredContact& contact) {
  database_
      .Prepare("INSERT OR REPLACE INTO contacts(owner, contact, gid, asterisk) VALUES(?,?,?,?)",
               owner, contact.account, contact.listed.gid,
               static_cast<std::int64_t>(contact.listed.asterisk))
      .Run();
}

void ContactTable::Remove(std::int64_t owner, std::int64_t contact) {
  database_.Prepare("DELETE FROM contacts WHERE owner=? AND contact=?", owner, contact).Run();
}

std::vector<std::int64_t> ContactTable::OwnersOf(std::int64_t contact) {
  return ReadNumbers(database_.Prepare("SELECT owner FROM contacts WHERE contact=?", contact));
}

std::vector<biz::IMContactGroup> ContactTable::Groups(std::int64_t owner) {
  auto row = database_.Prepare(
      "SELECT gid, parent, name FROM contact_groups WHERE owner=? ORDER BY gid", owner);
  std::vector<biz::IMContactGroup> groups;
  while (row.Step()) groups.push_back({row.Int64(0), row.Int64(1), row.Wide(2)});
  return groups;
}

std::int64_t ContactTable::AddGroup(std::int64_t owner, const biz::IMContactGroup& group) {
  database_
      .Prepare("INSERT INTO contact_groups(owner, parent, name) VALUES(?,?,?)", owner, group.parent,
               group.name)
      .Run();
  return database_.LastInsertId();
}

void ContactTable::RenameGroup(std::int64_t owner, const biz::IMContactGroup& group) {
  database_
      .Prepare("UPDATE contact_groups SET name=? WHERE owner=? AND gid=?", group.name, owner,
               group.gid)
      .Run();
}

std::vector<std::int64_t> ContactTable::RemoveGroup(std::int64_t owner, std::int64_t gid) {
  auto moved = ReadNumbers(database_.Prepare(
      "SELECT contact FROM contacts WHERE owner=?1 AND gid IN (SELECT gid FROM contact_groups "
      "WHERE owner=?1 AND (gid=?2 OR parent=?2))",
      owner, gid));
  database_
      .Prepare(
          "UPDATE contacts SET gid=0 WHERE owner=?1 AND gid IN (SELECT gid FROM contact_groups "
          "WHERE owner=?1 AND (gid=?2 OR parent=?2))",
          owner, gid)
      .Run();
  database_
      .Prepare("DELETE FROM contact_groups WHERE owner=?1 AND (gid=?2 OR parent=?2)", owner, gid)
      .Run();
  return moved;
}

bool ContactTable::IsBlack(std::int64_t owner, std::int64_t account) {
  return database_.Prepare("SELECT 1 FROM black_users WHERE owner=? AND account=?", owner, account)
      .Step();
}

bool ContactTable::SetBlack(std::int64_t owner, std::int64_t account, bool on, std::int64_t now) {
  if (on) {
    database_
        .Prepare("INSERT OR IGNORE INTO black_users(owner, account, addtime) VALUES(?,?,?)", owner,
                 account, now)
        .Run();
  } else {
    database_.Prepare("DELETE FROM black_users WHERE owner=? AND account=?", owner, account).Run();
  }
  return database_.Changes() > 0;
}

std::vector<StoredUser> ContactTable::Black(std::int64_t owner) {
  return ReadUsers(database_.Prepare(
      "SELECT " USER_COLUMNS "FROM black_users b JOIN accounts a ON a.id=b.account " PROFILE_JOIN
      "WHERE b.owner=? ORDER BY b.addtime DESC",
      owner));
}

}  // namespace imsdk::embedded
