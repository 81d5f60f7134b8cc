#include "account/sending/open_bodies.h"

#include <utility>

namespace imsdk::account {

bool OpenBodies::Hold(const biz::IMBody& body, const link::Held& holds) {
  if (!body) return true;
  base::AutoLock hold(lock_);
  if (const auto known = open_.find(body); known != open_.end()) {
    ++known->second.holders;
    return true;
  }
  // A text is there twice, as it came and put together.
  const std::size_t bytes = 2 * sizeof(wchar_t) * holds.text + holds.content;
  if (bytes_ != 0 && bytes > kMostOpenBytes - bytes_) return false;
  bytes_ += bytes;
  open_.emplace(body, Entry{bytes, 1});
  return true;
}

void OpenBodies::Release(const biz::IMBody& body) {
  if (!body) return;
  base::AutoLock hold(lock_);
  const auto known = open_.find(body);
  if (--known->second.holders != 0) return;
  bytes_ -= known->second.bytes;
  open_.erase(known);
}

std::shared_ptr<const ComposedBody> OpenBodies::Compose(const biz::IMBody& body,
                                                        const FileBox& files) {
  static const std::vector<biz::IMBodyItem> kNothing;
  {
    base::AutoLock hold(lock_);
    const auto known = open_.find(body);
    if (known != open_.end() && known->second.composed) return known->second.composed;
  }
  auto composed = std::make_shared<const ComposedBody>(ComposeBody(body ? *body : kNothing, files));
  SetComposed(body, composed);
  return composed;
}

void OpenBodies::SetComposed(const biz::IMBody& body,
                             std::shared_ptr<const ComposedBody> composed) {
  base::AutoLock hold(lock_);
  const auto known = open_.find(body);
  if (known != open_.end()) known->second.composed = std::move(composed);
}

bool OpenBodies::IsComposed(const biz::IMBody& body) {
  base::AutoLock hold(lock_);
  const auto known = open_.find(body);
  return known != open_.end() && known->second.composed;
}

}  // namespace imsdk::account
