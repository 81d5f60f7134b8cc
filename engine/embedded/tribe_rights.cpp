#include "embedded/tribe_rights.h"

#include <utility>

namespace imsdk::embedded {

namespace {

// The least level that an act asks for in a tribe and in a multi-chat.
struct Right {
  biz::TribeMemberLevel tribe;
  biz::TribeMemberLevel multi_chat;  // `kTribeNobody`: it has no such thing
  bool while_closed;
  bool on_lower;  // the other one's level has to be below
};

constexpr Right RightTo(TribeAct act) {
  using enum biz::TribeMemberLevel;
  switch (act) {
    case TribeAct::kRead:
    case TribeAct::kOwnSetting:
    case TribeAct::kQuit:
      return {kTribeMember, kTribeMember, true, false};
    case TribeAct::kReadAsManager:
      return {kTribeManager, kTribeManager, true, false};
    case TribeAct::kReadJoining:
      return {kTribeManager, kTribeNobody, true, false};
    case TribeAct::kRename:
    case TribeAct::kInvite:
      return {kTribeManager, kTribeMember, false, false};
    case TribeAct::kChange:
      return {kTribeManager, kTribeManager, false, false};
    case TribeAct::kChangeJoining:
    case TribeAct::kDecide:
      return {kTribeManager, kTribeNobody, false, false};
    case TribeAct::kEnable:
      return {kTribeOwner, kTribeOwner, true, false};
    case TribeAct::kNickname:
    case TribeAct::kMention:
    case TribeAct::kMentionAll:
      return {kTribeMember, kTribeMember, false, false};
    case TribeAct::kNicknameOf:
    case TribeAct::kRemove:
      return {kTribeManager, kTribeManager, false, true};
    case TribeAct::kLevel:
    case TribeAct::kTransfer:
      return {kTribeOwner, kTribeOwner, false, true};
  }
  return {kTribeOwner, kTribeOwner, false, true};
}

biz::ResultCode Check(const Right& right, const StoredTribe& tribe, const StoredMember& self) {
  const auto least = tribe.is_multi_chat() ? right.multi_chat : right.tribe;
  if (least == biz::kTribeNobody) {
    return Refusal(biz::kTribeNotAMultiChat, L"a multi-chat has no such thing");
  }
  if (self.level < least) {
    return least == biz::kTribeOwner
               ? Refusal(biz::kTribeOwnerOnly, L"only the tribe's owner may do this")
               : Refusal(biz::kTribeManagersOnly,
                         L"only the tribe's owner and administrators may do this");
  }
  if (!tribe.enabled && !right.while_closed) return TribeIsClosed();
  return {};
}

}  // namespace

biz::ResultCode UnknownTribe() {
  return Refusal(biz::kTribeUnknown, L"there is no such tribe, or it cannot be seen");
}

Admitted Admit(ServerStore& store, const Caller& caller, biz::IMTribeID tribe, TribeAct act) {
  Admitted admitted;
  const auto found = store.tribes().Find(tribe);
  if (!found) {
    admitted.result = UnknownTribe();
    return admitted;
  }
  admitted.tribe = *found;
  auto self = store.members().Find(found->conversation, caller.account);
  if (!self) {
    admitted.result = found->in_sight() ? NotAMember() : UnknownTribe();
    return admitted;
  }
  admitted.self = std::move(*self);
  admitted.result = Check(RightTo(act), admitted.tribe, admitted.self);
  const bool to_managers =
      act == TribeAct::kMentionAll && admitted.tribe.at_all == biz::kAtAllManagers;
  if (admitted.ok() && to_managers && admitted.self.level < biz::kTribeManager) {
    admitted.result = Refusal(biz::kTribeAtAllRefused,
                              L"only the tribe's owner and administrators may mention all members");
  }
  return admitted;
}

Admitted Admit(ServerStore& store, const Caller& caller, biz::IMTribeID tribe, TribeAct act,
               const biz::IMUserID& other) {
  Admitted admitted = Admit(store, caller, tribe, act);
  if (!admitted.ok()) return admitted;
  if (other == caller.user) {
    admitted.result = Refusal(biz::kTribeYourself, L"this is done to others only");
    return admitted;
  }
  const auto account = store.accounts().Find(other);
  auto member =
      account ? store.members().Find(admitted.tribe.conversation, account->id) : std::nullopt;
  if (!member) {
    admitted.result = Refusal(biz::kTribeUserNotAMember, L"the user is no member of the tribe");
  } else if (RightTo(act).on_lower && member->level >= admitted.self.level) {
    admitted.result =
        Refusal(biz::kTribeHigherLevel, L"the member's level is not below that of the account");
  } else {
    admitted.other = std::move(*member);
  }
  return admitted;
}

}  // namespace imsdk::embedded
