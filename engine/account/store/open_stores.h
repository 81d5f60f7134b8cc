// Keeps the number of open databases small when many accounts are logged in.
#pragma once

#include <cstddef>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <utility>

#include "kexbase/lock.h"
#include "kexbase/task_runner.h"
#include "sqlite/database.h"
#include "sqlite/kept_store.h"

namespace imsdk::account {

class LazyStore;

class OpenStores;

// Whose stores are open, the most recently used one first. Any thread.
class OpenList {
 public:
  // Puts an account first. The one that gives way when there are too many, or null.
  std::shared_ptr<OpenStores> Touch(const std::shared_ptr<OpenStores>& stores);
  void Forget(const OpenStores& stores);

 private:
  base::Lock lock_;
  std::list<std::weak_ptr<OpenStores>> open_;
};

// The store of one account, when it is open. Used in the account's own sequence of tasks. Another
// account's store is closed by a task of that one's, so that nobody loses it in the middle.
class OpenStores : public std::enable_shared_from_this<OpenStores> {
 public:
  // Alone, with nobody to give way to.
  OpenStores() = default;
  OpenStores(std::shared_ptr<OpenList> list, std::shared_ptr<base::TaskRunner> runner)
      : list_(std::move(list)), runner_(std::move(runner)) {}

  // `store` is used now.
  void Touch(LazyStore& store);
  void Forget(LazyStore& store);

 private:
  void CloseSoon();

  const std::shared_ptr<OpenList> list_;
  const std::shared_ptr<base::TaskRunner> runner_;
  LazyStore* store_ = nullptr;
};

// A database that is opened when it is used and may be closed between two uses.
class LazyStore {
 public:
  // `prepare` runs on each fresh connection and may throw.
  LazyStore(sqlite::StorePlace place, std::shared_ptr<OpenStores> open,
            void (*prepare)(sqlite::Database&))
      : place_(std::move(place)), open_(std::move(open)), prepare_(prepare) {}
  ~LazyStore() { Close(); }
  LazyStore(const LazyStore&) = delete;
  LazyStore& operator=(const LazyStore&) = delete;

  // The open database, good until the task of the worker ends. Throws `sqlite::Error`.
  sqlite::Database& Use();
  void Close();
  // What the store was found to have lost since the last time somebody asked.
  std::optional<sqlite::Loss> TakeLoss() { return std::exchange(loss_, std::nullopt); }

 private:
  const sqlite::StorePlace place_;
  const std::shared_ptr<OpenStores> open_;
  void (*const prepare_)(sqlite::Database&);
  std::unique_ptr<sqlite::Database> database_;
  bool checked_ = false;
  std::optional<sqlite::Loss> loss_;
};

}  // namespace imsdk::account
