// Which files the embedded server has, whose they are, and who may fetch them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "link/file_operations.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// The number of a message's file among all cloud files: they grow as messages do.
inline constexpr int kFileNumberBits = 14;
constexpr std::int64_t NodeOf(std::int64_t message, std::int64_t number) {
  return (message << kFileNumberBits) + number;
}

// The name that the body gives to the file; the file's own when there is none.
std::wstring NameInBody(std::wstring_view body, const std::string& file);
// Adds a file to a conversation's. May throw `sqlite::Error`.
void AddNode(sqlite::Database& database, std::int64_t conversation, std::int64_t node,
             const std::wstring& name);

// Which files to give.
struct FileQuery {
  std::int64_t account = 0;       // who asks
  std::int64_t conversation = 0;  // 0: all of the account
  std::int64_t joined = 0;        // nothing of this conversation up to this position
  std::int64_t before = 0;        // only nodes below this; 0: from the newest on
  std::int64_t since = 0;         // nothing that was sent before this time
  std::wstring search;
  std::int64_t count = 0;
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class FileTable {
 public:
  explicit FileTable(sqlite::Database& database) : database_(database) {}

  // The account has brought the content of this address itself.
  void AddUpload(std::int64_t account, const std::string& address, std::int64_t size = 0);
  bool HasUploaded(std::int64_t account, const std::string& address);
  // The bytes of all that the account has brought.
  std::int64_t Uploaded(std::int64_t account);
  // Whether a message with the file was sent since a time, by the account, or to it and is in its
  // sight. What was said in a tribe is so to who is a member now.
  bool WasSent(std::int64_t account, const std::string& address, std::int64_t since = 0);

  // Newest first.
  std::vector<link::CloudFile> List(const FileQuery& query);
  std::optional<link::CloudFile> Find(const FileQuery& query, std::int64_t node);
  // The message does not have the file any more.
  void Delete(std::int64_t node);
  // Gives names to what was sent before files had them. Inside no transaction.
  void NameFiles();

 private:
  link::CloudFile Read(const sqlite::Statement& row, std::int64_t viewer);

  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
