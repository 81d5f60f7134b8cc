// The members of the tribes that are open.
#include <chrono>
#include <utility>

#include "account/tribes/tribe_book.h"
#include "account/tribes/tribe_changes.h"
#include "kexbase/callback.h"

namespace imsdk::account {

namespace {

// Rosters that are kept: so many of them, and so many members in all but one.
constexpr std::size_t kMostRosters = 16;
constexpr std::size_t kMostMembers = 200'000;
constexpr std::chrono::milliseconds kCountPause{1'000};

}  // namespace

void TribeBook::DeepLogin(biz::IMTribeID tribe, biz::IMCallback<> done) {
  if (!open_) return done(NoTribesYet());
  if (!Find(tribe)) return done(NoMemberOf());
  OpenRoster& open = rosters_[tribe];
  used_.remove(tribe);
  used_.push_front(tribe);
  if (open.complete) return done({});
  open.waiting.push_back(std::move(done));
  if (open.waiting.size() == 1) Renew(tribe);
}

void TribeBook::Renew(biz::IMTribeID tribe) {
  OpenRoster& open = rosters_.at(tribe);
  open.coming = {};
  open.fetch = ++last_member_fetch_;
  FetchMembers(tribe, open.fetch, {});
}

void TribeBook::FetchMembers(biz::IMTribeID tribe, std::uint64_t fetch, std::string place) {
  state_->line->Ask(link::GetTribeMembers{tribe, std::move(place), true},
                    [weak = weak_from_this(), tribe, fetch](const biz::ResultCode& result,
                                                            const link::TribeMembers& part) {
                      const auto self = weak.lock();
                      if (!self) return;
                      const auto open = self->rosters_.find(tribe);
                      if (open == self->rosters_.end() || open->second.fetch != fetch) return;
                      if (!result.ok()) return self->FetchedMembers(tribe, result);
                      Roster& coming = open->second.coming;
                      // What was told meanwhile is newer.
                      for (const biz::IMTribeMember& member : part.members) {
                        if (!coming.Find(member.userid)) coming.PutFresh(member);
                      }
                      coming.online = part.online;
                      if (!part.next.empty()) return self->FetchMembers(tribe, fetch, part.next);
                      self->FetchedMembers(tribe, {});
                    });
}

void TribeBook::FetchedMembers(biz::IMTribeID tribe, const biz::ResultCode& result) {
  OpenRoster& open = rosters_.at(tribe);
  const auto waiting = std::exchange(open.waiting, {});
  open.fetch = 0;
  if (result.ok()) {
    open.roster = std::exchange(open.coming, {});
    open.complete = true;
    CloseOldRosters();
  } else if (!open.complete) {
    CloseRoster(tribe);
  }
  for (const auto& done : waiting) done(result);
}

void TribeBook::CloseRoster(biz::IMTribeID tribe) {
  const auto open = rosters_.find(tribe);
  if (open == rosters_.end()) return;
  const auto waiting = std::move(open->second.waiting);
  rosters_.erase(open);
  used_.remove(tribe);
  recount_.erase(tribe);
  for (const auto& done : waiting) done(NoMemberOf());
}

void TribeBook::CloseOldRosters() {
  std::size_t members = 0;
  for (const auto& [tribe, open] : rosters_) members += open.roster.size();
  while (rosters_.size() > 1 && (rosters_.size() > kMostRosters || members > kMostMembers)) {
    const biz::IMTribeID oldest = used_.back();
    members -= rosters_.at(oldest).roster.size();
    CloseRoster(oldest);
    state_->line->Ask(link::GetTribeMembers{oldest, {}, false},
                      [](const biz::ResultCode&, const link::TribeMembers&) {});
  }
}

Roster* TribeBook::RosterOf(biz::IMTribeID tribe) {
  const auto open = rosters_.find(tribe);
  if (open == rosters_.end() || !open->second.complete) return nullptr;
  return &open->second.roster;
}

void TribeBook::Present(const link::TribePresence& presence) {
  const auto open = rosters_.find(presence.tribe);
  if (open == rosters_.end()) return;
  for (Roster* roster : {&open->second.roster, &open->second.coming}) {
    roster->online = presence.online;
  }
  for (const auto& [user, status] : presence.changed) {
    open->second.coming.SetStatus(user, status);
    if (!open->second.roster.SetStatus(user, status)) continue;
    state_->tribe_mgr_events.on_member_status(presence.tribe, user, status);
  }
  CountSoon(presence.tribe);
}

void TribeBook::CountSoon(biz::IMTribeID tribe) {
  const bool waits = !recount_.empty();
  recount_.insert(tribe);
  if (waits) return;
  state_->runner->PostDelayedTask(
      FROM_HERE, base::BindWeak(weak_from_this(), &TribeBook::TellCounts), kCountPause);
}

void TribeBook::TellCounts() {
  for (const biz::IMTribeID tribe : std::exchange(recount_, {})) {
    const Roster* roster = RosterOf(tribe);
    if (!roster) continue;
    state_->tribe_mgr_events.on_member_count(tribe, static_cast<std::uint32_t>(roster->online),
                                             static_cast<std::uint32_t>(roster->size()));
  }
}

}  // namespace imsdk::account
