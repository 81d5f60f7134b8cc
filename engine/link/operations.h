// What an account can ask its server for: one type per operation, which names the type of its
// reply and says how much its fields may hold. A new operation is its type here or in
// one of the files *_operations.h and its place in `Request`; both sides refuse by
// its bounds what is too large.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/history.h"
#include "link/check_bounds.h"
#include "link/contact_operations.h"
#include "link/file_operations.h"
#include "link/mention_operations.h"
#include "link/message.h"
#include "link/tribe_operations.h"

namespace imsdk::link {

// How far a delivery has come.
enum class Step {
  kTaken,     // the server has it and may still lose it; `Archived` follows when it cannot any more
  kArchived,  // it is on the server's disk and will be delivered
};
struct Delivered {
  Step step = Step::kArchived;
  std::int64_t svrtime = 0;  // 0, and an empty place: not known yet, `Archived` tells
  std::string place{};
  std::vector<std::int64_t> nodes{};  // the numbers of its files, once they are known
};

// Hands a message over. One that the server knows by sender and msgid is good again; a server that
// does not recognise it delivers it again, and receivers do.
struct Deliver {
  using Reply = Delivered;
  Message message;  // what the server adds is empty

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("message", &Deliver::message)); }
};

// Takes back a message of this account. Everybody concerned hears of it, this device too. Again is
// good again. `kEngineNotFound` for an unknown message; a server may refuse by rules of its own.
struct Withdraw {
  using Reply = Nothing;
  biz::IMConversationID cid;
  std::int64_t msgid = 0;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("cid", &Withdraw::cid)); }
};

// The most messages in one report; more go in several.
inline constexpr std::size_t kMaxReported = 1000;

// Tells the senders that these messages of the conversation were read. Those that were reported
// before and unknown ones are passed over.
struct ReportRead {
  using Reply = Nothing;
  biz::IMConversationID cid;
  std::vector<std::int64_t> msgids;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("cid", &ReportRead::cid),
                        biz::Entries("msgids", &ReportRead::msgids, kMaxReported));
  }
};

// Tells the account's other devices that the conversation is read up to and with a place.
struct MarkRead {
  using Reply = Nothing;
  biz::IMConversationID cid;
  biz::IMMsgPosition upto;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("cid", &MarkRead::cid)); }
};

// Passes the account's typing state on to the sessions that the peer has now.
struct SendTyping {
  using Reply = Nothing;
  biz::IMConversationID cid;
  std::int32_t status = biz::kInputStopped;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("cid", &SendTyping::cid)); }
};

// Which part of a conversation to hand out, in the server's own order. It starts behind `place`,
// which is not part of it; without a place at `time` by the server's clock; without both at the
// newest end.
struct GetHistory {
  using Reply = struct History;
  biz::IMConversationID cid;
  std::string place{};
  std::int64_t time = 0;
  bool older = true;       // from there towards older messages; at the newest end always
  std::int64_t btime = 0;  // by the server's clock from here on
  std::int64_t etime = 0;  // up to and with this; 0: to the end
  std::int32_t count = 0;  // at most this many; the server has a limit of its own
  bool mentions = false;   // only what mentions the account; as `Capabilities::mentions` allows

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("cid", &GetHistory::cid),
                        biz::Letters("place", &GetHistory::place, biz::kMaxSecretLetters));
  }
};

// Oldest first. `kEngineRefused` while the account's roaming is off.
struct History {
  std::vector<Message> msgs;
  // Where the next part in the same direction starts; empty when there is nothing further. A part
  // may be empty and yet not the last one.
  std::string next{};
};

struct GetRoaming {
  using Reply = biz::IMRoamStatus;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// Switching on sets the open time to now.
struct SetRoaming {
  using Reply = Nothing;
  std::int32_t status = biz::kRoamingOff;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// How many of a file's bytes have crossed, what an earlier attempt brought among them. Any thread;
// must not wait.
using Progress = std::function<void(std::uint64_t bytes)>;
// Set by who asked: the transfer ends soon, as a failure, and the server keeps nothing of it.
using Cancelled = std::shared_ptr<std::atomic<bool>>;

// Brings a local file's content to the server, in the way the server chooses: whole, in pieces, or
// going on where an earlier attempt ended. The server may know the content by its digest already.
struct Upload {
  using Reply = struct Uploaded;
  std::filesystem::path from;
  File file;  // without an address
  Progress progress{};
  Cancelled cancelled{};

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("file", &Upload::file)); }
};
struct Uploaded {
  std::string address;
};

// Fetches a file's content into a local file that the asker names. What is there already is the
// begin of it, and the rest is added; a failure may leave a part. The digest is the asker's to
// check.
struct Download {
  using Reply = Nothing;
  File file;
  std::filesystem::path to;
  Progress progress{};
  Cancelled cancelled{};

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("file", &Download::file)); }
};

// Ends the session for good. Its listener hears nothing further.
struct Logout {
  using Reply = Nothing;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// An operation with the way its reply takes.
template <class Operation>
struct Asked {
  static_assert(HasBounds<Operation>, "an operation says how much its fields may hold");
  using Reply = typename Operation::Reply;
  Operation operation;
  std::function<void(const biz::ResultCode&, const Reply&)> done;
};

using Request = std::variant<
    Asked<Deliver>, Asked<Withdraw>, Asked<ReportRead>, Asked<MarkRead>, Asked<SendTyping>,
    Asked<GetHistory>, Asked<GetRoaming>, Asked<SetRoaming>, Asked<Upload>, Asked<Download>,
    Asked<GetTribes>, Asked<GetTribe>, Asked<GetTribeMembers>, Asked<FindTribeMembers>,
    Asked<ChangeTribe>, Asked<GetJoinPassword>, Asked<CountVisitors>, Asked<EnableTribe>,
    Asked<SetTribeNickname>, Asked<SetTribeLevel>, Asked<RemoveMember>, Asked<SetRemindType>,
    Asked<SetAttention>, Asked<GetAttention>, Asked<CreateTribe>, Asked<JoinTribe>,
    Asked<InviteToTribe>, Asked<SetTribeBlack>, Asked<GetTribeBlack>, Asked<GetVerifyMsgs>,
    Asked<DecideVerify>, Asked<DeleteVerify>, Asked<ReadMentions>, Asked<CountMentionReaders>,
    Asked<GetMentionReaders>, Asked<GetContext>, Asked<ListFiles>, Asked<FindFile>,
    Asked<DeleteFile>, Asked<GetFileLife>, Asked<GetContacts>, Asked<FindUsers>, Asked<SearchUsers>,
    Asked<SetProfile>, Asked<AskContact>, Asked<DecideContact>, Asked<GetContactVerify>,
    Asked<DeleteContactVerify>, Asked<RemoveContact>, Asked<MoveContact>, Asked<SetAsterisk>,
    Asked<SetContactGroup>, Asked<SetBlack>, Asked<GetBlack>, Asked<Logout>>;

}  // namespace imsdk::link
