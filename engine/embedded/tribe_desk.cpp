#include "embedded/tribe_desk.h"

#include <set>

namespace imsdk::embedded {

namespace {

biz::ResultCode UnknownTribe() { return Failure(biz::kEngineNotFound, L"there is no such tribe"); }

}  // namespace

void TribeDesk::Change(Effects& effects, std::int64_t account, std::int64_t conversation,
                       bool member) {
  const Stream own{Stream::Kind::kAccount, account};
  const Position position = store_.mail().AddEntry(
      {own, EntryKind::kMembership, conversation, 0, 0, {static_cast<std::int64_t>(member)}});
  if (member) {
    store_.conversations().Join(account, conversation, position);
  } else {
    store_.conversations().Leave(account, conversation, position);
  }
  effects.stays.push_back({account, conversation, position, member});
  effects.news.push_back({own, position, 0});
}

Outcome<link::Nothing> TribeDesk::Answer(const Caller& caller, const link::SetTribeName& request) {
  const auto tribe = store_.conversations().FindTribe(request.tribe);
  if (!tribe || !store_.conversations().CurrentStay(caller.account, tribe->conversation)) {
    return NotAMember();
  }
  if (tribe->owner != caller.account) {
    return Failure(biz::kEngineRefused, L"only the tribe's owner can rename it");
  }
  store_.conversations().SetTribeName(request.tribe, request.name);
  return {};
}

Outcome<biz::IMTribeID> TribeDesk::Answer(const Caller& /*nobody*/, const NewTribe& request) {
  std::set<std::int64_t> members;
  std::int64_t owner = 0;
  const auto add = [&](const biz::IMUserID& user) {
    const auto account = store_.accounts().Find(user);
    if (!account || account->is_virtual()) return false;
    if (members.insert(account->id).second && owner == 0) owner = account->id;
    return true;
  };
  if (!add(request.owner)) return UnknownUser();
  for (const biz::IMUserID& user : request.members) {
    if (!add(user)) return UnknownUser();
  }
  const biz::IMTribeID tribe = request.id.id == 0 ? store_.conversations().FreeTribe() : request.id;
  if (tribe.id < 0 || store_.conversations().FindTribe(tribe)) {
    return Failure(biz::kEngineRefused, L"the tribe's identifier is taken");
  }
  const std::int64_t conversation = store_.conversations().AddTribe(tribe, request.name, owner);
  Outcome<biz::IMTribeID> outcome(tribe);
  for (const std::int64_t account : members) Change(outcome.effects, account, conversation, true);
  return outcome;
}

Outcome<link::Nothing> TribeDesk::Answer(const Caller& /*nobody*/, const SetMember& request) {
  const auto tribe = store_.conversations().FindTribe(request.tribe);
  if (!tribe) return UnknownTribe();
  const auto account = store_.accounts().Find(request.user);
  if (!account || account->is_virtual()) return UnknownUser();
  const bool is_member =
      store_.conversations().CurrentStay(account->id, tribe->conversation).has_value();
  Outcome<link::Nothing> outcome;
  if (is_member != request.member) {
    Change(outcome.effects, account->id, tribe->conversation, request.member);
  }
  return outcome;
}

Outcome<link::Nothing> TribeDesk::Answer(const Caller& /*nobody*/, const SetOpenHistory& request) {
  if (!store_.conversations().FindTribe(request.tribe)) return UnknownTribe();
  store_.conversations().SetOpenHistory(request.tribe, request.open);
  return {};
}

}  // namespace imsdk::embedded
