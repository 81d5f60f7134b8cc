// What the server tells the account: kept in its store, then made known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <variant>
#include <vector>

#include "account/contacts/contact_book.h"
#include "account/session/account_state.h"
#include "link/operations.h"

namespace imsdk::account {

// Used on the account's worker only.
class Mailbox {
 public:
  // A message that came; unread, unless its tribe's messages do not count.
  using New = Arrived;
  // A message that another device of the account sent.
  struct Sent {
    biz::IMMessage message;
  };
  // A message that nobody is told of.
  struct Quiet {
    biz::IMMessage message;
  };
  // A message of this device turns out to be in the server's archive.
  struct Archived {
    biz::IMMessage message;  // as it was before
    std::int64_t svrtime = 0;
  };
  struct Withdrawn {
    biz::IMMsgWithdraw what;
    std::vector<NoLongerUnread> unread;  // itself, when it was
  };
  struct PeerRead {
    biz::IMConversationID cid;
    std::vector<biz::IMFlagMsgReaded> flags;
  };
  struct ReadElsewhere {
    biz::IMConversationID cid;
    std::vector<NoLongerUnread> messages;
  };
  // A conversation that is there now and has a history to be fetched, or a hole in it.
  struct Wanting {
    biz::IMConversationID cid;
  };
  // A tribe changed.
  struct Tribal {
    link::TribeHappening what;
    bool offline = false;
  };
  // The account is a member of a tribe now.
  struct Joined {
    biz::IMTribeID tribe;
  };
  struct MentionsRead {
    biz::IMTribeID tribe;
    biz::IMAtReaded what;
  };
  // The account is told of other messages of a tribe from now on.
  struct Reminded {
    biz::IMTribeID tribe;
    biz::TribeMsgRemindType type;
  };
  // A message with files came, or another device of the account sent one.
  struct FilesCame {
    link::Message message;
  };
  // Something about the account's contacts.
  struct Contact {
    ContactBook::Told what;
    bool offline = false;
  };
  using Happening =
      std::variant<Contact, FilesCame, link::FileDeleted, New, Sent, Quiet, Archived, Withdrawn,
                   PeerRead, ReadElsewhere, Wanting, Tribal, Joined, MentionsRead, Reminded>;
  using Happenings = std::vector<Happening>;

  // What others do about it.
  struct Hooks {
    std::function<void(const biz::IMMessage&, std::int64_t svrtime)> archived;
    std::function<void(const biz::IMConversationID&)> wanting;
    std::function<void(const link::TribeHappening&, bool offline)> tribal;
    std::function<void(biz::IMTribeID)> joined;
    std::function<void(biz::IMTribeID, biz::TribeMsgRemindType)> reminded;
    std::function<void(const link::Message&)> files_came;
    std::function<void(const link::FileDeleted&)> file_deleted;
    std::function<void(const ContactBook::Told&, bool offline)> contact;
  };

  explicit Mailbox(AccountState& state) : state_(state) {}
  void SetHooks(Hooks hooks) { hooks_ = std::move(hooks); }

  // Writes a batch inside a transaction and returns what was new in it, in order. May throw
  // `sqlite::Error`.
  Happenings Store(const link::Batch& batch);
  // Tells of what was stored.
  void MakeKnown(const link::Batch& batch, Happenings happenings);

  // The same for what a fetch from the server's history brought. Returns besides how many messages
  // the store did not have.
  Happenings StoreHistory(Walk& walk, const link::GetHistory& request, const link::History& history,
                          std::int32_t* fresh);
  // The same for messages from here and there.
  Happenings StoreScattered(const std::vector<link::Message>& messages);
  void MakeKnown(Happenings happenings);
  // Keeps which messages of a tribe count, inside a transaction.
  void StoreRemind(biz::IMTribeID tribe, biz::TribeMsgRemindType type);

  // A message of the server as pages see it, with what is only for the store.
  Incoming FromServer(const link::Message& from) const;
  // Keeps how to fetch its files, inside a transaction.
  void KeepFiles(const link::Message& from);

 private:
  void Keep(const link::Batch& batch, const link::Message& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::Archived& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::Withdrawal& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::PeerRead& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::ReadElsewhere& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::Membership& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::TribeHappening& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::MentionsRead& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::RemindChanged& from, Happenings& happenings);
  void Keep(const link::Batch& batch, const link::FileDeleted& from, Happenings& happenings);
  // What is told of contacts is kept by nobody: the list is fetched with each connect.
  template <class Of>
  requires std::is_constructible_v<ContactBook::Told, Of>
  void Keep(const link::Batch& batch, const Of& from, Happenings& happenings) {
    happenings.push_back(Contact{from, batch.offline});
  }
  // What a message that the account has already may tell besides.
  void KeepNews(const link::Message& from, Happenings& happenings);

  void Raise(const Sent& sent);
  void Raise(const Quiet& quiet);
  void Raise(const Archived& archived);
  void Raise(const Withdrawn& withdrawn);
  void Raise(const PeerRead& read);
  void Raise(const ReadElsewhere& read);
  void Raise(const Wanting& wanting);
  void Raise(const Tribal& tribal);
  void Raise(const Joined& joined);
  void Raise(const MentionsRead& read);
  void Raise(const Reminded& reminded);
  void Raise(const FilesCame& came);
  void Raise(const link::FileDeleted& deleted);
  void Raise(const Contact& contact);
  // `news` are of one type of conversation.
  void RaiseNew(std::vector<New> news, bool offline, bool more);
  void Tell(Happenings happenings, bool offline, bool more);

  AccountState& state_;
  Hooks hooks_;
  // The last event of offline messages said that more follow.
  bool more_single_told_ = false;
  bool more_tribe_told_ = false;
};

}  // namespace imsdk::account
