// Identifiers as traces show them.
#pragma once

#include <string>
#include <vector>

#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/message.h"
#include "kexbase/strings.h"

namespace imsdk::bridge {

// The long user identifier: application key, then nick.
inline std::wstring IdText(const biz::IMUserID& id) { return id.appkey + id.nick; }

// What the conversation is held with: a user, or the number of a tribe.
inline std::wstring ConversationText(const biz::IMConversationID& id) {
  return id.is_tribe() ? base::NumberToWide(id.tribe.id) : IdText(id.user);
}

// The texts of several, parted by commas.
template <class Item, class TextOf>
std::wstring Joined(const std::vector<Item>& items, const TextOf& text_of) {
  std::wstring joined;
  for (const Item& item : items) {
    if (!joined.empty()) joined += L',';
    joined += text_of(item);
  }
  return joined;
}

// The identifiers of messages.
inline std::wstring MsgIdsText(const std::vector<biz::IMMessage>& msgs) {
  return Joined(msgs, [](const biz::IMMessage& msg) { return base::NumberToWide(msg.msgid); });
}

}  // namespace imsdk::bridge
