#include "sqlite/database.h"

#include <sqlite3.h>

#include "kexbase/strings.h"

namespace imsdk::sqlite {

namespace {

// How long a statement waits for another connection's lock before it fails.
constexpr int kBusyMilliseconds = 2000;

}  // namespace

Statement::~Statement() {
  if (!statement_) return;
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

bool Statement::Step() {
  switch (sqlite3_step(statement_)) {
    case SQLITE_ROW:
      return true;
    case SQLITE_DONE:
      return false;
    default:
      database_->Fail();
  }
}

void Statement::Run() {
  while (Step()) {
  }
}

std::int64_t Statement::Int64(int column) const { return sqlite3_column_int64(statement_, column); }

std::string Statement::Text(int column) const {
  const auto* text = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  if (!text) return {};
  return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::wstring Statement::Wide(int column) const {
  const auto* text = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  if (!text) return {};
  return base::UTF8ToWide(
      {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))});
}

void Statement::Bind(int index, std::int64_t value) {
  if (sqlite3_bind_int64(statement_, index, value) != SQLITE_OK) database_->Fail();
}

void Statement::Bind(int index, std::string_view text) {
  // A null pointer would bind NULL, and an empty view may hold one.
  const char* data = text.empty() ? "" : text.data();
  if (sqlite3_bind_text64(statement_, index, data, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8) !=
      SQLITE_OK) {
    database_->Fail();
  }
}

void Statement::Bind(int index, std::wstring_view text) {
  const std::string utf8 = base::WideToUTF8(text);
  Bind(index, std::string_view(utf8));
}

Database::Database(const std::filesystem::path& file, Locking locking) {
  const std::u8string name = file.u8string();
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  const int opened =
      sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &handle_, flags, nullptr);
  try {
    if (opened != SQLITE_OK) Fail();
    sqlite3_busy_timeout(handle_, kBusyMilliseconds);
    if (locking == Locking::kExclusive) Execute("PRAGMA locking_mode=EXCLUSIVE");
    Execute("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA cache_size=-1024");
  } catch (...) {
    Close();
    throw;
  }
}

Database::~Database() { Close(); }

void Database::Close() {
  for (const auto& [sql, statement] : statements_) sqlite3_finalize(statement);
  sqlite3_close(handle_);
}

void Database::Execute(const char* sql) {
  if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

std::int64_t Database::LastInsertId() const { return sqlite3_last_insert_rowid(handle_); }

std::int64_t Database::Changes() const { return sqlite3_changes64(handle_); }

sqlite3_stmt* Database::Cached(const char* sql) {
  sqlite3_stmt*& statement = statements_[sql];
  if (!statement && sqlite3_prepare_v3(handle_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement,
                                       nullptr) != SQLITE_OK) {
    Fail();
  }
  return statement;
}

void Database::CountIn(std::unique_ptr<StoreRecord> record, std::int64_t commits) {
  record_ = std::move(record);
  commits_ = commits;
}

void Database::CountCommit() {
  if (!record_) return;
  Prepare("UPDATE store_identity SET commits=?", commits_ + 1).Run();
}

void Database::Committed() {
  if (record_) record_->SetCommits(++commits_);
}

void Database::Fail() const {
  if (!handle_) throw Error("out of memory");
  const std::string text = sqlite3_errmsg(handle_);
  const int code = sqlite3_errcode(handle_);
  if (code != SQLITE_CORRUPT && code != SQLITE_NOTADB) throw Error(text);
  // Whoever opens the store next reads out of it what can be read.
  if (record_) record_->SetDamaged();
  throw Damaged(text);
}

Transaction::Transaction(Database& database) : database_(database) {
  database_.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (!open_) return;
  try {
    database_.Execute("ROLLBACK");
  } catch (const Error&) {  // some failures (a full disk) have rolled back already
  }
}

void Transaction::Commit() {
  database_.CountCommit();
  database_.Execute("COMMIT");
  open_ = false;
  database_.Committed();
}

void Migrate(Database& database, const char* const* steps, std::size_t count) {
  std::int64_t version = 0;
  {
    Statement query = database.Prepare("PRAGMA user_version");
    if (query.Step()) version = query.Int64(0);
  }
  if (version == static_cast<std::int64_t>(count)) return;
  if (version < 0 || version > static_cast<std::int64_t>(count)) {
    const bool newer = version > 0;
    throw Error("the store has version " + std::to_string(version) +
                ", this program uses version " + std::to_string(count) +
                (newer ? ": it was written by a newer program" : ""));
  }
  Transaction transaction(database);
  for (auto step = static_cast<std::size_t>(version); step < count; ++step) {
    database.Execute(steps[step]);
  }
  database.Execute(("PRAGMA user_version=" + std::to_string(count)).c_str());
  transaction.Commit();
}

}  // namespace imsdk::sqlite
