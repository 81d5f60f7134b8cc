#include "embedded/membership.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "embedded/tribe_changes.h"

namespace imsdk::embedded {

namespace {

// A tribe's level grows when it has so many members, and stays when it loses some.
constexpr std::int32_t kLevelsFrom[] = {50, 200, 1000, 10'000};

std::int32_t LevelOf(std::int32_t members) {
  const auto* above = std::upper_bound(std::begin(kLevelsFrom), std::end(kLevelsFrom), members);
  return static_cast<std::int32_t>(above - std::begin(kLevelsFrom)) + 1;
}

// In the account's own stream, whose entries it sees whether it is a member or not.
Position AddMembership(ServerStore& store, Effects& effects, const StoredTribe& tribe,
                       std::int64_t account, bool member) {
  const Stream own{Stream::Kind::kAccount, account};
  const Position position = store.mail().AddEntry(
      {own, EntryKind::kMembership, tribe.conversation, 0, 0, {static_cast<std::int64_t>(member)}});
  effects.stays.push_back({account, tribe.conversation, position, member});
  effects.news.push_back({own, position, 0});
  return position;
}

void Grow(ServerStore& store, Effects& effects, StoredTribe& tribe, std::int64_t actor,
          Announce announce) {
  const std::int32_t level = LevelOf(tribe.members);
  if (level <= tribe.level) return;
  tribe.level = level;
  const std::wstring value = std::to_wstring(level);
  store.tribes().Set(tribe.id, biz::kTribeKeyLevel, value);
  if (announce == Announce::kToNobody) return;
  TellTribe(store.mail(), effects,
            {.conversation = tribe.conversation,
             .kind = EntryKind::kTribeInfoChanged,
             .actor = actor,
             .texts = {{biz::kTribeKeyLevel, value}}});
}

}  // namespace

void Enter(ServerStore& store, Effects& effects, StoredTribe& tribe, std::int64_t account,
           std::int64_t actor, Announce announce) {
  const Position joined = AddMembership(store, effects, tribe, account, true);
  store.conversations().Join(account, tribe.conversation, joined);
  const auto level = account == tribe.owner ? biz::kTribeOwner : biz::kTribeMember;
  store.members().Add(tribe.conversation, account, level);
  tribe.members = store.tribes().CountMembers(tribe.id, 1);
  for (StoredVerify& open : store.verify().Open(tribe.conversation, account)) {
    const bool asked = open.type == biz::kVerifyJoinAsked;
    open.type = asked ? biz::kVerifyJoinAllowed : biz::kVerifyInviteAccepted;
    open.manager = actor;
    store.verify().Decide(open);
  }
  if (announce == Announce::kToAll) {
    // Behind the beginning of the stay, so that who joins hears of it too.
    TellTribe(store.mail(), effects,
              {.conversation = tribe.conversation,
               .kind = EntryKind::kTribeJoined,
               .actor = actor,
               .numbers = {account, tribe.members, level}});
  }
  Grow(store, effects, tribe, actor, announce);
}

void Leave(ServerStore& store, Effects& effects, StoredTribe& tribe, std::int64_t account,
           std::int64_t actor) {
  store.members().Remove(tribe.conversation, account);
  const auto stay = store.conversations().CurrentStay(account, tribe.conversation);
  if (stay) store.mentions().Forget(account, *stay);
  tribe.members = store.tribes().CountMembers(tribe.id, -1);
  // Before the end of the stay, so that who leaves hears of it too.
  TellTribe(store.mail(), effects,
            {.conversation = tribe.conversation,
             .kind = EntryKind::kTribeLeft,
             .actor = actor,
             .numbers = {account, tribe.members, account == actor ? 0 : 1}});
  const Position until = AddMembership(store, effects, tribe, account, false);
  store.conversations().Leave(account, tribe.conversation, until);
}

}  // namespace imsdk::embedded
