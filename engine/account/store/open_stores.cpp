#include "account/store/open_stores.h"

#include <algorithm>

namespace imsdk::account {

namespace {

// Each open store costs three file handles and up to a megabyte of cache.
constexpr std::size_t kMostOpen = 32;

}  // namespace

void OpenStores::Touch(LazyStore& store) {
  const auto known = std::find(open_.begin(), open_.end(), &store);
  if (known != open_.end()) {
    open_.splice(open_.begin(), open_, known);
    return;
  }
  if (open_.size() >= kMostOpen) open_.back()->Close();
  open_.push_front(&store);
}

sqlite::Database& LazyStore::Use() {
  if (!database_) {
    auto fresh = std::make_unique<sqlite::Database>(file_);
    prepare_(*fresh);
    database_ = std::move(fresh);
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
