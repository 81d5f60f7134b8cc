#include "sqlite/kept_store.h"

#include <sqlite3.h>

#include <array>
#include <ctime>
#include <system_error>
#include <utility>

#include "kexbase/guid.h"
#include "sqlite/salvage.h"

namespace imsdk::sqlite {

namespace {

namespace fs = std::filesystem;

// What takes a tenth of a second to look through. A larger store shows its damage when it is used.
constexpr std::uintmax_t kMostChecked = 64 * 1024 * 1024;  // bytes

constexpr std::array kParts = {"", "-wal", "-shm"};

fs::path PartOf(const fs::path& file, const char* part) {
  fs::path path = file;
  path += part;
  return path;
}

std::uintmax_t SizeOf(const fs::path& file) {
  std::error_code missing;
  const std::uintmax_t size = fs::file_size(file, missing);
  return missing ? 0 : size;
}

// Renames what is there of a store; the new name, or nothing when nothing was there.
fs::path SetAside(const fs::path& file) {
  std::array<char, 32> time{};
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  std::strftime(time.data(), time.size(), ".aside-%Y%m%dT%H%M%SZ", &utc);
  fs::path aside = PartOf(file, time.data());
  for (int more = 2; fs::exists(aside); ++more) {
    aside = PartOf(file, (time.data() + ("-" + std::to_string(more))).c_str());
  }
  bool any = false;
  for (const char* part : kParts) {
    if (!fs::exists(PartOf(file, part))) continue;
    fs::rename(PartOf(file, part), PartOf(aside, part));
    any = true;
  }
  return any ? aside : fs::path();
}

std::string FindDamage(Database& database) {
  Statement row = database.Prepare("PRAGMA quick_check(1)");
  const std::string found = row.Step() ? row.Text(0) : "nothing was answered";
  return found == "ok" ? std::string() : found;
}

std::unique_ptr<Database> OpenWhole(const fs::path& file, const StorePlan& plan) {
  auto database = std::make_unique<Database>(file, plan.locking);
  if (plan.check && SizeOf(file) <= kMostChecked) {
    if (const std::string damage = FindDamage(*database); !damage.empty()) throw Damaged(damage);
  }
  if (plan.prepare) plan.prepare(*database);
  database->Execute(
      "CREATE TABLE IF NOT EXISTS store_identity(id TEXT NOT NULL, commits INTEGER NOT NULL, "
      "generation TEXT NOT NULL, mending INTEGER NOT NULL)");
  return database;
}

struct Identity {
  std::string id;
  std::int64_t commits = 0;
};

std::optional<Identity> ReadIdentity(Database& database) {
  auto row = database.Prepare("SELECT id, commits FROM store_identity");
  if (!row.Step()) return std::nullopt;
  return Identity{row.Text(0), row.Int64(1)};
}

// A store that begins, or begins anew after a loss.
Identity BeginLife(Database& database, bool after_loss) {
  const Identity identity{base::GenerateGUID(), 1};
  Transaction transaction(database);
  database.Execute("DELETE FROM store_identity");
  database
      .Prepare("INSERT INTO store_identity(id, commits, generation, mending) VALUES(?,?,?,?)",
               identity.id, identity.commits,
               after_loss ? identity.id.substr(0, identity.id.find('-')) : std::string(),
               std::int64_t{after_loss})
      .Run();
  transaction.Commit();
  return identity;
}

// Puts what can be read of a damaged store in its place. Whoever is interrupted in it finds the
// damaged one again, or the new one.
Loss Mend(const fs::path& file, const StorePlan& plan) {
  const fs::path fresh = PartOf(file, ".mended");
  for (const char* part : kParts) fs::remove(PartOf(fresh, part));
  Loss loss{Loss::Kind::kDamaged};
  {
    const auto database = OpenWhole(fresh, {Locking::kShared, plan.prepare, false});
    const Salvaged salvaged = Salvage(file, *database);
    loss.rows = salvaged.rows;
    loss.complete = salvaged.complete;
  }
  loss.aside = SetAside(file);
  fs::rename(fresh, file);
  SyncToDisk(file.parent_path());
  return loss;
}

}  // namespace

std::string Loss::Text(const std::string& what) const {
  std::string text = what;
  switch (kind) {
    case Kind::kMissing:
      text += aside.empty() ? " is missing" : " is empty";
      text += "; a new one was begun";
      break;
    case Kind::kDamaged:
      text += " is damaged; " + std::to_string(rows) + " entries were read out of it";
      text += complete ? ", nothing had to be passed over" : ", others cannot be read";
      break;
    case Kind::kFellBack:
      text += " has less than it had: its last changes are lost";
      break;
  }
  if (!aside.empty()) text += "; what was found is kept as " + aside.filename().string();
  return text;
}

OpenedStore OpenStore(const StorePlace& place, const StorePlan& plan) {
  auto record = std::make_unique<StoreRecord>(place.record);
  const std::optional<StoreRecord::Content> known = record->Read();
  OpenedStore opened;
  fs::create_directories(place.file.parent_path());
  const bool empty = SizeOf(place.file) == 0;
  if ((known || place.expected) && empty) {
    opened.loss = Loss{Loss::Kind::kMissing, SetAside(place.file), 0, false};
  }
  try {
    if (known && known->damaged && !empty) throw Damaged("it was found damaged before");
    opened.database = OpenWhole(place.file, plan);
    const auto identity = ReadIdentity(*opened.database);
    const bool behind =
        known && identity && (identity->id != known->id || identity->commits < known->commits);
    if (!opened.loss && (behind || (known && !identity))) {
      opened.loss = Loss{Loss::Kind::kFellBack, {}, 0, true};
    }
  } catch (const Damaged&) {
    opened.database.reset();
    opened.loss = Mend(place.file, plan);
    opened.database = OpenWhole(place.file, plan);
  }
  std::optional<Identity> identity;
  if (!opened.loss) identity = ReadIdentity(*opened.database);
  const bool begins = !identity;
  if (begins) identity = BeginLife(*opened.database, opened.loss.has_value());
  if (begins || !known) record->Write({identity->id, identity->commits, false});
  opened.database->CountIn(std::move(record), identity->commits);
  return opened;
}

std::string GenerationOf(Database& database) {
  auto row = database.Prepare("SELECT generation FROM store_identity");
  return row.Step() ? row.Text(0) : std::string();
}

bool IsMending(Database& database) {
  auto row = database.Prepare("SELECT mending FROM store_identity");
  return row.Step() && row.Bool(0);
}

void SetMended(Database& database) {
  database.Prepare("UPDATE store_identity SET mending=0").Run();
}

std::string CheckStore(const StorePlace& place) {
  const auto known = StoreRecord(place.record).Read();
  if (SizeOf(place.file) == 0) {
    if (!known && !place.expected) return {};
    return fs::exists(place.file) ? "it is empty, and was not once" : "it is missing";
  }
  if (known && known->damaged) return "it was found damaged";
  sqlite3* handle = nullptr;
  const std::u8string name = place.file.u8string();
  sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &handle, SQLITE_OPEN_READONLY,
                  nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> close(handle, sqlite3_close);
  const auto ask = [handle](const char* sql) {
    sqlite3_stmt* row = nullptr;
    std::string answer;
    if (sqlite3_prepare_v2(handle, sql, -1, &row, nullptr) == SQLITE_OK &&
        sqlite3_step(row) == SQLITE_ROW) {
      answer = reinterpret_cast<const char*>(sqlite3_column_text(row, 0));
    }
    sqlite3_finalize(row);
    return answer;
  };
  if (const std::string found = ask("PRAGMA integrity_check(1)"); found != "ok") {
    return found.empty() ? sqlite3_errmsg(handle) : found;
  }
  if (!known) return {};
  if (ask("SELECT id FROM store_identity") != known->id) return "it is another one than it was";
  const std::string commits = ask("SELECT commits FROM store_identity");
  return std::stoll('0' + commits) < known->commits ? "it has less than it had" : std::string();
}

}  // namespace imsdk::sqlite
