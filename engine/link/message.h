// What happens to an account, as it crosses the link.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/contact.h"
#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/history.h"
#include "imsdk/biz/mentions.h"
#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"
#include "link/tribe.h"

namespace imsdk::link {

// A file whose content crosses the link by itself. Tokens in a message's body name it by `name`.
struct File {
  std::string name;        // its MD5 in lower-case hexadecimal digits, "." and its type when known
  std::string address;     // the server's choice: what to fetch it by
  std::uint64_t size = 0;  // in bytes
  // What the server adds to the files of a message: the number of the cloud file, 0 without one.
  std::int64_t node = 0;

  // The same content by the same name, wherever it is.
  friend bool operator==(const File& a, const File& b) {
    return a.name == b.name && a.address == b.address && a.size == b.size;
  }

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("name", &File::name, biz::kMaxNameLetters),
                        biz::Letters("address", &File::address, biz::kMaxSecretLetters));
  }
};

// Whom a message mentions. In one that is handed over only kind and members count.
struct Mention {
  std::int32_t type = biz::kAtNobody;  // a `biz::TribeAtMsgType`
  std::vector<biz::IMUserID> members{};

  // What the server adds.
  bool before = false;  // the account became a member later, so it is not meant
  bool read = false;    // the account has reported the mention read

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Entries("atmembers", &Mention::members, biz::kMaxMentioned));
  }
};

// A message as the account that gets or gives it sees it.
struct Message {
  biz::IMConversationID cid;
  biz::IMUserID from;
  std::int64_t msgid = 0;    // the sender's choice; unique and growing for one sender
  std::int64_t msgtime = 0;  // by the sender's clock
  // The sender's own message before this one in the conversation, 0 for none or not known: whoever
  // lacks that one has a hole.
  std::int64_t previous = 0;
  std::int32_t msgtype = biz::kMsgText;
  std::wstring body;
  biz::IMMessageExt ext;
  std::vector<File> files{};  // those that the body's tokens name
  Mention at{};

  // What the server adds.
  std::int64_t svrtime = 0;  // by the server's clock; 0 when it is not known yet
  std::string place{};       // where the server's history has it; empty when not known yet
  bool withdrawn = false;    // taken back; a server that erases leaves no text
  bool read = false;         // its receiver has reported it read

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("cid", &Message::cid), biz::Inner("from", &Message::from),
                        biz::Bytes("body", &Message::body, biz::kMaxBodyBytes),
                        biz::Inner("ext", &Message::ext),
                        biz::Entries("files", &Message::files, biz::kMaxBodyItems),
                        biz::Inner("tribeat", &Message::at),
                        biz::Letters("place", &Message::place, biz::kMaxSecretLetters),
                        biz::Whole("", biz::BoundUnit::kBytes, biz::kMaxMessageBytes));
  }
};

// A message of this account is in the server's archive now, or its time and place came to be known.
struct Archived {
  biz::IMConversationID cid;
  std::int64_t msgid = 0;
  std::int64_t svrtime = 0;
  std::string place{};
};

// A message was taken back by its sender.
struct Withdrawal {
  biz::IMConversationID cid;
  biz::IMUserID from;
  std::int64_t msgid = 0;
  std::int64_t msgtime = 0;
  std::int64_t svrtime = 0;  // of the message
};

// `reader` has reported messages of this account read.
struct PeerRead {
  biz::IMConversationID cid;
  biz::IMUserID reader;
  std::vector<std::int64_t> msgids;
};

// `reader` has read mentions in messages of `sender`. One of the two is this account: as the sender
// it is told how far each message is read now, as the reader its other devices are told.
struct MentionsRead {
  biz::IMTribeID tribe;
  biz::IMUserID reader;
  biz::IMUserID sender;
  std::vector<biz::IMAtReadCounts> counts;
};

// Another device of this account has set which messages of a tribe it is told of.
struct RemindChanged {
  biz::IMTribeID tribe;
  biz::TribeMsgRemindType type = biz::kRemindAll;
};

// Another device of this account has read the conversation up to and with this place.
struct ReadElsewhere {
  biz::IMConversationID cid;
  biz::IMMsgPosition upto;
};

// The account is a member of a tribe from now on, or is none any more. What of the tribe's history
// it may see is fetched, as far as the server gives it.
struct Membership {
  biz::IMTribeID tribe;
  bool member = true;
};

// A file was taken out of its conversation.
struct FileDeleted {
  biz::IMConversationID cid;
  std::int64_t node = 0;
};

// A contact of the account, as it is now; its status does not count. The account itself, when its
// own name or portrait is another one.
struct ContactChanged {
  biz::IMListedContact contact;
  bool removed = false;
};
// All groups of the account's list.
struct ContactGroupsChanged {
  std::vector<biz::IMContactGroup> groups;
};
// A verification message came, or what it says is another thing now.
struct ContactVerifyTold {
  biz::IMContactVerifyMsg msg;
};

// Who of the account's contacts came or went. Not kept.
struct ContactPresence {
  std::vector<std::pair<biz::IMUserID, biz::IMContactStatus>> changed;
};

using Entry = std::variant<Message, Archived, Withdrawal, PeerRead, MentionsRead, ReadElsewhere,
                           RemindChanged, Membership, TribeHappening, FileDeleted, ContactChanged,
                           ContactGroupsChanged, ContactVerifyTold>;

// Some of what happened, in the order of the server. Nothing can be told from one batch about
// another: a server may repeat entries, overlap batches, and send older entries late. The account
// recognises a message by conversation, sender and msgid, a hole by `Message::previous`.
struct Batch {
  std::vector<Entry> entries;
  // Where to go on after a break, for `Connect`: opaque, kept by the account in the transaction
  // that stores the entries. The link chooses it so that nothing is missed; what came before may
  // come again after it.
  std::string position;
  bool offline = false;  // the server had them before the session began
  bool more = false;     // more such entries follow
};

}  // namespace imsdk::link
