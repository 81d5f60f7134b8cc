// What an account can ask its server for about tribes. Refusals are `kEngineRefused` with a
// `biz::TribeRefusal` as sub-code; a server checks all rights itself.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/tribe_mgr.h"

namespace imsdk::link {

// The reply of what only succeeds or fails.
struct Nothing {};

// Lists come in parts: `next` is where the next one begins, empty behind the last one.

// The account's tribes, in the order of their numbers.
struct GetTribes {
  using Reply = struct Tribes;
  bool quitted = false;  // those that it was a member of once, the newest first
  std::string place{};

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("place", &GetTribes::place, biz::kMaxSecretLetters));
  }
};
struct Tribes {
  std::vector<biz::IMTribeInfo> tribes;
  std::string next{};
};

// One tribe that the account may see; a visit, when it is no member.
struct GetTribe {
  using Reply = biz::IMTribeInfo;
  biz::IMTribeID tribe;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// A part of the members, in the server's order. The first part of a session begins to watch who is
// online in the tribe, until the session ends or `watch` is false: then it only ends the watching.
struct GetTribeMembers {
  using Reply = struct TribeMembers;
  biz::IMTribeID tribe;
  std::string place{};
  bool watch = true;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("place", &GetTribeMembers::place, biz::kMaxSecretLetters));
  }
};
struct TribeMembers {
  std::vector<biz::IMTribeMember> members;
  std::int32_t total = 0;
  std::int32_t online = 0;
  std::string next{};
};

// As many users as are asked for at once.
inline constexpr std::size_t kMostTribeUsers = 1'000;

// Those of the users who are members, in their order.
struct FindTribeMembers {
  using Reply = biz::IMTribeMembers;
  biz::IMTribeID tribe;
  std::vector<biz::IMUserID> users;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Entries("users", &FindTribeMembers::users, kMostTribeUsers));
  }
};

// Changes one thing of the tribe. A name of a multi-chat may be changed by every member, everything
// else by managers.
struct ChangeTribe {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  biz::TribeModifyKey key = biz::kTribeKeyName;
  std::wstring value;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("str", &ChangeTribe::value, biz::kMaxTribeTextLetters));
  }
};

// The password to join by, for managers.
struct GetJoinPassword {
  using Reply = biz::IMTribeTextValue;
  biz::IMTribeID tribe;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// Visitors since they were cleared; with `clear` they are, and everybody hears of it.
struct CountVisitors {
  using Reply = biz::IMTribeNumberValue;
  biz::IMTribeID tribe;
  bool clear = false;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// Closes the tribe or enables it again. Owner only.
struct EnableTribe {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  bool enabled = true;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// A member's nickname in the tribe: one's own, or by a manager that of somebody below.
struct SetTribeNickname {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  biz::IMUserID user;
  std::wstring nickname;

  static constexpr auto Bounds() {
    return biz::Bounded(
        biz::Inner("userid", &SetTribeNickname::user),
        biz::Letters("nickname", &SetTribeNickname::nickname, biz::kMaxTribeNicknameLetters));
  }
};

// `kTribeOwner` hands the tribe over.
struct SetTribeLevel {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  biz::IMUserID user;
  biz::TribeMemberLevel level = biz::kTribeMember;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("userid", &SetTribeLevel::user));
  }
};

// Removes a member below the account, or the account itself, which quits so.
struct RemoveMember {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  biz::IMUserID user;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("userid", &RemoveMember::user)); }
};

// The account's own remind type. Its other devices hear of it.
struct SetRemindType {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  biz::TribeMsgRemindType type = biz::kRemindAll;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

struct SetAttention {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  biz::IMUserID user;
  bool on = true;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("userid", &SetAttention::user)); }
};
struct GetAttention {
  using Reply = biz::IMTribeMembers;
  biz::IMTribeID tribe;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

struct CreateTribe {
  using Reply = biz::IMTribeRequest;
  biz::IMNewTribe tribe;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &CreateTribe::tribe)); }
};
struct JoinTribe {
  using Reply = biz::IMJoinedTribe;
  biz::IMJoinTribe join;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &JoinTribe::join)); }
};
struct InviteToTribe {
  using Reply = Nothing;
  biz::IMTribeInvitation invitation;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("", &InviteToTribe::invitation));
  }
};

struct SetTribeBlack {
  using Reply = Nothing;
  biz::IMTribeID tribe;
  biz::IMUserID user;
  bool on = true;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("userid", &SetTribeBlack::user));
  }
};
struct GetTribeBlack {
  using Reply = struct TribeBlack;
  biz::IMTribeID tribe;
  std::string place{};

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("place", &GetTribeBlack::place, biz::kMaxSecretLetters));
  }
};
struct TribeBlack {
  std::vector<biz::IMTribeBlackItem> list;
  std::string next{};
};

struct GetVerifyMsgs {
  using Reply = biz::IMTribeVerifyMsgs;
  biz::IMTribeVerifyPage page;

  static constexpr auto Bounds() { return biz::Bounded(); }
};
enum class Decision { kAllow, kRefuse, kRefuseAndBlack };
// Decides on a request to join, or with `invitation` on one's own.
struct DecideVerify {
  using Reply = Nothing;
  biz::IMTribeVerifyAction action;
  bool invitation = false;
  Decision decision = Decision::kAllow;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &DecideVerify::action)); }
};
struct DeleteVerify {
  using Reply = Nothing;
  biz::IMTribeVerifyAction action;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &DeleteVerify::action)); }
};

// The operations of this file.
template <class... Operation>
struct OperationList {
  template <class Asked>
  static constexpr bool kHas = (std::is_same_v<Asked, Operation> || ...);
};
using TribeOperations =
    OperationList<GetTribes, GetTribe, GetTribeMembers, FindTribeMembers, ChangeTribe,
                  GetJoinPassword, CountVisitors, EnableTribe, SetTribeNickname, SetTribeLevel,
                  RemoveMember, SetRemindType, SetAttention, GetAttention, CreateTribe, JoinTribe,
                  InviteToTribe, SetTribeBlack, GetTribeBlack, GetVerifyMsgs, DecideVerify,
                  DeleteVerify>;
template <class Operation>
inline constexpr bool kOfTribes = TribeOperations::kHas<Operation>;

}  // namespace imsdk::link
