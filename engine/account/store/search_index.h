// Brings the full-text index after the messages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "account/store/open_stores.h"

namespace imsdk::account {

// Putting a message into the index costs more than storing it. A few go in with the commit that
// stores them; what a burst or a long absence brings, and long texts, go in later, slice by slice.
// The store itself knows what is not in it yet. Used on the account's worker only, inside a
// transaction. Every function may throw `sqlite::Error`.
class SearchIndex {
 public:
  explicit SearchIndex(LazyStore& store) : store_(store) {}

  // Whether a search would miss something.
  bool IsBehind();
  // Adds what is missing when it is little.
  void AddLittle();
  // Adds some of it.
  void AddSlice();

 private:
  struct Missing {
    std::int64_t last = 0;  // the place up to which they are few enough
    bool all = true;
  };
  // The first of them, at least one; nothing when none is missing.
  std::optional<Missing> First(std::int64_t count, std::int64_t text);

  LazyStore& store_;
};

}  // namespace imsdk::account
