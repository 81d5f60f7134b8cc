#include "embedded/account_table.h"

namespace imsdk::embedded {

std::optional<StoredAccount> AccountTable::Find(const biz::IMUserID& user) {
  auto row = database_.Prepare(
      "SELECT id, password_hash, kind, roam_opened, roaming, acknowledged FROM accounts "
      "WHERE appkey=? AND nick=?",
      user.appkey, user.nick);
  if (!row.Step()) return std::nullopt;
  return StoredAccount{row.Int64(0),
                       row.Text(1),
                       static_cast<biz::IMCIDType>(row.Int32(2)),
                       {row.Int64(3), row.Int32(4)},
                       row.Int64(5)};
}

biz::IMUserID AccountTable::User(std::int64_t account) {
  auto row = database_.Prepare("SELECT appkey, nick FROM accounts WHERE id=?", account);
  return row.Step() ? biz::IMUserID{row.Wide(0), row.Wide(1)} : biz::IMUserID{};
}

bool AccountTable::Any() { return database_.Prepare("SELECT 1 FROM accounts").Step(); }

bool AccountTable::Add(const biz::IMUserID& user, const std::string& password_hash,
                       biz::IMCIDType kind) {
  database_
      .Prepare("INSERT OR IGNORE INTO accounts(appkey, nick, password_hash, kind) VALUES(?,?,?,?)",
               user.appkey, user.nick, password_hash, kind)
      .Run();
  return database_.Changes() == 1;
}

void AccountTable::SetRoaming(std::int64_t account, const biz::IMRoamStatus& roaming) {
  database_
      .Prepare("UPDATE accounts SET roaming=?, roam_opened=? WHERE id=?", roaming.roamstatus,
               roaming.opentime, account)
      .Run();
}

std::int64_t AccountTable::NewestOpenTime() {
  auto row = database_.Prepare("SELECT max(roam_opened) FROM accounts");
  return row.Step() ? row.Int64(0) : 0;
}

std::int64_t AccountTable::Device(std::int64_t account, const std::string& name) {
  {
    auto row =
        database_.Prepare("SELECT id FROM devices WHERE account=? AND name=?", account, name);
    if (row.Step()) return row.Int64(0);
  }
  database_.Prepare("INSERT INTO devices(account, name) VALUES(?,?)", account, name).Run();
  return database_.LastInsertId();
}

bool AccountTable::HasOtherDevices(std::int64_t account, std::int64_t device) {
  return database_.Prepare("SELECT 1 FROM devices WHERE account=? AND id<>?", account, device)
      .Step();
}

void AccountTable::SetAcknowledged(std::int64_t account, Position position) {
  database_
      .Prepare("UPDATE accounts SET acknowledged=?2 WHERE id=?1 AND acknowledged<?2", account,
               position)
      .Run();
}

void AccountTable::SetAllAcknowledged(Position position) {
  database_.Prepare("UPDATE accounts SET acknowledged=?", position).Run();
}

void AccountTable::AddToken(std::int64_t account, const std::string& hash, std::int64_t expires,
                            std::int64_t now) {
  database_.Prepare("DELETE FROM tokens WHERE expires<=?", now).Run();
  database_
      .Prepare("INSERT INTO tokens(hash, account, expires) VALUES(?,?,?)", hash, account, expires)
      .Run();
}

bool AccountTable::HasToken(std::int64_t account, const std::string& hash, std::int64_t now) {
  return database_
      .Prepare("SELECT 1 FROM tokens WHERE hash=? AND account=? AND expires>?", hash, account, now)
      .Step();
}

}  // namespace imsdk::embedded
