// The insides of the server in memory.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "far_server.h"

namespace imsdk::test {

// A conversation as the server knows it: of a pair of users in their order, of a virtual user with
// an account, or of a tribe.
struct FarKey {
  biz::IMCIDType type = biz::kCIDUser;
  biz::IMUserID one, other;
  std::int64_t tribe = 0;
  friend auto operator<=>(const FarKey&, const FarKey&) = default;
};

FarKey KeyOf(const biz::IMConversationID& cid, const biz::IMUserID& self);

// A message in the archive. Its index in the conversation is its place.
struct Archive {
  std::vector<link::Message> messages;  // in the view of their senders
};

struct FarEntry {
  link::Entry entry;
  std::string only;    // the device that it is for; empty: all
  std::string except;  // the device that it is not for
};

struct FarAccount {
  std::wstring password;
  std::vector<FarEntry> stream;
  std::vector<FarEntry> kept_back;  // while it is deaf
  bool deaf = false;
  std::size_t farthest = 0;  // what any device has acknowledged
  biz::IMRoamStatus roaming{0, biz::kRoamingOn};
  std::map<std::wstring, std::int64_t> tokens;  // with the ends of their lives
};

struct FarTribe {
  // Members, with the number of messages that were there when they joined.
  std::map<biz::IMUserID, std::size_t> members;
};

// A device that is there.
struct FarDevice {
  biz::IMUserID user;
  std::string name;
  std::weak_ptr<link::SessionListener> listener;
  std::size_t next = 0;       // of the account's stream
  std::size_t sent_upto = 0;  // so far, in any session of this kind
  std::size_t acknowledged = 0;
  std::size_t offline_upto = 0;
};

struct FarServer::State {
  std::mutex lock;
  Habits habits;
  std::int64_t token_life_ms = 0;
  std::map<biz::IMUserID, FarAccount> accounts;
  std::map<biz::IMUserID, VirtualKind> virtuals;
  std::map<std::int64_t, FarTribe> tribes;
  std::map<FarKey, Archive> archives;
  std::map<FarSession*, FarDevice> devices;
  std::map<std::string, std::string> files;
  std::vector<std::pair<link::Message, std::string>> taken;  // with the device that sent them
  std::vector<std::pair<link::Message, std::string>> untimed;
  int epoch = 1;  // of positions
  int asked = 0;
  std::int64_t last_time = 0;
  std::int64_t last_number = 0;

  // With the lock held, as all that follows.
  std::int64_t Now();
  std::wstring MakeToken(const biz::IMUserID& user);
  biz::ResultCode Archived(const link::Message& message, const std::string& device,
                           link::Message** kept, bool silent = false);
  void Tell(const link::Message& message, const std::string& device);
  // The message as `user` sees it.
  link::Message SeenBy(const link::Message& message, const biz::IMUserID& user);
  std::vector<biz::IMUserID> Concerned(const link::Message& message);
  void Put(const biz::IMUserID& user, FarEntry entry);
  void Pump(const biz::IMUserID& user);
  void Pump(FarDevice& device);
  std::string PositionOf(std::size_t index) const;
  std::optional<std::size_t> IndexOf(const std::string& position) const;

  std::pair<biz::ResultCode, link::Delivered> Answer(const FarDevice& from,
                                                     const link::Deliver& ask);
  std::pair<biz::ResultCode, link::Nothing> Answer(const FarDevice& from,
                                                   const link::Withdraw& ask);
  std::pair<biz::ResultCode, link::Nothing> Answer(const FarDevice& from,
                                                   const link::ReportRead& ask);
  std::pair<biz::ResultCode, link::Nothing> Answer(const FarDevice& from,
                                                   const link::MarkRead& ask);
  std::pair<biz::ResultCode, link::Nothing> Answer(const FarDevice& from,
                                                   const link::SendTyping& ask);
  std::pair<biz::ResultCode, link::History> Answer(const FarDevice& from,
                                                   const link::GetHistory& ask);
  std::pair<biz::ResultCode, biz::IMRoamStatus> Answer(const FarDevice& from,
                                                       const link::GetRoaming& ask);
  std::pair<biz::ResultCode, link::Nothing> Answer(const FarDevice& from,
                                                   const link::SetRoaming& ask);
  std::pair<biz::ResultCode, link::Uploaded> Answer(const FarDevice& from, const link::Upload& ask);
  std::pair<biz::ResultCode, link::Nothing> Answer(const FarDevice& from,
                                                   const link::Download& ask);
};

}  // namespace imsdk::test
