// The account's mentions: what it has read of them, and who has read its own.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "account/session/account_state.h"
#include "imsdk/biz/mentions.h"

namespace imsdk::account {

// `kEngineRefused` for a kind of mention that there is not, and for one of nobody.
biz::ResultCode CheckMention(const biz::IMTribeAt& mention);

// Used on the account's worker; callbacks are called there.
class Mentions : public std::enable_shared_from_this<Mentions> {
 public:
  explicit Mentions(std::shared_ptr<AccountState> state) : state_(std::move(state)) {}

  // Marks unread mentions as read, all when none are named. The server is told now or when the link
  // is back.
  void MarkRead(const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids,
                biz::IMCallback<> done);
  // The unread ones, and how far own messages are read when some are named.
  void Count(const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids,
             biz::IMCallback<biz::IMAtUnread> done);
  // Who has read an own message.
  void Readers(const biz::IMConversationID& cid, std::int64_t msgid,
               biz::IMCallback<biz::IMAtReaders> done);
  // The link is there.
  void Connected();

 private:
  void CountFrom(const biz::IMConversationID& cid,
                 const std::shared_ptr<std::vector<std::int64_t>>& left,
                 const std::shared_ptr<biz::IMAtUnread>& found,
                 biz::IMCallback<biz::IMAtUnread> done);
  void Tell(const biz::IMConversationID& cid);

  const std::shared_ptr<AccountState> state_;
};

}  // namespace imsdk::account
