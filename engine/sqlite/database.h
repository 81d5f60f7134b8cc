// A thin owner of SQLite's C objects: connections, cached statements, transactions.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "sqlite/store_record.h"

struct sqlite3;
struct sqlite3_stmt;

namespace imsdk::sqlite {

// What SQLite reported. Thrown inside the engine's rooms only; whoever runs an operation for the
// outside turns it into `kEngineStorage`.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The file's content makes no sense, or is no store at all.
class Damaged : public Error {
 public:
  using Error::Error;
};

class Database;

// A statement borrowed from its database's cache, bound and ready to step. Gives itself back
// (reset, unbound) when it dies; it must not outlive the database.
class Statement {
 public:
  ~Statement();
  Statement(Statement&& other) noexcept
      : database_(other.database_), statement_(std::exchange(other.statement_, nullptr)) {}
  Statement& operator=(Statement&&) = delete;

  // Goes to the next row; false after the last one.
  bool Step();
  // Runs a statement that gives no rows.
  void Run();

  // Columns of the current row, counted from 0.
  std::int64_t Int64(int column) const;
  std::int32_t Int32(int column) const { return static_cast<std::int32_t>(Int64(column)); }
  bool Bool(int column) const { return Int64(column) != 0; }
  std::string Text(int column) const;
  std::wstring Wide(int column) const;

 private:
  friend class Database;
  Statement(Database& database, sqlite3_stmt* statement)
      : database_(&database), statement_(statement) {}

  void Bind(int index, std::int64_t value);
  void Bind(int index, std::string_view text);
  void Bind(int index, std::wstring_view text);
  void Bind(int index, const std::string& text) { Bind(index, std::string_view(text)); }
  void Bind(int index, const std::wstring& text) { Bind(index, std::wstring_view(text)); }

  Database* database_;
  sqlite3_stmt* statement_;
};

// How hard a connection holds its file.
enum class Locking {
  kShared,
  kExclusive,  // from the first write on, no other connection gets in
};

// One connection. Used by one thread at a time.
class Database {
 public:
  // Opens or makes the file in WAL mode, each commit on the disk before it returns. Throws `Error`.
  explicit Database(const std::filesystem::path& file, Locking locking = Locking::kShared);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // The cached statement of `sql`, which must be a string literal (its address is the key), with
  // `values` bound from the first parameter on. One borrower of one text at a time.
  template <class... Values>
  Statement Prepare(const char* sql, const Values&... values) {
    Statement statement(*this, Cached(sql));
    int index = 0;
    (statement.Bind(++index, values), ...);
    return statement;
  }

  // For what this class does not wrap.
  sqlite3* handle() const { return handle_; }

  // Runs SQL text of any number of statements.
  void Execute(const char* sql);
  std::int64_t LastInsertId() const;
  // Rows that the last statement changed.
  std::int64_t Changes() const;

  // From now on transactions are counted, in the store, which has a count already, and behind it in
  // its record; so is a damage that shows itself.
  void CountIn(std::unique_ptr<StoreRecord> record, std::int64_t commits);

 private:
  friend class Statement;
  friend class Transaction;

  sqlite3_stmt* Cached(const char* sql);
  void Close();
  void CountCommit();
  void Committed();
  [[noreturn]] void Fail() const;

  sqlite3* handle_ = nullptr;
  std::unique_ptr<StoreRecord> record_;
  std::int64_t commits_ = 0;
  std::unordered_map<const char*, sqlite3_stmt*> statements_;
};

// A write transaction; rolled back unless committed.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  Database& database_;
  bool open_ = true;
};

// Brings a store to the version that is the number of `steps`, by those that it has not had yet; a
// fresh file has had none. All or nothing. Throws `Error` for a store of a later version,
// which is left as it is.
template <std::size_t N>
void Migrate(Database& database, const char* const (&steps)[N]);
void Migrate(Database& database, const char* const* steps, std::size_t count);

template <std::size_t N>
void Migrate(Database& database, const char* const (&steps)[N]) {
  Migrate(database, steps, N);
}

}  // namespace imsdk::sqlite
