// The files that an account can fetch or pass on.
#pragma once

#include <optional>
#include <string>

#include "account/store/open_stores.h"
#include "link/message.h"

namespace imsdk::account {

struct KnownFile {
  link::File file;
  bool own = false;  // the account itself brought it to the server
};

// Used on the account's worker only. Every function may throw `sqlite::Error`.
class FileTable {
 public:
  explicit FileTable(LazyStore& store) : store_(store) {}

  std::optional<KnownFile> Find(const std::string& name);
  // Nothing happens to a file of the account's own when it comes from somebody else too.
  void Put(const KnownFile& known);

 private:
  LazyStore& store_;
};

}  // namespace imsdk::account
