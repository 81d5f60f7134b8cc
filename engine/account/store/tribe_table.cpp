#include "account/store/tribe_table.h"

namespace imsdk::account {

std::optional<std::vector<biz::IMTribeInfo>> TribeTable::All() {
  {
    auto row = store_.Use().Prepare("SELECT 1 FROM session WHERE tribes_known=1");
    if (!row.Step()) return std::nullopt;
  }
  auto row = store_.Use().Prepare(
      "SELECT id, type, name, appkey, nick, description, portrait, bulletin, ntfimage, "
      "businessimage, class, level, auth, at_all, open_history, visitors, enabled, members, "
      "my_level, nickname, remind FROM tribes");
  std::vector<biz::IMTribeInfo> tribes;
  while (row.Step()) {
    biz::IMTribeInfo& tribe = tribes.emplace_back();
    tribe.tribeid = {row.Int64(0)};
    tribe.type = static_cast<biz::IMTribeType>(row.Int32(1));
    tribe.name = row.Wide(2);
    tribe.owner = {row.Wide(3), row.Wide(4)};
    tribe.description = row.Wide(5);
    tribe.portrait = row.Wide(6);
    tribe.bulletin = row.Wide(7);
    tribe.ntfimage = row.Wide(8);
    tribe.businessimage = row.Wide(9);
    tribe.classtype = row.Int32(10);
    tribe.level = row.Int32(11);
    tribe.authtype = static_cast<biz::TribeAuthType>(row.Int32(12));
    tribe.atall = static_cast<biz::TribeAtAllPermission>(row.Int32(13));
    tribe.open_history = row.Bool(14);
    tribe.visitors = row.Bool(15);
    tribe.enabled = row.Bool(16);
    tribe.members = row.Int32(17);
    tribe.mine.level = static_cast<biz::TribeMemberLevel>(row.Int32(18));
    tribe.mine.nickname = row.Wide(19);
    tribe.mine.remind = static_cast<biz::TribeMsgRemindType>(row.Int32(20));
  }
  return tribes;
}

void TribeTable::Replace(const std::vector<biz::IMTribeInfo>& tribes) {
  store_.Use().Prepare("DELETE FROM tribes").Run();
  for (const biz::IMTribeInfo& tribe : tribes) Put(tribe);
  store_.Use().Prepare("UPDATE session SET tribes_known=1").Run();
}

void TribeTable::Put(const biz::IMTribeInfo& tribe) {
  store_.Use()
      .Prepare(
          "INSERT OR REPLACE INTO tribes(id, type, name, appkey, nick, description, portrait, "
          "bulletin, ntfimage, businessimage, class, level, auth, at_all, open_history, visitors, "
          "enabled, members, my_level, nickname, remind) "
          "VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
          tribe.tribeid.id, std::int64_t{tribe.type}, tribe.name, tribe.owner.appkey,
          tribe.owner.nick, tribe.description, tribe.portrait, tribe.bulletin, tribe.ntfimage,
          tribe.businessimage, std::int64_t{tribe.classtype}, std::int64_t{tribe.level},
          std::int64_t{tribe.authtype}, std::int64_t{tribe.atall}, std::int64_t{tribe.open_history},
          std::int64_t{tribe.visitors}, std::int64_t{tribe.enabled}, std::int64_t{tribe.members},
          std::int64_t{tribe.mine.level}, tribe.mine.nickname, std::int64_t{tribe.mine.remind})
      .Run();
}

void TribeTable::Remove(biz::IMTribeID tribe) {
  store_.Use().Prepare("DELETE FROM tribes WHERE id=?", tribe.id).Run();
}

biz::TribeMsgRemindType TribeTable::Remind(biz::IMTribeID tribe) {
  auto row = store_.Use().Prepare("SELECT remind FROM tribes WHERE id=?", tribe.id);
  return row.Step() ? static_cast<biz::TribeMsgRemindType>(row.Int32(0)) : biz::kRemindAll;
}

bool TribeTable::SetRemind(biz::IMTribeID tribe, biz::TribeMsgRemindType type) {
  store_.Use()
      .Prepare("UPDATE tribes SET remind=?2 WHERE id=?1 AND remind<>?2", tribe.id,
               std::int64_t{type})
      .Run();
  return store_.Use().Changes() == 1;
}

}  // namespace imsdk::account
