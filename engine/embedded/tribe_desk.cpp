#include "embedded/tribe_desk.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "embedded/membership.h"
#include "embedded/tribe_changes.h"
#include "embedded/tribe_rights.h"
#include "kexbase/strings.h"
#include "link/check_bounds.h"

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kTribesInPart = 200;
constexpr std::int32_t kMostClasses = 1000;
constexpr std::int64_t kMostOwned = 1000;

biz::ResultCode Unusable() { return Failure(biz::kEngineRefused, L"the value is not usable"); }

biz::ResultCode CheckText(const char* field, const std::wstring& text, std::size_t most) {
  if (base::Utf16Length(text) <= most) return {};
  return link::Beyond(field, biz::BoundUnit::kLetters, most);
}

// The text as it is stored, or why it is not.
biz::ResultCode CheckValue(biz::TribeModifyKey key, const std::wstring& value) {
  std::int32_t most = 0;
  switch (key) {
    case biz::kTribeKeyName:
      if (value.find_first_not_of(L" \t\r\n\u00A0\u3000") == value.npos) {
        return Failure(biz::kEngineEmpty, L"a tribe has a name");
      }
      return CheckText("name", value, biz::kMaxTribeLetters);
    case biz::kTribeKeyDescription:
      return CheckText("description", value, biz::kMaxTribeDescriptionLetters);
    case biz::kTribeKeyPortrait:
      return CheckText("portrait", value, biz::kMaxTribePictureLetters);
    case biz::kTribeKeyBulletin:
      return CheckText("bulletin", value, biz::kMaxTribeTextLetters);
    case biz::kTribeKeyJoinPassword:
      return CheckText("password", value, biz::kMaxTribePasswordLetters);
    case biz::kTribeKeyNtfImage:
      return CheckText("ntfimage", value, biz::kMaxTribePictureLetters);
    case biz::kTribeKeyBusinessImage:
      return CheckText("businessimage", value, biz::kMaxTribePictureLetters);
    case biz::kTribeKeyClass:
      most = kMostClasses - 1;
      break;
    case biz::kTribeKeyAuthType:
      most = biz::kJoinClosed;
      break;
    case biz::kTribeKeyOpenHistory:
    case biz::kTribeKeyVisitors:
      most = 1;
      break;
    case biz::kTribeKeyAtAll:
      most = biz::kAtAllEverybody;
      break;
    default:
      return Unusable();  // a level grows by itself
  }
  std::int32_t number = 0;
  const bool good = base::StringToInt(value, &number) && number >= 0 && number <= most &&
                    std::to_wstring(number) == value;
  return good ? biz::ResultCode{} : Unusable();
}

TribeAct ActOf(biz::TribeModifyKey key) {
  switch (key) {
    case biz::kTribeKeyName:
      return TribeAct::kRename;
    case biz::kTribeKeyAuthType:
    case biz::kTribeKeyJoinPassword:
    case biz::kTribeKeyVisitors:
      return TribeAct::kChangeJoining;
    default:
      return TribeAct::kChange;
  }
}

// The accounts of these users, each once, with the first in front. Nothing when one is none.
std::optional<std::vector<std::int64_t>> AccountsOf(ServerStore& store, const biz::IMUserID& first,
                                                    const std::vector<biz::IMUserID>& others) {
  std::vector<std::int64_t> accounts;
  std::unordered_set<std::int64_t> known;
  const auto add = [&](const biz::IMUserID& user) {
    const auto account = store.accounts().Find(user);
    if (!account || account->is_virtual()) return false;
    if (known.insert(account->id).second) accounts.push_back(account->id);
    return true;
  };
  if (!add(first) || !std::all_of(others.begin(), others.end(), add)) return std::nullopt;
  return accounts;
}

// Makes the tribe; its owner is the first of `accounts`.
void Make(ServerStore& store, Effects& effects, StoredTribe& tribe, const std::wstring& name,
          const std::vector<std::int64_t>& accounts, Announce announce) {
  tribe.conversation = store.conversations().MakeTribe(tribe.id);
  tribe.owner = accounts.front();
  store.tribes().Add(tribe, name);
  for (const std::int64_t account : accounts) {
    Enter(store, effects, tribe, account, tribe.owner, announce);
  }
}

}  // namespace

Outcome<link::Tribes> TribeDesk::Answer(const Caller& caller, const link::GetTribes& request) {
  std::int64_t place = 0;
  if (!request.place.empty()) {
    const auto given = ParsePosition(request.place);
    if (!given) return Failure(biz::kEngineNotFound, L"the list has no such place");
    place = *given;
  }
  auto listed = request.quitted ? store_.tribes().QuittedBy(caller.account, place, kTribesInPart)
                                : store_.tribes().Of(caller.account, place, kTribesInPart);
  Outcome<link::Tribes> outcome;
  if (listed.size() == static_cast<std::size_t>(kTribesInPart)) {
    outcome.reply.next = std::to_string(listed.back().place);
  }
  for (ListedTribe& one : listed) outcome.reply.tribes.push_back(std::move(one.info));
  return outcome;
}

Outcome<biz::IMTribeInfo> TribeDesk::Answer(const Caller& caller, const link::GetTribe& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kRead);
  if (admitted.ok()) {
    return store_.tribes().Info(admitted.tribe, caller.account, TribeView::kMember);
  }
  if (admitted.result.subcode != biz::kTribeNotAMember) return admitted.result;
  if (admitted.tribe.visitors) store_.tribes().AddVisit(admitted.tribe, caller.account);
  return store_.tribes().Info(admitted.tribe, caller.account, TribeView::kPublic);
}

Outcome<biz::IMTribeRequest> TribeDesk::Answer(const Caller& caller,
                                               const link::CreateTribe& request) {
  const biz::IMNewTribe& wanted = request.tribe;
  StoredTribe tribe;
  tribe.type = wanted.type;
  tribe.auth = wanted.type == biz::kMultiChat ? biz::kJoinClosed : wanted.authtype;
  if (wanted.type != biz::kNormalTribe && wanted.type != biz::kMultiChat) return Unusable();
  const std::pair<biz::TribeModifyKey, std::wstring> settings[] = {
      {biz::kTribeKeyName, wanted.name},
      {biz::kTribeKeyAuthType, std::to_wstring(tribe.auth)},
      {biz::kTribeKeyClass, std::to_wstring(wanted.classtype)},
      {biz::kTribeKeyDescription, wanted.description},
      {biz::kTribeKeyJoinPassword, wanted.password}};
  for (const auto& [key, value] : settings) {
    if (const auto checked = CheckValue(key, value); !checked.ok()) return checked;
  }
  const auto accounts = AccountsOf(store_, caller.user, wanted.members);
  if (!accounts) return UnknownUser();
  if (store_.tribes().OwnedBy(caller.account, kMostOwned) >= kMostOwned) {
    return Failure(biz::kEngineRefused, L"the account has founded as many tribes as it may");
  }
  tribe.id = store_.tribes().Free();
  Outcome<biz::IMTribeRequest> outcome(biz::IMTribeRequest{tribe.id});
  Make(store_, outcome.effects, tribe, wanted.name, *accounts, Announce::kToAll);
  for (const auto& [key, value] : settings) store_.tribes().Set(tribe.id, key, value);
  return outcome;
}

Outcome<link::Nothing> TribeDesk::Answer(const Caller& caller, const link::ChangeTribe& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, ActOf(request.key));
  if (!admitted.ok()) return admitted.result;
  if (const auto checked = CheckValue(request.key, request.value); !checked.ok()) return checked;
  Outcome<link::Nothing> outcome;
  if (!store_.tribes().Set(request.tribe, request.key, request.value)) return outcome;
  const bool secret = request.key == biz::kTribeKeyJoinPassword;
  TellTribe(store_.mail(), outcome.effects,
            {.conversation = admitted.tribe.conversation,
             .kind = EntryKind::kTribeInfoChanged,
             .actor = caller.account,
             .texts = {{request.key, secret ? std::wstring() : request.value}}});
  return outcome;
}

Outcome<biz::IMTribeTextValue> TribeDesk::Answer(const Caller& caller,
                                                 const link::GetJoinPassword& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kReadJoining);
  if (!admitted.ok()) return admitted.result;
  return biz::IMTribeTextValue{store_.tribes().Password(request.tribe)};
}

Outcome<biz::IMTribeNumberValue> TribeDesk::Answer(const Caller& caller,
                                                   const link::CountVisitors& request) {
  const auto act = request.clear ? TribeAct::kChangeJoining : TribeAct::kReadAsManager;
  const Admitted admitted = Admit(store_, caller, request.tribe, act);
  if (!admitted.ok()) return admitted.result;
  Outcome<biz::IMTribeNumberValue> outcome(
      biz::IMTribeNumberValue{store_.tribes().Visits(request.tribe)});
  if (!request.clear) return outcome;
  store_.tribes().ClearVisits(request.tribe);
  TellTribe(store_.mail(), outcome.effects,
            {admitted.tribe.conversation, EntryKind::kTribeVisitorsCleared, caller.account});
  return outcome;
}

Outcome<link::Nothing> TribeDesk::Answer(const Caller& caller, const link::EnableTribe& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kEnable);
  if (!admitted.ok()) return admitted.result;
  if (!store_.tribes().SetEnabled(request.tribe, request.enabled)) {
    return Refusal(biz::kTribeAlreadySo, request.enabled ? L"the tribe is enabled already"
                                                         : L"the tribe is closed already");
  }
  Outcome<link::Nothing> outcome;
  TellTribe(store_.mail(), outcome.effects,
            {admitted.tribe.conversation,
             EntryKind::kTribeEnabled,
             caller.account,
             {static_cast<std::int64_t>(request.enabled)}});
  return outcome;
}

Outcome<biz::IMTribeID> TribeDesk::Answer(const Caller& /*nobody*/, const NewTribe& request) {
  const auto accounts = AccountsOf(store_, request.owner, request.members);
  if (!accounts) return UnknownUser();
  StoredTribe tribe;
  tribe.id = request.id.id == 0 ? store_.tribes().Free() : request.id;
  if (tribe.id.id < 0 || store_.tribes().Find(tribe.id)) {
    return Failure(biz::kEngineRefused, L"the tribe's identifier is taken");
  }
  Outcome<biz::IMTribeID> outcome(tribe.id);
  // Nobody joins a tribe that was there before: what it begins with may be a hundred thousand.
  Make(store_, outcome.effects, tribe, request.name, *accounts, Announce::kToNobody);
  return outcome;
}

Outcome<link::Nothing> TribeDesk::Answer(const Caller& /*nobody*/, const SetMember& request) {
  auto tribe = store_.tribes().Find(request.tribe);
  if (!tribe) return UnknownTribe();
  const auto account = store_.accounts().Find(request.user);
  if (!account || account->is_virtual()) return UnknownUser();
  const bool is_member = store_.members().Find(tribe->conversation, account->id).has_value();
  Outcome<link::Nothing> outcome;
  if (is_member == request.member) return outcome;
  if (request.member) {
    Enter(store_, outcome.effects, *tribe, account->id, account->id);
  } else if (account->id == tribe->owner) {
    return Refusal(biz::kTribeOwnerStays, L"the owner stays in the tribe");
  } else {
    Leave(store_, outcome.effects, *tribe, account->id, account->id);
  }
  return outcome;
}

Outcome<link::Nothing> TribeDesk::Answer(const Caller& /*nobody*/, const SetOpenHistory& request) {
  const auto tribe = store_.tribes().Find(request.tribe);
  if (!tribe) return UnknownTribe();
  Outcome<link::Nothing> outcome;
  const std::wstring value = request.open ? L"1" : L"0";
  if (!store_.tribes().Set(request.tribe, biz::kTribeKeyOpenHistory, value)) return outcome;
  TellTribe(store_.mail(), outcome.effects,
            {.conversation = tribe->conversation,
             .kind = EntryKind::kTribeInfoChanged,
             .actor = tribe->owner,
             .texts = {{biz::kTribeKeyOpenHistory, value}}});
  return outcome;
}

}  // namespace imsdk::embedded
