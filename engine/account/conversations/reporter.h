// What the account tells the server about messages: withdrawals, what it has read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "account/session/account_state.h"
#include "imsdk/biz/history.h"

namespace imsdk::account {

// Used on the account's worker; callbacks are called there.
class Reporter : public std::enable_shared_from_this<Reporter> {
 public:
  explicit Reporter(std::shared_ptr<AccountState> state) : state_(std::move(state)) {}

  void Withdraw(const biz::IMConversationID& cid, std::int64_t msgid, biz::IMCallback<> done);
  // Tells the senders that their messages were read; all that are read when `msgids` is empty.
  void ReportRead(const biz::IMConversationID& cid, std::vector<std::int64_t> msgids,
                  biz::IMCallback<> done);
  // The store has the conversation as read: tells the account's other devices, now or when the link
  // is back.
  void TellRead(const biz::IMConversationID& cid);
  // The link is there.
  void Connected();

 private:
  // Reports the rest of `all` from `from` on, in as many parts as the server takes.
  using Msgids = std::shared_ptr<const std::vector<std::int64_t>>;
  void ReportFrom(const biz::IMConversationID& cid, const Msgids& all, std::size_t from,
                  biz::IMCallback<> done);
  void Withdrawn(const biz::IMConversationID& cid, std::int64_t msgid,
                 const biz::IMCallback<>& done);
  void SendRead(const biz::IMConversationID& cid, std::uint64_t number);

  const std::shared_ptr<AccountState> state_;
  // Conversations whose other devices do not know yet, with the number of the newest telling.
  std::unordered_map<biz::IMConversationID, std::uint64_t> untold_;
  std::uint64_t last_ = 0;
};

}  // namespace imsdk::account
