// Stores that do not get lost in silence.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "sqlite/database.h"

namespace imsdk::sqlite {

// Where a store lies, and its record; without a record only a damage is noticed.
struct StorePlace {
  StorePlace(std::filesystem::path store, std::filesystem::path store_record = {},
             bool must_have_been = false)
      : file(std::move(store)), record(std::move(store_record)), expected(must_have_been) {}

  std::filesystem::path file;
  std::filesystem::path record;
  // Others in its folder cannot be without it: should its record be gone too, it was lost.
  bool expected;
};

// What was lost of a store.
struct Loss {
  enum class Kind {
    kMissing,   // there was one, and now there is none, or an empty file
    kDamaged,   // what could be read is in a new one
    kFellBack,  // it has less than it had once, or is another one
  };
  Kind kind = Kind::kMissing;
  std::filesystem::path aside{};  // where what was found lies now; empty when that was nothing
  std::int64_t rows = 0;          // that were read out of it
  bool complete = false;          // nothing of it had to be passed over

  // For people, UTF-8. `what` names the store.
  std::string Text(const std::string& what) const;
};

struct StorePlan {
  Locking locking = Locking::kShared;
  // Makes tables and whatever else a connection needs; may throw.
  std::function<void(Database&)> prepare;
  // Looks through a store of a moderate size for damage.
  bool check = true;
};

struct OpenedStore {
  std::unique_ptr<Database> database;
  std::optional<Loss> loss;
};

// Opens or makes a store. One that is damaged, empty or missing although its record knows it is set
// aside under its name with the time, and what can be read is in the new one. The caller does what
// it can about a loss. Throws `Error` when there is none to be had: a store of another version, a
// file that is in use or cannot be read.
OpenedStore OpenStore(const StorePlace& place, const StorePlan& plan);

// Which life of the store this is: empty at first, a new text after each loss. Whoever counts on
// numbers that the store gave out compares it.
std::string GenerationOf(Database& database);
// Whether what was lost has not come back yet.
bool IsMending(Database& database);
void SetMended(Database& database);

// What is wrong with a store, without changing it; empty when it is whole. Nobody may have it open.
std::string CheckStore(const StorePlace& place);

}  // namespace imsdk::sqlite
