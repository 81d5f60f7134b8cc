// The account's tribes in its store, as the server last told of them.
#pragma once

#include <optional>
#include <vector>

#include "account/store/open_stores.h"
#include "imsdk/biz/tribe.h"

namespace imsdk::account {

// Used on the account's worker only. Every function may throw `sqlite::Error`.
class TribeTable {
 public:
  explicit TribeTable(LazyStore& store) : store_(store) {}

  // Nothing while the list was never stored. Unread counts are not kept.
  std::optional<std::vector<biz::IMTribeInfo>> All();
  // In place of all that is there.
  void Replace(const std::vector<biz::IMTribeInfo>& tribes);
  void Put(const biz::IMTribeInfo& tribe);
  void Remove(biz::IMTribeID tribe);

  // Which messages of a tribe count; all, for one that is not known.
  biz::TribeMsgRemindType Remind(biz::IMTribeID tribe);
  // False when it is so already, or the tribe is not known.
  bool SetRemind(biz::IMTribeID tribe, biz::TribeMsgRemindType type);

 private:
  LazyStore& store_;
};

}  // namespace imsdk::account
