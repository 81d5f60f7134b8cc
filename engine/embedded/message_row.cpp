#include "embedded/message_row.h"

#include <string>

#include "embedded/file_table.h"

namespace imsdk::embedded {

biz::IMConversationID ReadCid(const sqlite::Statement& row, std::int64_t viewer) {
  if (const std::int64_t tribe = row.Int64(0)) return biz::IMConversationID(biz::IMTribeID{tribe});
  // Of a pair it is the other one; the columns of `first` and `second` have the same order.
  const int other = row.Int64(1) == viewer ? 5 : 2;
  return biz::IMConversationID({row.Wide(other), row.Wide(other + 1)},
                               static_cast<biz::IMCIDType>(row.Int32(other + 2)));
}

link::Message ReadMessage(sqlite::Database& database, const sqlite::Statement& row,
                          std::int64_t viewer) {
  link::Message message;
  message.cid = ReadCid(row, viewer);
  message.place = std::to_string(row.Int64(kPositionColumn));
  message.msgid = row.Int64(9);
  message.msgtime = row.Int64(10);
  message.svrtime = row.Int64(11);
  message.msgtype = row.Int32(12);
  message.body = row.Wide(13);
  message.ext = {row.Wide(14), row.Int32(15), row.Int32(16), row.Int32(17)};
  message.withdrawn = row.Bool(18);
  message.read = row.Bool(19);
  message.previous = row.Int64(22);
  message.from = {row.Wide(23), row.Wide(24)};
  if (row.Bool(20)) {
    auto file = database.Prepare(
        "SELECT name, address, size, number FROM message_files WHERE message=? ORDER BY number",
        row.Int64(kPositionColumn));
    while (file.Step()) {
      message.files.push_back({file.Text(0), file.Text(1),
                               static_cast<std::uint64_t>(file.Int64(2)),
                               NodeOf(row.Int64(kPositionColumn), file.Int64(3))});
    }
  }
  message.at.type = row.Int32(kMentionColumn);
  if (message.at.type == biz::kAtMembers) {
    auto named = database.Prepare(
        "SELECT a.appkey, a.nick FROM mentioned n JOIN accounts a ON a.id=n.account "
        "WHERE n.message=? ORDER BY n.number",
        row.Int64(kPositionColumn));
    while (named.Step()) message.at.members.push_back({named.Wide(0), named.Wide(1)});
  }
  return message;
}

}  // namespace imsdk::embedded
