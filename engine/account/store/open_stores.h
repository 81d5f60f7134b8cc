// Keeps the number of open databases small when many accounts are logged in.
#pragma once

#include <cstddef>
#include <filesystem>
#include <list>
#include <memory>

#include "sqlite/database.h"

namespace imsdk::account {

class LazyStore;

// The stores of one worker that are open, the most recently used one first. Used on the worker's
// thread only.
class OpenStores {
 public:
  // Puts `store` first and closes the last one when there are too many.
  void Touch(LazyStore& store);
  void Forget(LazyStore& store) { open_.remove(&store); }

 private:
  std::list<LazyStore*> open_;
};

// A database that is opened when it is used and may be closed between two uses.
class LazyStore {
 public:
  // `prepare` runs on each fresh connection and may throw.
  LazyStore(std::filesystem::path file, std::shared_ptr<OpenStores> open,
            void (*prepare)(sqlite::Database&))
      : file_(std::move(file)), open_(std::move(open)), prepare_(prepare) {}
  ~LazyStore() { Close(); }
  LazyStore(const LazyStore&) = delete;
  LazyStore& operator=(const LazyStore&) = delete;

  // The open database, good until the task of the worker ends. Throws `sqlite::Error`.
  sqlite::Database& Use();
  void Close();

 private:
  const std::filesystem::path file_;
  const std::shared_ptr<OpenStores> open_;
  void (*const prepare_)(sqlite::Database&);
  std::unique_ptr<sqlite::Database> database_;
};

}  // namespace imsdk::account
