// The messages of the embedded server, and what accounts and tribes are to hear besides.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "embedded/streams.h"
#include "link/message.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// A message that the server has.
struct KnownMessage {
  Position position = 0;
  std::int64_t svrtime = 0;
  bool withdrawn = false;
};

// Numbers are in the store.
enum class EntryKind : std::int32_t {
  kMessage = 0,
  kWithdrawal = 1,
  kPeerRead = 2,       // `numbers` are identifiers of messages, `actor` has read them
  kReadElsewhere = 3,  // `numbers` are msgtime and msgid
  kMembership = 4,     // `numbers` is 1 or 0
  // In a tribe's stream; tribe_changes.h tells what they hold.
  kTribeJoined = 5,
  kTribeLeft = 6,
  kTribeLevelChanged = 7,
  kTribeTransferred = 8,
  kTribeInfoChanged = 9,
  kTribeMemberChanged = 10,
  kTribeEnabled = 11,
  kTribeVisitorsCleared = 12,
  // In an account's stream.
  kMentionsRead = 13,    // `numbers` are the sender, then identifier and counts of each message
  kRemindChanged = 14,   // `numbers` is the type
  kContactChanged = 15,  // `numbers` is the contact's account
  kContactGroupsChanged = 16,  // nothing
  kContactVerifyTold = 17,     // `numbers` is the message's identifier
  // In a tribe's stream, or in that of both users.
  kFileDeleted = 40,  // `numbers` is the node
};

// What is to be heard. What a kind does not need stays empty.
struct NewEntry {
  Stream stream;
  EntryKind kind = EntryKind::kMessage;
  std::int64_t conversation = 0;
  Position message = 0;
  std::int64_t actor = 0;  // an account
  std::vector<std::int64_t> numbers{};
  std::int64_t device = 0;  // the account's device that knows it already; 0 for none
  std::string detail{};     // texts, packed
};

// Who sends a message where, from which of its devices.
struct Sending {
  std::int64_t conversation = 0;
  std::int64_t sender = 0;
  std::int64_t device = 0;
};

// Used on the store's thread, inside transactions and outside. Functions may throw
// `sqlite::Error`.
class MailTable {
 public:
  explicit MailTable(sqlite::Database& database);

  // The newest position that was ever given out and is in the store.
  Position newest() const { return newest_; }
  std::int64_t NewestTime();

  std::optional<KnownMessage> Find(std::int64_t conversation, std::int64_t sender,
                                   std::int64_t msgid);
  // Adds a message with the server's time that it has; returns its position.
  Position Add(const Sending& sending, const link::Message& message);
  // Erases the message's text and what it says of files.
  void Withdraw(Position message);
  // Marks the messages of this identifier that others than `reader` sent there as read; returns the
  // senders of those that were not.
  std::vector<std::int64_t> SetRead(std::int64_t conversation, std::int64_t reader,
                                    std::int64_t msgid);

  Position AddEntry(const NewEntry& entry);
  // An entry of the kind `kReadElsewhere` in place of the conversation's older one. Nothing happens
  // when the conversation is read further already. The same place again counts: messages with
  // earlier times may have come, and been read, since.
  std::optional<Position> AdvanceRead(std::int64_t account, std::int64_t conversation,
                                      const biz::IMMsgPosition& upto, std::int64_t device);

 private:
  sqlite::Database& database_;
  Position newest_ = 0;
};

std::vector<std::int64_t> SplitNumbers(const std::string& text);

}  // namespace imsdk::embedded
