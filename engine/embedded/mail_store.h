// The messages of the embedded server, and what each account is to hear of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "link/server_link.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// A message that the server has.
struct KnownMessage {
  std::int64_t row = 0;
  std::int64_t receiver = 0;
  std::int64_t svrtime = 0;
  bool withdrawn = false;
};

enum class EntryKind : std::int32_t { kMessage = 0, kWithdrawal, kPeerRead, kReadElsewhere };

// What an account is to hear. What a kind does not need stays empty.
struct NewEntry {
  std::int64_t account = 0;
  EntryKind kind = EntryKind::kMessage;
  std::int64_t message = 0;  // its row
  std::int64_t peer = 0;     // an account
  std::vector<std::int64_t> numbers;
  std::int64_t device = 0;  // the account's device that knows it already; 0 for none
};

// An entry and its place in the order of the server.
struct StoredEntry {
  std::int64_t position = 0;
  link::Entry entry;
};

// Used inside its database's transactions and outside. Every function may throw `sqlite::Error`.
class MailStore {
 public:
  explicit MailStore(sqlite::Database& database) : database_(database) {}

  std::optional<KnownMessage> Find(std::int64_t sender, std::int64_t msgid);
  // Returns the message's row.
  std::int64_t Add(std::int64_t sender, std::int64_t receiver, const link::Message& message);
  // Erases the message's text.
  void Withdraw(std::int64_t row);
  // The receiver has read it. False when that was known, or there is no such message to read.
  bool SetRead(std::int64_t sender, std::int64_t receiver, std::int64_t msgid);
  std::int64_t NewestTime();

  std::int64_t AddEntry(const NewEntry& entry);
  // An entry of the kind `kReadElsewhere` in place of the conversation's older one. Nothing happens
  // when the conversation is read further already. The same place again counts: messages with
  // earlier times may have come, and been read, since. Tells whether something happened.
  bool AdvanceRead(std::int64_t account, std::int64_t peer, const biz::IMMsgPosition& upto,
                   std::int64_t device);
  // Entries of a device after a position, oldest first: at most `count`, and no more after about
  // `bytes` of text.
  std::vector<StoredEntry> EntriesFor(std::int64_t account, std::int64_t device, std::int64_t after,
                                      std::int64_t count, std::size_t bytes);
  // The position of the device's newest entry, or 0.
  std::int64_t NewestFor(std::int64_t account, std::int64_t device);

  // A part of the conversation of two accounts, without what the server took before `opentime`.
  link::History History(std::int64_t account, std::int64_t peer,
                        const link::HistoryRequest& request, std::int64_t opentime);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
