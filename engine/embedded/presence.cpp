#include "embedded/presence.h"

#include <utility>
#include <vector>

#include "sqlite/group_commit.h"

namespace imsdk::embedded {

std::set<std::int64_t> Presence::OnlineIn(std::int64_t conversation) {
  std::set<std::int64_t> online;
  for (const auto& [account, count] : sessions_) {
    if (store_.conversations().CurrentStay(account, conversation)) online.insert(account);
  }
  return online;
}

std::int32_t Presence::CountIn(std::int64_t conversation) {
  const auto watched = watched_.find(conversation);
  const std::size_t count =
      watched == watched_.end() ? OnlineIn(conversation).size() : watched->second.online.size();
  return static_cast<std::int32_t>(count);
}

void Presence::Opened(std::int64_t account) {
  if (++sessions_[account] > 1) return;
  SetEverywhere(account, true);
  Turn(account);
}

void Presence::Turn(std::int64_t account) {
  // Also of somebody who came and went: a list that was fetched meanwhile says otherwise.
  turned_.insert(account);
  TellSoon();
}

void Presence::NoteGlance(const Glance& glance) {
  if (!sessions_.contains(glance.viewer)) return;
  glances_.insert(glance);
  TellSoon();
}

biz::IMContactStatus Presence::Seen(const Glance& glance) {
  const bool seen =
      IsOnline(glance.account) && (glance.viewer == glance.account ||
                                   (store_.contacts().Find(glance.viewer, glance.account) &&
                                    !store_.contacts().IsBlack(glance.account, glance.viewer)));
  return seen ? biz::kContactOnline : biz::kContactOffline;
}

void Presence::Closed(std::int64_t session, std::int64_t account) {
  std::vector<std::int64_t> conversations;
  for (const auto& [conversation, tribe] : watched_) {
    if (tribe.watchers.contains(session)) conversations.push_back(conversation);
  }
  for (const std::int64_t conversation : conversations) StopWatching(session, conversation);
  const auto count = sessions_.find(account);
  if (count == sessions_.end() || --count->second > 0) return;
  sessions_.erase(count);
  SetEverywhere(account, false);
  Turn(account);
}

void Presence::SetEverywhere(std::int64_t account, bool online) {
  if (watched_.empty()) return;
  // Nobody is to be told wrong things, and nobody's login fails because of this.
  sqlite::Guarded([&] {
    for (const Stay& stay : store_.conversations().StaysAfter(account, kNever - 1)) {
      const auto watched = watched_.find(stay.conversation);
      if (watched != watched_.end()) Set(watched->second, account, online);
    }
  });
}

void Presence::Set(Tribe& tribe, std::int64_t account, bool online) {
  const bool changed =
      online ? tribe.online.insert(account).second : tribe.online.erase(account) > 0;
  if (!changed) return;
  // Who came and went between two tellings has not changed.
  if (!tribe.changed.insert(account).second) tribe.changed.erase(account);
  Untold(tribe);
}

void Presence::Untold(Tribe& tribe) {
  tribe.untold = true;
  TellSoon();
}

void Presence::TellSoon() {
  if (!std::exchange(scheduled_, true)) ways_.schedule();
}

void Presence::Change(std::int64_t session, std::int64_t account, const WatchChange& change) {
  if (!change.on) return StopWatching(session, change.conversation);
  auto watched = watched_.find(change.conversation);
  if (watched == watched_.end()) {
    Tribe tribe{change.tribe};
    if (!sqlite::Guarded([&] { tribe.online = OnlineIn(change.conversation); }).ok()) return;
    watched = watched_.emplace(change.conversation, std::move(tribe)).first;
  }
  watched->second.watchers.emplace(session, account);
}

void Presence::StopWatching(std::int64_t session, std::int64_t conversation) {
  const auto watched = watched_.find(conversation);
  if (watched == watched_.end()) return;
  watched->second.watchers.erase(session);
  if (watched->second.watchers.empty()) watched_.erase(watched);
}

void Presence::NoteStay(const StayChange& change) {
  const auto watched = watched_.find(change.conversation);
  if (watched == watched_.end()) return;
  Tribe& tribe = watched->second;
  if (change.member) {
    if (IsOnline(change.account)) Set(tribe, change.account, true);
    return;
  }
  std::erase_if(tribe.watchers,
                [&](const auto& watcher) { return watcher.second == change.account; });
  if (tribe.watchers.empty()) {
    watched_.erase(watched);
    return;
  }
  // Everybody hears that it left, so its status concerns nobody.
  tribe.changed.erase(change.account);
  if (tribe.online.erase(change.account) > 0) Untold(tribe);
}

void Presence::Tell() {
  scheduled_ = false;
  TellTribes();
  TellContacts();
}

void Presence::TellContacts() {
  std::map<std::int64_t, link::ContactPresence> told;
  // A status that could not be read is asked for with the next list.
  sqlite::Guarded([&] {
    for (const std::int64_t account : std::exchange(turned_, {})) {
      for (const std::int64_t owner : store_.contacts().OwnersOf(account)) {
        if (sessions_.contains(owner)) glances_.insert({owner, account});
      }
    }
    for (const Glance& glance : std::exchange(glances_, {})) {
      told[glance.viewer].changed.emplace_back(store_.accounts().User(glance.account),
                                               Seen(glance));
    }
  });
  for (const auto& [account, presence] : told) ways_.tell_contacts(account, presence);
}

void Presence::TellTribes() {
  for (auto& [conversation, tribe] : watched_) {
    if (!std::exchange(tribe.untold, false)) continue;
    link::TribePresence presence{tribe.id, static_cast<std::int32_t>(tribe.online.size()), {}};
    const auto told = sqlite::Guarded([&] {
      while (!tribe.changed.empty() && presence.changed.size() < kMostAtATime) {
        const std::int64_t account = *tribe.changed.begin();
        presence.changed.emplace_back(
            store_.accounts().User(account),
            tribe.online.contains(account) ? biz::kMemberOnline : biz::kMemberOffline);
        tribe.changed.erase(tribe.changed.begin());
      }
    });
    if (told.ok()) {
      for (const auto& [session, account] : tribe.watchers) ways_.tell(session, presence);
    }
    if (!tribe.changed.empty()) Untold(tribe);
  }
}

}  // namespace imsdk::embedded
