// Which files the embedded server has, and who may fetch them.
#pragma once

#include <cstdint>
#include <string>

#include "sqlite/database.h"

namespace imsdk::embedded {

// Used on the store's thread. Functions may throw `sqlite::Error`.
class FileTable {
 public:
  explicit FileTable(sqlite::Database& database) : database_(database) {}

  // The account has brought the content of this address itself.
  void AddUpload(std::int64_t account, const std::string& address);
  bool HasUploaded(std::int64_t account, const std::string& address);
  // Whether a message with the file was sent by the account, or to it and is in its sight. What was
  // said in a tribe is so to who is a member now.
  bool WasSent(std::int64_t account, const std::string& address);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
