#include "embedded/file_table.h"

#include "embedded/streams.h"

namespace imsdk::embedded {

void FileTable::AddUpload(std::int64_t account, const std::string& address) {
  database_.Prepare("INSERT OR IGNORE INTO uploads(address, account) VALUES(?,?)", address, account)
      .Run();
}

bool FileTable::HasUploaded(std::int64_t account, const std::string& address) {
  return database_.Prepare("SELECT 1 FROM uploads WHERE address=? AND account=?", address, account)
      .Step();
}

bool FileTable::WasSent(std::int64_t account, const std::string& address) {
  return database_
      .Prepare(
          "SELECT 1 FROM message_files h JOIN messages m ON m.position=h.message "
          "JOIN conversations c ON c.id=m.conversation WHERE h.address=?1 AND (m.sender=?2 OR "
          "c.first=?2 OR c.second=?2 OR EXISTS(SELECT 1 FROM stays t WHERE t.account=?2 AND "
          "t.until=?3 AND t.conversation=c.id AND (t.joined<m.position OR "
          "EXISTS(SELECT 1 FROM tribes WHERE id=c.tribe AND open_history=1)))) "
          "LIMIT 1",
          address, account, kNever)
      .Step();
}

}  // namespace imsdk::embedded
