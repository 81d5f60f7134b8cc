#include "account/store/file_table.h"

namespace imsdk::account {

std::optional<KnownFile> FileTable::Find(const std::string& name) {
  auto row = store_.Use().Prepare("SELECT address, size, own FROM files WHERE name=?", name);
  if (!row.Step()) return std::nullopt;
  return KnownFile{{name, row.Text(0), static_cast<std::uint64_t>(row.Int64(1))}, row.Bool(2)};
}

void FileTable::Put(const KnownFile& known) {
  store_.Use()
      .Prepare(
          "INSERT INTO files(name, address, size, own) VALUES(?1,?2,?3,?4) ON CONFLICT(name) "
          "DO UPDATE SET address=?2, size=?3, own=?4 WHERE own<=?4",
          known.file.name, known.file.address, static_cast<std::int64_t>(known.file.size),
          std::int64_t{known.own})
      .Run();
}

}  // namespace imsdk::account
