// What names a conversation, whatever it is held with.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "imsdk/biz/user_id.h"

namespace imsdk::biz {

// What a conversation is held with. The numbers are in stores.
enum IMCIDType : std::int32_t {
  kCIDUser = 0,       // one other user
  kCIDSystem = 1,     // a virtual user that sends system messages
  kCIDSubscribe = 2,  // a virtual user that sends subscription messages
  kCIDTribe = 3,      // a tribe
};

// One conversation as one account sees it: single chats are named by the peer. A user, a virtual
// user and a tribe never share a conversation, whatever their names. An identifier without a user
// and without a tribe names none.
struct IMConversationID {
  IMConversationID() = default;
  explicit IMConversationID(IMUserID peer, IMCIDType of = kCIDUser)
      : type(of), user(std::move(peer)) {}
  explicit IMConversationID(IMTribeID of) : type(kCIDTribe), tribe(of) {}

  bool is_user() const { return type == kCIDUser; }
  bool is_tribe() const { return type == kCIDTribe; }
  bool is_virtual() const { return type == kCIDSystem || type == kCIDSubscribe; }
  friend bool operator==(const IMConversationID&, const IMConversationID&) = default;
  friend auto operator<=>(const IMConversationID&, const IMConversationID&) = default;

  IMCIDType type = kCIDUser;
  IMUserID user;    // empty for a tribe
  IMTribeID tribe;  // 0 for everything else

  static constexpr auto Bounds() { return Bounded(Inner("user", &IMConversationID::user)); }
};

}  // namespace imsdk::biz

template <>
struct std::hash<imsdk::biz::IMConversationID> {
  std::size_t operator()(const imsdk::biz::IMConversationID& id) const noexcept {
    const std::size_t name = id.is_tribe() ? std::hash<std::int64_t>{}(id.tribe.id)
                                           : std::hash<imsdk::biz::IMUserID>{}(id.user);
    return name * 7 + static_cast<std::size_t>(id.type);
  }
};
