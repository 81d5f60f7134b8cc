#include "embedded/file_table.h"

#include <utf8proc.h>

#include <utility>

#include "embedded/message_row.h"
#include "embedded/streams.h"
#include "kexbase/message_body.h"

namespace imsdk::embedded {

namespace {

std::wstring Folded(std::wstring_view text) {
  std::wstring folded(text);
  for (wchar_t& letter : folded) {
    letter = static_cast<wchar_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(letter)));
  }
  return folded;
}

#define FILE_COLUMNS \
  MESSAGE_COLUMNS    \
  "n.node, n.conversation, n.name, h.name, h.address, h.size "
#define FILE_JOINS                                                              \
  "JOIN message_files h ON h.message=(n.node>>14) AND h.number=(n.node&16383) " \
  "JOIN messages m ON m.position=h.message " CID_JOINS("m.conversation") MESSAGE_JOINS

constexpr const char* kOfConversation =
    "SELECT " FILE_COLUMNS "FROM cloud_files n " FILE_JOINS
    "WHERE n.conversation=?1 AND n.node>?2 AND n.node<?3 AND (?4='' OR instr(n.folded, ?4)>0) AND "
    "m.svrtime>=?5 ORDER BY n.node DESC LIMIT ?6";
// By the order of all files: whoever has few of them waits for those of others to be passed over,
// so each conversation's own index decides first.
constexpr const char* kOfAccount =
    "WITH mine(conversation, after) AS ("
    "SELECT id, 0 FROM conversations WHERE first=?1 AND tribe=0 "
    "UNION SELECT id, 0 FROM conversations WHERE second=?1 AND tribe=0 "
    "UNION SELECT t.conversation, CASE WHEN b.open_history THEN 0 ELSE (t.joined+1)<<14 END "
    "FROM stays t JOIN tribes b ON b.conversation=t.conversation "
    "WHERE t.account=?1 AND t.until=?2), "
    "found(node) AS (SELECT n.node FROM mine JOIN cloud_files n ON "
    "n.conversation=mine.conversation AND n.node>mine.after AND n.node<?3 "
    "WHERE ?4='' OR instr(n.folded, ?4)>0 ORDER BY n.node DESC LIMIT ?6) "
    "SELECT " FILE_COLUMNS "FROM found JOIN cloud_files n ON n.node=found.node " FILE_JOINS
    "WHERE m.svrtime>=?5 ORDER BY n.node DESC";

}  // namespace

std::wstring NameInBody(std::wstring_view body, const std::string& file) {
  const std::wstring wide(file.begin(), file.end());
  for (const base::BodyPart& part : base::ReadBody(body)) {
    if (part.kind == base::BodyPart::kFile && part.path == wide) return std::wstring(part.name);
  }
  return wide;
}

void AddNode(sqlite::Database& database, std::int64_t conversation, std::int64_t node,
             const std::wstring& name) {
  database
      .Prepare("INSERT INTO cloud_files(node, conversation, name, folded) VALUES(?,?,?,?)", node,
               conversation, name, Folded(name))
      .Run();
}

void FileTable::AddUpload(std::int64_t account, const std::string& address, std::int64_t size) {
  database_
      .Prepare("INSERT OR IGNORE INTO uploads(address, account, size) VALUES(?,?,?)", address,
               account, size)
      .Run();
}

bool FileTable::HasUploaded(std::int64_t account, const std::string& address) {
  return database_.Prepare("SELECT 1 FROM uploads WHERE address=? AND account=?", address, account)
      .Step();
}

std::int64_t FileTable::Uploaded(std::int64_t account) {
  auto row =
      database_.Prepare("SELECT coalesce(sum(size), 0) FROM uploads WHERE account=?", account);
  return row.Step() ? row.Int64(0) : 0;
}

bool FileTable::WasSent(std::int64_t account, const std::string& address, std::int64_t since) {
  return database_
      .Prepare(
          "SELECT 1 FROM message_files h JOIN messages m ON m.position=h.message "
          "JOIN conversations c ON c.id=m.conversation WHERE h.address=?1 AND m.svrtime>=?4 AND "
          "(m.sender=?2 OR "
          "c.first=?2 OR c.second=?2 OR EXISTS(SELECT 1 FROM stays t WHERE t.account=?2 AND "
          "t.until=?3 AND t.conversation=c.id AND (t.joined<m.position OR "
          "EXISTS(SELECT 1 FROM tribes WHERE id=c.tribe AND open_history=1)))) "
          "LIMIT 1",
          address, account, kNever, since)
      .Step();
}

link::CloudFile FileTable::Read(const sqlite::Statement& row, std::int64_t viewer) {
  link::CloudFile file;
  file.cid = ReadCid(row, viewer);
  file.msgid = row.Int64(9);
  file.msgtime = row.Int64(10);
  file.svrtime = row.Int64(11);
  file.from = {row.Wide(23), row.Wide(24)};
  file.node = row.Int64(kMessageColumns);
  file.folder = row.Int64(kMessageColumns + 1);
  file.name = row.Wide(kMessageColumns + 2);
  file.file = {row.Text(kMessageColumns + 3), row.Text(kMessageColumns + 4),
               static_cast<std::uint64_t>(row.Int64(kMessageColumns + 5)), file.node};
  return file;
}

std::vector<link::CloudFile> FileTable::List(const FileQuery& query) {
  std::vector<link::CloudFile> files;
  const std::int64_t before = query.before > 0 ? query.before : kNever;
  const std::wstring search = Folded(query.search);
  auto row = query.conversation != 0 ? database_.Prepare(kOfConversation, query.conversation,
                                                         NodeOf(query.joined + 1, 0), before,
                                                         search, query.since, query.count)
                                     : database_.Prepare(kOfAccount, query.account, kNever, before,
                                                         search, query.since, query.count);
  while (row.Step()) files.push_back(Read(row, query.account));
  return files;
}

std::optional<link::CloudFile> FileTable::Find(const FileQuery& query, std::int64_t node) {
  FileQuery one = query;
  one.before = node + 1;
  one.count = 1;
  one.search.clear();
  const std::vector<link::CloudFile> found = List(one);
  if (found.empty() || found.front().node != node) return std::nullopt;
  return found.front();
}

void FileTable::Delete(std::int64_t node) {
  database_
      .Prepare("DELETE FROM message_files WHERE message=? AND number=?", node >> kFileNumberBits,
               node & ((std::int64_t{1} << kFileNumberBits) - 1))
      .Run();
  database_.Prepare("DELETE FROM cloud_files WHERE node=?", node).Run();
}

void FileTable::NameFiles() {
  struct Unnamed {
    std::int64_t node;
    std::wstring name;
  };
  std::vector<Unnamed> unnamed;
  {
    auto row = database_.Prepare(
        "SELECT n.node, m.body, h.name FROM cloud_files n JOIN messages m ON "
        "m.position=(n.node>>14) JOIN message_files h ON h.message=m.position AND "
        "h.number=(n.node&16383) WHERE n.name IS NULL");
    while (row.Step()) {
      unnamed.push_back({row.Int64(0), NameInBody(row.Wide(1), row.Text(2))});
    }
  }
  if (unnamed.empty()) return;
  sqlite::Transaction transaction(database_);
  for (const Unnamed& one : unnamed) {
    database_
        .Prepare("UPDATE cloud_files SET name=?, folded=? WHERE node=?", one.name, Folded(one.name),
                 one.node)
        .Run();
  }
  transaction.Commit();
}

}  // namespace imsdk::embedded
