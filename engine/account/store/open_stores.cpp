#include "account/store/open_stores.h"

#include <algorithm>

#include "kexbase/callback.h"

namespace imsdk::account {

namespace {

// Each open store costs three file handles and up to a megabyte of cache.
constexpr std::size_t kMostOpen = 64;

}  // namespace

std::shared_ptr<OpenStores> OpenList::Touch(const std::shared_ptr<OpenStores>& stores) {
  base::AutoLock hold(lock_);
  const auto known = std::find_if(open_.begin(), open_.end(),
                                  [&](const auto& entry) { return entry.lock() == stores; });
  if (known != open_.end()) {
    open_.splice(open_.begin(), open_, known);
    return nullptr;
  }
  open_.push_front(stores);
  if (open_.size() <= kMostOpen) return nullptr;
  auto last = open_.back().lock();
  open_.pop_back();
  return last;
}

void OpenList::Forget(const OpenStores& stores) {
  base::AutoLock hold(lock_);
  open_.remove_if([&](const auto& entry) {
    const auto known = entry.lock();
    return !known || known.get() == &stores;
  });
}

void OpenStores::Touch(LazyStore& store) {
  store_ = &store;
  if (!list_) return;
  if (const auto last = list_->Touch(shared_from_this())) last->CloseSoon();
}

void OpenStores::Forget(LazyStore&) {
  store_ = nullptr;
  if (list_) list_->Forget(*this);
}

void OpenStores::CloseSoon() {
  runner_->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), [](OpenStores& stores) {
                      if (stores.store_) stores.store_->Close();
                    }));
}

sqlite::Database& LazyStore::Use() {
  if (!database_) {
    sqlite::OpenedStore opened =
        sqlite::OpenStore(place_, {sqlite::Locking::kShared, prepare_, !checked_});
    checked_ = true;
    database_ = std::move(opened.database);
    if (opened.loss) loss_ = std::move(opened.loss);
  }
  open_->Touch(*this);
  return *database_;
}

void LazyStore::Close() {
  if (!database_) return;
  open_->Forget(*this);
  database_.reset();
}

}  // namespace imsdk::account
