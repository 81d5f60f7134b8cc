// Which accounts are online, and who is told of it: the members of tribes, and whose contacts they
// are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/message.h"

namespace imsdk::embedded {

// Lives on the store's thread. An account is online while it has a session. Of a tribe that nobody
// watches nothing is kept; one that is watched keeps which of its members are online, and tells its
// watchers of changes when `Tell` is called, which it asks for at most once at a time.
class Presence {
 public:
  // The most members whose status is told at a time; the others follow.
  static constexpr std::size_t kMostAtATime = 200;

  explicit Presence(ServerStore& store) : store_(store) {}

  // Where it asks for `Tell`, in a while, and what it tells a session by.
  struct Ways {
    std::function<void()> schedule;
    std::function<void(std::int64_t session, const link::TribePresence&)> tell;
    std::function<void(std::int64_t account, const link::ContactPresence&)> tell_contacts;
  };
  void Use(Ways ways) { ways_ = std::move(ways); }

  bool IsOnline(std::int64_t account) const { return sessions_.contains(account); }
  // What the viewer sees: his contacts, as long as they have not put him on their black lists. May
  // throw `sqlite::Error`.
  biz::IMContactStatus Seen(const Glance& glance);
  // How many members are online. Walks the accounts that are, when nobody watches the tribe. May
  // throw `sqlite::Error`.
  std::int32_t CountIn(std::int64_t conversation);

  void Opened(std::int64_t account);
  // Its watching ends, too.
  void Closed(std::int64_t session, std::int64_t account);
  void Change(std::int64_t session, std::int64_t account, const WatchChange& change);
  void NoteStay(const StayChange& change);
  void NoteGlance(const Glance& glance);
  void Tell();

 private:
  struct Tribe {
    biz::IMTribeID id;
    std::map<std::int64_t, std::int64_t> watchers{};  // sessions and their accounts
    std::set<std::int64_t> online{};                  // members
    std::set<std::int64_t> changed{};                 // whose status is another than what was told
    bool untold = false;
  };

  std::set<std::int64_t> OnlineIn(std::int64_t conversation);
  // A member is online now, or is not.
  void Set(Tribe& tribe, std::int64_t account, bool online);
  void SetEverywhere(std::int64_t account, bool online);
  void StopWatching(std::int64_t session, std::int64_t conversation);
  void Untold(Tribe& tribe);
  void Turn(std::int64_t account);
  void TellSoon();
  void TellTribes();
  void TellContacts();

  ServerStore& store_;
  Ways ways_;
  std::map<std::int64_t, int> sessions_;   // how many each account has
  std::map<std::int64_t, Tribe> watched_;  // by conversation
  std::set<std::int64_t> turned_;          // accounts that came or went
  std::set<Glance> glances_;               // to be told as they are
  bool scheduled_ = false;
};

}  // namespace imsdk::embedded
