// The tribes of the embedded server: what each of them is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "imsdk/biz/tribe.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// What is decided by; the texts are in `biz::IMTribeInfo`.
struct StoredTribe {
  biz::IMTribeID id;
  std::int64_t conversation = 0;
  std::int64_t owner = 0;     // an account
  bool open_history = false;  // members see what was before they joined
  biz::IMTribeType type = biz::kNormalTribe;
  biz::TribeAuthType auth = biz::kJoinClosed;
  bool visitors = false;
  bool enabled = true;
  std::int32_t members = 0;
  std::int32_t level = 1;
  biz::TribeAtAllPermission at_all = biz::kAtAllManagers;

  bool is_multi_chat() const { return type == biz::kMultiChat; }
  // Whether those who are no members may know of it.
  bool in_sight() const { return !is_multi_chat() && (auth != biz::kJoinClosed || visitors); }
};

// How much of a tribe somebody is told.
enum class TribeView {
  kMember,
  kPublic,
  kFormer,  // was a member, and is told what it was called
};

// One of an account's tribes, and where the list goes on behind it.
struct ListedTribe {
  biz::IMTribeInfo info;
  std::int64_t place = 0;
};

// Used on the store's thread. Functions may throw `sqlite::Error`.
class TribeTable {
 public:
  explicit TribeTable(sqlite::Database& database) : database_(database) {}

  std::optional<StoredTribe> Find(biz::IMTribeID tribe);
  // All of it as `account` sees it.
  biz::IMTribeInfo Info(const StoredTribe& tribe, std::int64_t account, TribeView view);
  // At most `count` of the account's tribes behind `place`, in the order of their numbers.
  std::vector<ListedTribe> Of(std::int64_t account, std::int64_t place, std::int64_t count);
  // Those that it was a member of, the newest first; `place` is 0 for the first ones.
  std::vector<ListedTribe> QuittedBy(std::int64_t account, std::int64_t place, std::int64_t count);

  // How many the account owns, counted up to `most`.
  std::int64_t OwnedBy(std::int64_t account, std::int64_t most);
  // An identifier that no tribe has.
  biz::IMTribeID Free();
  void Add(const StoredTribe& tribe, const std::wstring& name);
  // The value of a key that is kept as it is: a text, or a number in decimal form. False when it is
  // so already.
  bool Set(biz::IMTribeID tribe, biz::TribeModifyKey key, const std::wstring& value);
  void SetOwner(biz::IMTribeID tribe, std::int64_t owner);
  // False when it is so already.
  bool SetEnabled(biz::IMTribeID tribe, bool enabled);
  std::wstring Password(biz::IMTribeID tribe);

  // One member more, or fewer; returns how many there are now.
  std::int32_t CountMembers(biz::IMTribeID tribe, std::int32_t more);

  // The account was here; counts when it was not since the visitors were cleared.
  void AddVisit(const StoredTribe& tribe, std::int64_t account);
  std::int32_t Visits(biz::IMTribeID tribe);
  void ClearVisits(biz::IMTribeID tribe);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
