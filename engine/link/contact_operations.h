// What an account can ask its server for about users and contacts. Refusals are `kEngineRefused`
// with a `biz::IMContactRefusal` as sub-code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/contact.h"
#include "link/tribe_operations.h"

namespace imsdk::link {

// The account's list in parts, each with all groups. From its first connect on a session is told
// who of them comes and goes.
struct GetContacts {
  using Reply = struct Contacts;
  std::string place{};

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("place", &GetContacts::place, biz::kMaxSecretLetters));
  }
};
struct Contacts {
  std::vector<biz::IMContactGroup> groups;
  std::vector<biz::IMListedContact> contacts;
  std::string next{};  // where the next part begins; empty behind the last one
};

// As many users as are asked for at once.
inline constexpr std::size_t kMostUsers = 1'000;

// Those of the users whom there are, in their order.
struct FindUsers {
  using Reply = biz::IMContacts;
  std::vector<biz::IMUserID> users;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Entries("userids", &FindUsers::users, kMostUsers));
  }
};
struct SearchUsers {
  using Reply = biz::IMContacts;
  biz::IMUserSearch search;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &SearchUsers::search)); }
};
struct SetProfile {
  using Reply = Nothing;
  biz::IMProfile profile;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &SetProfile::profile)); }
};

struct AskContact {
  using Reply = Nothing;
  biz::IMContactRequest request;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &AskContact::request)); }
};
// `type` is what becomes of the request.
struct DecideContact {
  using Reply = Nothing;
  biz::IMContactAction action;
  biz::IMContactVerifyType type = biz::kContactAgreed;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &DecideContact::action)); }
};
struct GetContactVerify {
  using Reply = biz::IMContactVerifyMsgs;
  biz::IMContactVerifyPage page;

  static constexpr auto Bounds() { return biz::Bounded(); }
};
struct DeleteContactVerify {
  using Reply = Nothing;
  biz::IMContactActions actions;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("", &DeleteContactVerify::actions));
  }
};

struct RemoveContact {
  using Reply = Nothing;
  biz::IMUserID user;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("userid", &RemoveContact::user));
  }
};
struct MoveContact {
  using Reply = Nothing;
  biz::IMContactPlace place;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &MoveContact::place)); }
};
struct SetAsterisk {
  using Reply = Nothing;
  biz::IMContactSwitch mark;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &SetAsterisk::mark)); }
};
struct SetContactGroup {
  using Reply = biz::IMContactGroupRequest;
  biz::IMContactGroup group;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &SetContactGroup::group)); }
};

struct SetBlack {
  using Reply = Nothing;
  biz::IMContactSwitch black;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("", &SetBlack::black)); }
};
struct GetBlack {
  using Reply = biz::IMContacts;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

// The operations of this file.
using ContactOperations =
    OperationList<GetContacts, FindUsers, SearchUsers, SetProfile, AskContact, DecideContact,
                  GetContactVerify, DeleteContactVerify, RemoveContact, MoveContact, SetAsterisk,
                  SetContactGroup, SetBlack, GetBlack>;
template <class Operation>
inline constexpr bool kOfContacts = ContactOperations::kHas<Operation>;

}  // namespace imsdk::link
