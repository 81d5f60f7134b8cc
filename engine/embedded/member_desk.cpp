#include "embedded/member_desk.h"

#include <string>
#include <utility>

#include "embedded/membership.h"
#include "embedded/tribe_changes.h"
#include "embedded/tribe_rights.h"

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kMembersInPart = 1000;

// Where a list goes on: behind an account.
biz::ResultCode ReadPlace(const std::string& text, std::int64_t* behind) {
  *behind = 0;
  if (text.empty()) return {};
  const auto place = ParsePosition(text);
  if (!place) return Failure(biz::kEngineNotFound, L"the list has no such place");
  *behind = *place;
  return {};
}

}  // namespace

biz::IMTribeMember MemberDesk::Shown(const StoredMember& member) {
  return ToMember(member,
                  presence_.IsOnline(member.account) ? biz::kMemberOnline : biz::kMemberOffline,
                  store_.Now());
}

Outcome<link::TribeMembers> MemberDesk::Answer(const Caller& caller,
                                               const link::GetTribeMembers& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kRead);
  if (!admitted.ok()) return admitted.result;
  const std::int64_t conversation = admitted.tribe.conversation;
  Outcome<link::TribeMembers> outcome;
  if (request.place.empty() || !request.watch) {
    outcome.effects.watch = {request.tribe, conversation, request.watch};
  }
  if (!request.watch) return outcome;
  std::int64_t behind = 0;
  if (const auto read = ReadPlace(request.place, &behind); !read.ok()) return read;
  const auto members = store_.members().Behind(conversation, behind, kMembersInPart);
  outcome.reply.total = admitted.tribe.members;
  outcome.reply.online = presence_.CountIn(conversation);
  outcome.reply.members.reserve(members.size());
  for (const StoredMember& member : members) outcome.reply.members.push_back(Shown(member));
  if (members.size() == static_cast<std::size_t>(kMembersInPart)) {
    outcome.reply.next = std::to_string(members.back().account);
  }
  return outcome;
}

Outcome<biz::IMTribeMembers> MemberDesk::Answer(const Caller& caller,
                                                const link::FindTribeMembers& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kRead);
  if (!admitted.ok()) return admitted.result;
  Outcome<biz::IMTribeMembers> outcome;
  for (const biz::IMUserID& user : request.users) {
    const auto account = store_.accounts().Find(user);
    if (!account) continue;
    const auto member = store_.members().Find(admitted.tribe.conversation, account->id);
    if (member) outcome.reply.memberlist.push_back(Shown(*member));
  }
  return outcome;
}

Outcome<link::Nothing> MemberDesk::Answer(const Caller& caller,
                                          const link::SetTribeNickname& request) {
  const bool own = request.user == caller.user;
  const Admitted admitted =
      own ? Admit(store_, caller, request.tribe, TribeAct::kNickname)
          : Admit(store_, caller, request.tribe, TribeAct::kNicknameOf, request.user);
  if (!admitted.ok()) return admitted.result;
  const std::int64_t account = own ? caller.account : admitted.other.account;
  const std::int64_t conversation = admitted.tribe.conversation;
  Outcome<link::Nothing> outcome;
  if (!store_.members().SetNickname(conversation, account, request.nickname)) return outcome;
  const auto member = store_.members().Find(conversation, account);
  TellTribe(store_.mail(), outcome.effects,
            {conversation,
             EntryKind::kTribeMemberChanged,
             caller.account,
             {account},
             {{biz::kTribeUserKeyNickname, request.nickname},
              {biz::kTribeUserKeyDisplay, Shown(*member).display}}});
  return outcome;
}

Outcome<link::Nothing> MemberDesk::Answer(const Caller& caller,
                                          const link::SetTribeLevel& request) {
  if (request.level == biz::kTribeOwner) return Transfer(caller, request);
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kLevel, request.user);
  if (!admitted.ok()) return admitted.result;
  if (request.level != biz::kTribeMember && request.level != biz::kTribeManager) {
    return Failure(biz::kEngineRefused, L"there is no such level");
  }
  Outcome<link::Nothing> outcome;
  if (admitted.other.level == request.level) return outcome;
  const std::int64_t account = admitted.other.account;
  store_.members().SetLevel(admitted.tribe.conversation, account, request.level);
  TellTribe(store_.mail(), outcome.effects,
            {admitted.tribe.conversation,
             EntryKind::kTribeLevelChanged,
             caller.account,
             {account, request.level}});
  return outcome;
}

Outcome<link::Nothing> MemberDesk::Transfer(const Caller& caller,
                                            const link::SetTribeLevel& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kTransfer, request.user);
  if (!admitted.ok()) return admitted.result;
  const std::int64_t conversation = admitted.tribe.conversation;
  const std::int64_t account = admitted.other.account;
  store_.tribes().SetOwner(request.tribe, account);
  store_.members().SetLevel(conversation, account, biz::kTribeOwner);
  store_.members().SetLevel(conversation, caller.account, biz::kTribeManager);
  Outcome<link::Nothing> outcome;
  TellTribe(store_.mail(), outcome.effects,
            {conversation, EntryKind::kTribeTransferred, caller.account, {account}});
  return outcome;
}

Outcome<link::Nothing> MemberDesk::Answer(const Caller& caller, const link::RemoveMember& request) {
  const bool quits = request.user == caller.user;
  Admitted admitted = quits ? Admit(store_, caller, request.tribe, TribeAct::kQuit)
                            : Admit(store_, caller, request.tribe, TribeAct::kRemove, request.user);
  if (!admitted.ok()) return admitted.result;
  if (quits && admitted.self.level == biz::kTribeOwner) {
    return Refusal(biz::kTribeOwnerStays, L"the owner hands the tribe over before leaving it");
  }
  Outcome<link::Nothing> outcome;
  Leave(store_, outcome.effects, admitted.tribe, quits ? caller.account : admitted.other.account,
        caller.account);
  return outcome;
}

Outcome<link::Nothing> MemberDesk::Answer(const Caller& caller,
                                          const link::SetRemindType& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kOwnSetting);
  if (!admitted.ok()) return admitted.result;
  if (request.type < biz::kRemindAll || request.type > biz::kRemindNothing) {
    return Failure(biz::kEngineRefused, L"there is no such type");
  }
  store_.members().SetRemind(admitted.tribe.conversation, caller.account, request.type);
  Outcome<link::Nothing> outcome;
  if (!store_.accounts().HasOtherDevices(caller.account, caller.device)) return outcome;
  const Stream own{Stream::Kind::kAccount, caller.account};
  const Position position = store_.mail().AddEntry({own,
                                                    EntryKind::kRemindChanged,
                                                    admitted.tribe.conversation,
                                                    0,
                                                    caller.account,
                                                    {request.type},
                                                    caller.device});
  outcome.effects.news.push_back({own, position, caller.device});
  return outcome;
}

Outcome<link::Nothing> MemberDesk::Answer(const Caller& caller, const link::SetAttention& request) {
  const Admitted admitted =
      Admit(store_, caller, request.tribe, TribeAct::kOwnSetting, request.user);
  if (!admitted.ok()) return admitted.result;
  store_.members().SetAttention(caller.account, admitted.tribe.conversation, admitted.other.account,
                                request.on);
  return {};
}

Outcome<biz::IMTribeMembers> MemberDesk::Answer(const Caller& caller,
                                                const link::GetAttention& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kRead);
  if (!admitted.ok()) return admitted.result;
  Outcome<biz::IMTribeMembers> outcome;
  for (const StoredMember& member :
       store_.members().Attention(caller.account, admitted.tribe.conversation)) {
    outcome.reply.memberlist.push_back(Shown(member));
  }
  return outcome;
}

Outcome<link::Nothing> MemberDesk::Answer(const Caller& caller,
                                          const link::SetTribeBlack& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kChangeJoining);
  if (!admitted.ok()) return admitted.result;
  if (request.user == caller.user) {
    return Refusal(biz::kTribeYourself, L"this is done to others only");
  }
  const auto account = store_.accounts().Find(request.user);
  if (!account || account->is_virtual()) return UnknownUser();
  const std::int64_t conversation = admitted.tribe.conversation;
  const auto member = store_.members().Find(conversation, account->id);
  if (member && member->level >= admitted.self.level) {
    return Refusal(biz::kTribeHigherLevel, L"the member's level is not below that of the account");
  }
  store_.members().SetBlack(conversation, account->id, request.on, store_.Now());
  return {};
}

Outcome<link::TribeBlack> MemberDesk::Answer(const Caller& caller,
                                             const link::GetTribeBlack& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kReadJoining);
  if (!admitted.ok()) return admitted.result;
  std::int64_t behind = 0;
  if (const auto read = ReadPlace(request.place, &behind); !read.ok()) return read;
  auto found = store_.members().BlackBehind(admitted.tribe.conversation, behind, kMembersInPart);
  Outcome<link::TribeBlack> outcome;
  if (found.size() == static_cast<std::size_t>(kMembersInPart)) {
    outcome.reply.next = std::to_string(found.back().account);
  }
  for (auto& black : found) outcome.reply.list.push_back(std::move(black.item));
  return outcome;
}

}  // namespace imsdk::embedded
