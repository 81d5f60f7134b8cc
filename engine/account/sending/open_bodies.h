// What the messages hold that an account has yet to store: once, however many conversations a body
// goes to.
#pragma once

#include <cstddef>
#include <map>
#include <memory>

#include "account/sending/body_composer.h"
#include "imsdk/biz/conversation.h"
#include "kexbase/lock.h"
#include "link/check_bounds.h"

namespace imsdk::account {

// Open bodies together, as they lie in memory; more is refused with `kEngineBusy`.
inline constexpr std::size_t kMostOpenBytes = 4 * kMaxFileBytes;

class OpenBodies {
 public:
  // Any thread. False when there is no room; something of any size gets in when nothing is open.
  bool Hold(const biz::IMBody& body, const link::Held& holds);
  // As often as it was held.
  void Release(const biz::IMBody& body);
  // Put together at the first call for a body that is held. On the account's worker only.
  std::shared_ptr<const ComposedBody> Compose(const biz::IMBody& body, const FileBox& files);
  // The same for one that was put together elsewhere; and whether one was.
  void SetComposed(const biz::IMBody& body, std::shared_ptr<const ComposedBody> composed);
  bool IsComposed(const biz::IMBody& body);

 private:
  struct Entry {
    std::size_t bytes = 0;
    std::size_t holders = 0;
    std::shared_ptr<const ComposedBody> composed{};
  };

  base::Lock lock_;
  std::map<biz::IMBody, Entry> open_;
  std::size_t bytes_ = 0;
};

}  // namespace imsdk::account
