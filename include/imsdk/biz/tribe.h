// Tribes (groups) and their members, as an account sees them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "imsdk/biz/user_id.h"

namespace imsdk::biz {

// The numbers of all enumerations here are in stores and on pages. Times are milliseconds since the
// Unix epoch, UTC.

enum IMTribeType : std::int32_t {
  kNormalTribe = 0,
  kMultiChat = 1,  // made ad hoc: every member may rename it and invite, nobody is asked
};

// What a member is; more is more.
enum TribeMemberLevel : std::int32_t {
  kTribeNobody = 0,  // no member
  kTribeMember = 1,
  kTribeManager = 2,  // an administrator
  kTribeOwner = 3,    // exactly one in each tribe
};

enum TribeMemberBasicStatus : std::int32_t {
  kMemberOffline = 0,
  kMemberOnline = 1,
};

// Which messages of a tribe an account wants to be told of.
enum TribeMsgRemindType : std::int32_t {
  kRemindAll = 0,        // they count as unread and are shown
  kRemindCountOnly = 1,  // they count as unread and are not shown
  kRemindNothing = 2,    // they do not even count
};

// Who may join a tribe.
enum TribeAuthType : std::int32_t {
  kJoinOpen = 0,
  kJoinByPassword = 1,
  kJoinByApproval = 2,  // a manager decides
  kJoinClosed = 3,      // only who is invited
};

// Who may mention all members at once.
enum TribeAtAllPermission : std::int32_t {
  kAtAllManagers = 0,  // the owner and the administrators
  kAtAllEverybody = 1,
};

// What of a tribe can change. Values travel as texts, numbers in decimal form.
enum TribeModifyKey : std::int32_t {
  kTribeKeyName = 1,
  kTribeKeyDescription = 2,
  kTribeKeyPortrait = 3,
  kTribeKeyClass = 4,
  kTribeKeyBulletin = 5,
  kTribeKeyAuthType = 6,
  kTribeKeyJoinPassword = 7,  // told of without its value
  kTribeKeyOpenHistory = 8,   // 1: members see what was written before they joined
  kTribeKeyVisitors = 9,      // 1: who is no member may look at it
  kTribeKeyAtAll = 10,        // a `TribeAtAllPermission`
  kTribeKeyLevel = 11,
  kTribeKeyNtfImage = 12,
  kTribeKeyBusinessImage = 13,
};

// What of a member can change, in the eyes of the tribe.
enum TribeUserModifyKey : std::int32_t {
  kTribeUserKeyNickname = 1,  // in this tribe; empty for none
  kTribeUserKeyName = 2,      // the user's own
  kTribeUserKeyPortrait = 3,
  kTribeUserKeyDisplay = 4,  // the name to show now; comes with each of the names
};

// What a refusal of the server (`kEngineRefused`) means, as its sub-code.
enum TribeRefusal : std::int32_t {
  kTribeUnknown = 1,          // no such tribe, or one that the account cannot see
  kTribeNotAMember = 2,       // the account is no member
  kTribeOwnerOnly = 3,        // only the owner may
  kTribeManagersOnly = 4,     // only the owner and administrators may
  kTribeHigherLevel = 5,      // the other one's level is not below the account's
  kTribeUserNotAMember = 6,   // the user named is no member
  kTribeIsClosed = 7,         // nothing can be done in it until it is enabled
  kTribeJoinClosed = 8,       // nobody joins without an invitation
  kTribeWrongPassword = 9,    // to join
  kTribeBlackListed = 10,     // the account, or the user named, is on the black list
  kTribeAlreadyMember = 11,   // of those who join or are invited
  kTribeAlreadyDecided = 12,  // somebody else has decided on the request
  kTribeNoSuchRequest = 13,   // there is no such verification message for this account
  kTribeOwnerStays = 14,      // the owner hands the tribe over before leaving it
  kTribeNotAMultiChat = 15,   // or one, where a normal tribe is needed
  kTribeYourself = 16,        // the operation is for others
  kTribeAlreadySo = 17,       // closed already, enabled already
  kTribeTooManyTries = 18,    // of passwords, for now
  kTribeAtAllRefused = 19,    // the account may not mention all members
};

// A member. `name` is the user's own name, `display` what to show in this tribe: the nickname
// there, else the name, else the nick.
struct IMTribeMember {
  IMUserID userid;
  TribeMemberBasicStatus status = kMemberOffline;
  std::wstring display;
  std::wstring name;
  std::wstring portrait;
  std::int32_t activelevel = 0;  // 0 to 5, by how many messages the member wrote lately
  TribeMemberLevel level = kTribeMember;
};

// A tribe as one account sees it. Who is no member sees the part above `mine` only, and no
// bulletin.
struct IMTribeInfo {
  IMTribeID tribeid;
  IMTribeType type = kNormalTribe;
  std::wstring name;
  IMUserID owner;
  std::wstring description;
  std::wstring portrait;  // a picture's path as tokens in messages write it; empty for none
  std::wstring bulletin;
  std::wstring ntfimage;       // the picture beside its notices
  std::wstring businessimage;  // the mark of a business, shown beside the name
  std::int32_t classtype = 0;  // an index of `IMTribeClasses`
  std::int32_t level = 1;      // of the tribe: grows with its members, 1 to 5
  TribeAuthType authtype = kJoinOpen;
  TribeAtAllPermission atall = kAtAllManagers;
  bool open_history = false;
  bool visitors = false;
  bool enabled = true;  // false while it is closed
  std::int32_t members = 0;

  struct Mine {
    TribeMemberLevel level = kTribeNobody;
    std::wstring nickname;
    TribeMsgRemindType remind = kRemindAll;
    std::int32_t unread = 0;
  };
  Mine mine;
};

// What kind of verification message it is. The first of each pair waits for a decision.
enum TribeVerifyType : std::int32_t {
  kVerifyJoinAsked = 1,       // for owner and administrators: `fromid` wants to join
  kVerifyInvited = 2,         // for the one invited: `fromid` invites
  kVerifyJoinAllowed = 3,     // also for the one who asked
  kVerifyJoinRefused = 4,     // also for the one who asked
  kVerifyInviteAccepted = 5,  // also for the one who invited
  kVerifyInviteRefused = 6,   // also for the one who invited
};

// A request to join, an invitation, or what became of one.
struct IMTribeVerifyMsg {
  IMUserID fromid;
  std::wstring fromname;
  IMTribeID tribeid;
  std::wstring tribename;
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;
  std::wstring
      authinfo;  // the words of who asked; once it is decided, of who decided if there are any
  IMUserID managerid;  // who decided; empty while it is open
  TribeVerifyType type = kVerifyJoinAsked;
};

// A user who may not join or be invited.
struct IMTribeBlackItem {
  IMUserID userid;
  std::wstring nick;  // the name to show
  std::wstring portrait;
  std::int64_t addtime = 0;
};

}  // namespace imsdk::biz
