#include "account/tribes/tribe_book.h"

#include <utility>

#include "account/tribes/tribe_changes.h"

namespace imsdk::account {

void TribeBook::ShallowLogin(biz::IMCallback<> done) {
  if (open_) return done({});
  waiting_.push_back(std::move(done));
  // What the login has fetched, or fetches now, may be of a while ago.
  if (waiting_.size() == 1) FetchAll();
}

void TribeBook::FetchAll() {
  lost_ = false;
  fetching_ = true;
  FetchTribes(++last_fetch_, std::make_shared<Tribes>(), {});
}

void TribeBook::Load() {
  const auto stored = state_->store.tribes().All();
  if (!stored) return;
  known_ = true;
  for (const biz::IMTribeInfo& tribe : *stored) tribes_.emplace(tribe.tribeid, tribe);
}

void TribeBook::FetchTribes(std::uint64_t fetch, const std::shared_ptr<Tribes>& found,
                            std::string place) {
  state_->line->Ask(link::GetTribes{false, std::move(place)},
                    [weak = weak_from_this(), fetch, found](const biz::ResultCode& result,
                                                            const link::Tribes& part) {
                      const auto self = weak.lock();
                      if (!self || fetch != self->last_fetch_) return;
                      for (const biz::IMTribeInfo& tribe : part.tribes) {
                        found->insert_or_assign(tribe.tribeid, tribe);
                      }
                      if (result.ok() && !part.next.empty()) {
                        return self->FetchTribes(fetch, found, part.next);
                      }
                      self->FetchedTribes(result, std::move(*found));
                    });
}

void TribeBook::FetchedTribes(const biz::ResultCode& result, Tribes found) {
  fetching_ = false;
  if (result.ok()) {
    tribes_ = std::move(found);
    known_ = fresh_ = true;
    KeepAll();
  } else {
    lost_ = lost_ || known_;
  }
  AnswerWaiting(result);
  for (const biz::IMTribeID tribe : std::exchange(joined_, {})) Joined(tribe);
  for (const Told& told : std::exchange(held_, {})) Happened(told.happening, told.offline);
}

void TribeBook::AnswerWaiting(const biz::ResultCode& result) {
  if (waiting_.empty()) return;
  // Without a link the list is that of the store.
  const bool out_of_reach = result.code == biz::kEngineNoLink || result.code == biz::kEngineTimeout;
  const biz::ResultCode outcome = out_of_reach && known_ ? biz::ResultCode{} : result;
  const bool first = outcome.ok() && !open_.exchange(true);
  for (const auto& done : std::exchange(waiting_, {})) done(outcome);
  if (first) state_->tribe_mgr_events.on_shallow_login();
}

void TribeBook::KeepAll() {
  std::vector<biz::IMTribeInfo> all;
  for (const auto& [tribe, info] : tribes_) all.push_back(info);
  state_->commit.Add(
      [this, all](sqlite::Database&) {
        state_->store.tribes().Replace(all);
        for (const biz::IMTribeInfo& one : all) {
          // A device that never heard of the joining has the conversation too.
          state_->store.conversations().Make(biz::IMConversationID(one.tribeid));
          mailbox_->StoreRemind(one.tribeid, one.mine.remind);
        }
      },
      // What could not be stored is fetched again at the next login.
      [self = shared_from_this(), all](const biz::ResultCode& stored) {
        if (!stored.ok()) return;
        for (const biz::IMTribeInfo& one : all) {
          const biz::IMConversationID cid(one.tribeid);
          self->state_->chat.AddConversation(cid);
          if (one.mine.remind == biz::kRemindNothing) self->state_->chat.MarkRead(cid);
        }
      });
}

void TribeBook::Keep(const biz::IMTribeInfo& tribe) {
  state_->commit.Add([this, tribe](sqlite::Database&) { state_->store.tribes().Put(tribe); },
                     [](const biz::ResultCode&) {});
}

const biz::IMTribeInfo* TribeBook::Find(biz::IMTribeID tribe) {
  const auto found = tribes_.find(tribe);
  if (found == tribes_.end()) return nullptr;
  found->second.mine.unread = state_->chat.Unread(biz::IMConversationID(tribe));
  return &found->second;
}

std::vector<biz::IMTribeInfo> TribeBook::All() {
  std::vector<biz::IMTribeInfo> all;
  all.reserve(tribes_.size());
  for (const auto& [tribe, info] : tribes_) all.push_back(*Find(tribe));
  return all;
}

void TribeBook::SetRemindType(biz::IMTribeID tribe, biz::TribeMsgRemindType type,
                              biz::IMCallback<> done) {
  state_->commit.Add([this, tribe, type](sqlite::Database&) { mailbox_->StoreRemind(tribe, type); },
                     [self = shared_from_this(), tribe, type,
                      done = std::move(done)](const biz::ResultCode& stored) {
                       if (stored.ok()) self->TakeRemind(tribe, type);
                       done(stored);
                     });
}

void TribeBook::TakeRemind(biz::IMTribeID tribe, biz::TribeMsgRemindType type) {
  const auto found = tribes_.find(tribe);
  if (found != tribes_.end()) found->second.mine.remind = type;
  if (type == biz::kRemindNothing) state_->chat.MarkRead(biz::IMConversationID(tribe));
}

void TribeBook::Happened(const link::TribeHappening& happening, bool offline) {
  const Told told{happening, offline};
  if (fetching_) return held_.push_back(told);
  const auto learning = learning_.find(happening.tribe);
  if (learning != learning_.end()) return learning->second.push_back(told);
  const auto* joined = std::get_if<link::TribeJoined>(&happening.change);
  if (known_ && joined && joined->member.userid == state_->self) {
    learning_[happening.tribe].push_back(told);
    return Learn(happening.tribe);
  }
  Carry(told);
}

void TribeBook::Joined(biz::IMTribeID tribe) {
  if (fetching_) {
    joined_.insert(tribe);
  } else if (known_ && !tribes_.contains(tribe) && !learning_.contains(tribe)) {
    Learn(tribe);
  }
}

void TribeBook::Learn(biz::IMTribeID tribe) {
  learning_.try_emplace(tribe);
  state_->line->Ask(link::GetTribe{tribe},
                    [weak = weak_from_this(), tribe](const biz::ResultCode& result,
                                                     const biz::IMTribeInfo& info) {
                      if (const auto self = weak.lock()) self->Learned(tribe, result, info);
                    });
}

void TribeBook::Learned(biz::IMTribeID tribe, const biz::ResultCode& result,
                        const biz::IMTribeInfo& info) {
  const auto held = learning_.extract(tribe);
  if (result.ok() && info.mine.level != biz::kTribeNobody) {
    tribes_.insert_or_assign(tribe, info);
    Keep(info);
  }
  // Without a link the list is fetched anew when it is back.
  if (result.code == biz::kEngineNoLink || result.code == biz::kEngineTimeout) lost_ = true;
  if (held.empty()) return;
  if (!held.mapped().empty()) Carry(held.mapped().front());
  // A second joining among them is learned by itself.
  for (std::size_t i = 1; i < held.mapped().size(); ++i) {
    Happened(held.mapped()[i].happening, held.mapped()[i].offline);
  }
  if (!learning_.empty()) return;
  for (const auto& then : std::exchange(when_learned_, {})) then();
}

void TribeBook::WhenLearned(std::function<void()> then) {
  if (learning_.empty()) return then();
  when_learned_.push_back(std::move(then));
}

void TribeBook::Carry(const Told& told) {
  TakeNote(told.happening);
  if (!told.offline) RaiseTribeChange(state_->tribe_mgr_events, told.happening);
}

void TribeBook::TakeNote(const link::TribeHappening& happening) {
  const auto* left = std::get_if<link::TribeLeft>(&happening.change);
  if (left && left->user == state_->self) {
    tribes_.erase(happening.tribe);
    state_->commit.Add([this, tribe = happening.tribe](
                           sqlite::Database&) { state_->store.tribes().Remove(tribe); },
                       [](const biz::ResultCode&) {});
    return CloseRoster(happening.tribe);
  }
  const auto tribe = tribes_.find(happening.tribe);
  if (tribe == tribes_.end()) return;
  const std::int32_t before = tribe->second.members;
  ChangeTribeInfo(happening, state_->self, &tribe->second);
  // How many are in it is known with the next list; a crowd that comes costs no writing.
  const bool other_member = left || std::holds_alternative<link::TribeJoined>(happening.change);
  if (!other_member) Keep(tribe->second);
  const auto open = rosters_.find(happening.tribe);
  if (open == rosters_.end()) return;
  for (Roster* roster : {&open->second.roster, &open->second.coming}) {
    ChangeRoster(happening, roster);
  }
  if (tribe->second.members != before) CountSoon(happening.tribe);
}

void TribeBook::Connected() {
  // Fetches that the lost link left open have failed, and with them whoever waited.
  if (!fetching_ && (!fresh_ || lost_)) FetchAll();
  for (const auto& [tribe, open] : rosters_) {
    if (open.complete) Renew(tribe);
  }
}

}  // namespace imsdk::account
