// What the server tells the account: kept in its store, then made known.
#pragma once

#include <variant>
#include <vector>

#include "account/session/account_state.h"
#include "link/server_link.h"

namespace imsdk::account {

// Used on the account's worker only.
class Mailbox {
 public:
  // A message that is unread now.
  using New = Arrived;
  // A message that another device of the account sent.
  struct Sent {
    biz::IMMessage message;
  };
  // A message that nobody is told of.
  struct Quiet {
    ChatKey key;
    biz::IMMessage message;
  };
  struct Withdrawn {
    biz::IMMsgWithdraw what;
    std::vector<NoLongerUnread> unread;  // itself, when it was
  };
  struct PeerRead {
    biz::IMUserID peer;
    std::vector<biz::IMFlagMsgReaded> flags;
  };
  struct ReadElsewhere {
    ChatKey key;
    std::vector<NoLongerUnread> messages;
  };
  using Happening = std::variant<New, Sent, Quiet, Withdrawn, PeerRead, ReadElsewhere>;

  explicit Mailbox(AccountState& state) : state_(state) {}

  // Writes a batch inside a transaction and returns what was new in it, in order. May throw
  // `sqlite::Error`.
  std::vector<Happening> Store(const link::Batch& batch);
  // Tells of what was stored.
  void MakeKnown(const link::Batch& batch, std::vector<Happening> happenings);

 private:
  using Happenings = std::vector<Happening>;

  void Keep(const link::Batch& batch, const link::Message& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::Withdrawal& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::PeerRead& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::ReadElsewhere& from, Happenings& happenings);

  void Raise(const Sent& sent);
  void Raise(const Quiet& quiet);
  void Raise(const Withdrawn& withdrawn);
  void Raise(const PeerRead& read);
  void Raise(const ReadElsewhere& read);
  // `news` are of one kind of conversation.
  void RaiseNew(std::vector<New> news, bool offline, bool more);

  AccountState& state_;
  bool more_told_ = false;  // the last event of offline messages said that more follow
};

}  // namespace imsdk::account
