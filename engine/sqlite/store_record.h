// What a data folder remembers of a store, apart from the store itself.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace imsdk::sqlite {

// A small file of its own: that there is such a store, how far it had come, and whether it was
// found damaged. It is written behind the store, so a store that has less than its record says has
// lost something. One writer at a time.
class StoreRecord {
 public:
  struct Content {
    std::string id;            // of the store
    std::int64_t commits = 0;  // that it had at least
    bool damaged = false;
  };

  // An empty path keeps nothing: there is no record then.
  explicit StoreRecord(std::filesystem::path file) : file_(std::move(file)) {}

  // Nothing when there is no record, or none that makes sense.
  std::optional<Content> Read() const;
  // Makes or replaces it, on the disk before this returns. A disk that refuses leaves it as it was.
  void Write(const Content& content);
  // In place, without waiting for the disk. May fail unnoticed: the record then says less.
  void SetCommits(std::int64_t commits);
  void SetDamaged();

 private:
  bool OpenForChange();
  void Change(std::streamoff at, const std::string& text);

  const std::filesystem::path file_;
  std::fstream change_;
};

// Whether what was written to the file, or to the names in the folder, is on the disk now.
bool SyncToDisk(const std::filesystem::path& path);

}  // namespace imsdk::sqlite
