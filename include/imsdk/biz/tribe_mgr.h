// The tribes of one account, but for their messages.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/callback.h"
#include "imsdk/biz/tribe.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/event.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// A tribe of the account and the member whom it is about, and so on: what operations are asked for.
struct IMTribeRequest {
  IMTribeID tribeid;
};
struct IMTribeMemberSearch {
  IMTribeID tribeid;
  std::wstring key;

  static constexpr auto Bounds() {
    return Bounded(Letters("key", &IMTribeMemberSearch::key, kMaxTribeLetters));
  }
};
struct IMTribeNumber {
  IMTribeID tribeid;
  std::int32_t num = 0;
};
struct IMTribeText {
  IMTribeID tribeid;
  std::wstring str;

  static constexpr auto Bounds() {
    return Bounded(Letters("str", &IMTribeText::str, kMaxTribeTextLetters));
  }
};
struct IMTribeUser {
  IMTribeID tribeid;
  IMUserID userid;

  static constexpr auto Bounds() { return Bounded(Inner("userid", &IMTribeUser::userid)); }
};
struct IMTribeMemberLevel {
  std::int32_t level = 0;  // a `TribeMemberLevel`
  IMTribeID tribeid;
  IMUserID userid;

  static constexpr auto Bounds() { return Bounded(Inner("userid", &IMTribeMemberLevel::userid)); }
};
struct IMTribeNickname {
  IMTribeID tribeid;
  IMUserID userid;
  std::wstring nickname;

  static constexpr auto Bounds() {
    return Bounded(Inner("userid", &IMTribeNickname::userid),
                   Letters("nickname", &IMTribeNickname::nickname, kMaxTribeNicknameLetters));
  }
};
struct IMMultiChatName {
  IMTribeID tribeid;
  std::wstring name;

  static constexpr auto Bounds() {
    return Bounded(Letters("name", &IMMultiChatName::name, kMaxTribeLetters));
  }
};
struct IMTribeList {
  std::vector<IMTribeRequest> tribelist;

  static constexpr auto Bounds() {
    return Bounded(Entries("tribelist", &IMTribeList::tribelist, kNoBound));
  }
};
struct IMTribeMembersRequest {
  IMTribeID tribeid;
  std::vector<IMUserID> memberlist;

  static constexpr auto Bounds() {
    return Bounded(Entries("memberlist", &IMTribeMembersRequest::memberlist, kNoBound));
  }
};
struct IMTribeNickRequest {
  IMTribeID tribeid;
  std::vector<IMUserID> listuid;

  static constexpr auto Bounds() {
    return Bounded(Entries("listuid", &IMTribeNickRequest::listuid, kNoBound));
  }
};
// `fromid` and `msgid` are those of the verification message, `authinfo` the words that go back.
struct IMTribeVerifyAction {
  IMUserID fromid;
  IMTribeID tribeid;
  std::wstring authinfo;
  std::int64_t msgid = 0;

  static constexpr auto Bounds() {
    return Bounded(Inner("fromid", &IMTribeVerifyAction::fromid),
                   Letters("authinfo", &IMTribeVerifyAction::authinfo, kMaxTribeWordsLetters));
  }
};
// Verification messages between `btime` and `etime` (0: to the end). Without `msgid` from the
// newest end; with it from that message, which is not part of it, to older ones when `gohistory` is
// not 0, else to newer ones. At most `count`, 20 when that is 0 or less; never more than 200 unless
// `ignoreboundary` is not 0, then 1,000.
struct IMTribeVerifyPage {
  std::int64_t btime = 0;
  std::int64_t etime = 0;
  std::int64_t msgid = 0;
  std::int32_t count = 0;
  std::int32_t gohistory = 0;
  std::int32_t ignoreboundary = 0;
};

// What they are answered with. Single values stand under the key that the method which sets them
// takes.
struct IMTribeNumberValue {
  std::int32_t num = 0;
};
struct IMTribeTextValue {
  std::wstring str;
};
struct IMTribeNicknameValue {
  std::wstring nickname;
};
struct IMTribes {
  std::vector<IMTribeInfo> tribes;
};
struct IMTribeMembers {
  std::vector<IMTribeMember> memberlist;
};
struct IMTribeRoster {
  std::int32_t total = 0;
  std::int32_t online = 0;
  std::vector<IMTribeMember> memberlist;
};
struct IMTribeDisplayNick {
  IMUserID userid;
  std::wstring display;
};
struct IMTribeDisplayNicks {
  std::vector<IMTribeDisplayNick> nicklist;
  std::vector<IMUserID> left;  // those who are no members
};
struct IMTribeBlackList {
  std::vector<IMTribeBlackItem> list;
};
struct IMTribeVerifyMsgs {
  std::vector<IMTribeVerifyMsg> msgs;  // oldest first
};
struct IMEnableTribeNum {
  std::int32_t total = 0;
  std::int32_t enable = 0;
};

// A class that tribes can have.
struct IMTribeClass {
  std::int32_t index = 0;
  std::wstring name;
};
struct IMTribeClasses {
  std::vector<IMTribeClass> classlist;
};

// What the protocol of pages has no method for; a client offers it in a way of its own.
struct IMNewTribe {
  std::wstring name;
  IMTribeType type = kNormalTribe;
  std::int32_t classtype = 0;
  std::wstring description;
  TribeAuthType authtype = kJoinOpen;
  std::wstring password;          // for `kJoinByPassword`
  std::vector<IMUserID> members;  // besides the account, which owns it

  static constexpr auto Bounds() {
    return Bounded(Letters("name", &IMNewTribe::name, kMaxTribeLetters),
                   Letters("description", &IMNewTribe::description, kMaxTribeDescriptionLetters),
                   Letters("password", &IMNewTribe::password, kMaxTribePasswordLetters),
                   Entries("members", &IMNewTribe::members, kMaxInvited));
  }
};
struct IMJoinTribe {
  IMTribeID tribeid;
  std::wstring password;
  std::wstring authinfo;  // words for who decides

  static constexpr auto Bounds() {
    return Bounded(Letters("password", &IMJoinTribe::password, kMaxTribePasswordLetters),
                   Letters("authinfo", &IMJoinTribe::authinfo, kMaxTribeWordsLetters));
  }
};
struct IMJoinedTribe {
  bool waiting = false;  // the account is no member yet: a manager has to allow it
};
struct IMTribeInvitation {
  IMTribeID tribeid;
  std::vector<IMUserID> users;
  std::wstring authinfo;

  static constexpr auto Bounds() {
    return Bounded(Entries("users", &IMTribeInvitation::users, kMaxInvited),
                   Letters("authinfo", &IMTribeInvitation::authinfo, kMaxTribeWordsLetters));
  }
};
struct IMTribeSetting {
  IMTribeID tribeid;
  TribeModifyKey key = kTribeKeyName;
  std::wstring value;

  static constexpr auto Bounds() {
    return Bounded(Letters("value", &IMTribeSetting::value, kMaxTribeTextLetters));
  }
};
struct IMTribeAttention {
  IMTribeID tribeid;
  IMUserID userid;
  bool on = true;

  static constexpr auto Bounds() { return Bounded(Inner("userid", &IMTribeAttention::userid)); }
};

using TribeModifyMap = std::map<TribeModifyKey, std::wstring>;
using TribeUserModifyMap = std::map<TribeUserModifyKey, std::wstring>;

// What happens in the account's tribes, in the order in which it happened there, also between
// tribes' messages and this. Raised on engine threads while the account is connected: what happened
// before it came is in what it reads then. When an event is raised, the account's operations
// already answer with what it tells.
//
// An actor is who did it, a recipient whom it was done to; who does something alone is both.
struct IMTribeEvents {
  using Actor = void(const IMTribeID&, const IMUserID& actor, const IMUserID& recipient);

  base::event<Actor> on_clear_visitor;  // the recipient is empty
  base::event<Actor> on_close;          // the recipient is empty
  base::event<void(const IMTribeID&)> on_enabled;
  base::event<void(const IMTribeID&, const IMUserID& actor, const IMTribeMember&)> on_join;
  base::event<Actor> on_kick_member;
  base::event<Actor> on_quit;
  base::event<Actor> on_transfer;
  base::event<void(const IMTribeID&, const IMUserID& actor, const IMUserID& recipient,
                   TribeMemberLevel)>
      on_member_chg_level;
  base::event<void(const IMTribeID&, const std::wstring& path)> on_ntf_image;
  base::event<void(const IMTribeID&, const TribeModifyMap&)> on_base_info_change;
  base::event<void(const IMTribeID&)> on_bulletin_update;
  base::event<void(const IMTribeID&, const IMUserID&, const TribeUserModifyMap&)>
      on_member_base_info_change;
  // Of tribes with a deep login only, gathered: at most once in a second for a tribe, the statuses
  // of at most 200 members at a time. A page that shows more reads the list anew when the counts
  // change.
  base::event<void(const IMTribeID&, const IMUserID&, TribeMemberBasicStatus)> on_member_status;
  base::event<void(const IMTribeID&, std::uint32_t online, std::uint32_t total)> on_member_count;
  base::event<void()> on_shallow_login;
};

// Counted, any thread.
//
// Two depths of login. The shallow one makes the account's own tribes known; until then operations
// that need them fail with `kEngineRefused`. It lasts as long as the account's login, and is kept
// up over a lost link. The deep one of a tribe makes its members known to this account; it lasts
// until the account leaves the tribe or has so many others open that the oldest gives way.
//
// The account's rights are the server's to check. A refusal is `kEngineRefused` with a
// `TribeRefusal` as sub-code and a text. Texts have bounds (`kEngineTooLarge`) and some may not be
// empty (`kEngineEmpty`).
class IIMTribeMgr : public IKexCOMRefCounted {
 public:
  // Lives as long as the manager.
  virtual IMTribeEvents& Events() = 0;

  // Login. Again is good again.
  virtual bool IsShallowLogin() = 0;
  virtual void ShallowLogin(const IMNothing& request, IMCallback<> done) = 0;
  virtual void DeepLogin(const IMTribeRequest& request, IMCallback<> done) = 0;

  // Tribes. `GetTribe` is also answered for a tribe that the account is no member of but may see;
  // the visit counts, where the tribe takes visitors.
  virtual void GetTribe(const IMTribeRequest& request, IMCallback<IMTribeInfo> done) = 0;
  virtual void GetTribes(const IMNothing& request, IMCallback<IMTribes> done) = 0;
  // Those named that are the account's, in their order.
  virtual void GetListedTribes(const IMTribeList& request, IMCallback<IMTribes> done) = 0;
  // Tribes that the account was a member of and is not any more, the newest first.
  virtual void GetQuittedTribe(const IMNothing& request, IMCallback<IMTribes> done) = 0;
  virtual void GetEnableTribeNum(const IMNothing& request, IMCallback<IMEnableTribeNum> done) = 0;
  virtual void GetTribeBulletin(const IMTribeRequest& request,
                                IMCallback<IMTribeTextValue> done) = 0;
  // Visitors since they were last cleared. Managers only, both.
  virtual void GetVisitorCount(const IMTribeRequest& request,
                               IMCallback<IMTribeNumberValue> done) = 0;
  virtual void ClearVisitors(const IMTribeRequest& request, IMCallback<> done) = 0;
  // Owner only. A closed tribe can be read; nothing is sent, nobody joins, nothing is changed.
  virtual void CloseTribe(const IMTribeRequest& request, IMCallback<> done) = 0;

  // Members. The roster needs a deep login of the tribe (`kEngineRefused` without one) and is in
  // the order of levels, the highest first, then of display names.
  virtual void GetTribeMemberList(const IMTribeRequest& request,
                                  IMCallback<IMTribeRoster> done) = 0;
  // Those who are members, in the order of the request.
  virtual void GetTribeMemberbyID(const IMTribeMembersRequest& request,
                                  IMCallback<IMTribeMembers> done) = 0;
  // The members whom the account pays attention to.
  virtual void GetAttentionMembers(const IMTribeRequest& request,
                                   IMCallback<IMTribeMembers> done) = 0;
  virtual void GetMultiChatMembers(const IMTribeRequest& request,
                                   IMCallback<IMTribeMembers> done) = 0;
  // Members whose display name, own name or nick has the key in it, whatever the case; whose name
  // begins with it first. At most 200. Logs in deeply when needed.
  virtual void SearchTribeMember(const IMTribeMemberSearch& request,
                                 IMCallback<IMTribeMembers> done) = 0;
  // The page has chosen one of the members that the last search of this tribe found: they come
  // first in later searches. `kEngineNotFound` when nothing was searched for.
  virtual void SelectTribeSearchResult(const IMTribeRequest& request, IMCallback<> done) = 0;
  virtual void GetListDNick(const IMTribeNickRequest& request,
                            IMCallback<IMTribeDisplayNicks> done) = 0;
  virtual void KickTribeMember(const IMTribeUser& request, IMCallback<> done) = 0;
  // Owner only, between `kTribeMember` and `kTribeManager`.
  virtual void ChangeLevel(const IMTribeMemberLevel& request, IMCallback<> done) = 0;
  virtual void GetMyTribeNickname(const IMTribeRequest& request,
                                  IMCallback<IMTribeNicknameValue> done) = 0;
  // `userid` is empty or the account itself.
  virtual void SetMyTribeNickname(const IMTribeNickname& request, IMCallback<> done) = 0;
  virtual void SetTribeMemberNicknameByAdmin(const IMTribeNickname& request, IMCallback<> done) = 0;
  virtual void ChangeMultiName(const IMMultiChatName& request, IMCallback<> done) = 0;

  // Settings. Those of the tribe are for managers to change and for members to read; the join
  // password is for managers only; the remind type is the account's own.
  virtual void GetAllClass(const IMNothing& request, IMCallback<IMTribeClasses> done) = 0;
  // `kEngineRefused` with the text "error class" for a number that is no class.
  virtual void SetClass(const IMTribeNumber& request, IMCallback<> done) = 0;
  virtual void SetTribeName(const IMTribeText& request, IMCallback<> done) = 0;
  virtual void SetTribeDes(const IMTribeText& request, IMCallback<> done) = 0;
  // `kEngineRefused` with the text "Error Type" for a number that is no `TribeMsgRemindType`. What
  // it is now the server is asked: another device may have set it.
  virtual void SetMsgRemindType(const IMTribeNumber& request, IMCallback<> done) = 0;
  virtual void GetMsgRemindType(const IMTribeRequest& request,
                                IMCallback<IMTribeNumberValue> done) = 0;
  // Changing to `kJoinByPassword` needs a password that was set before or is set next: until then
  // nobody joins.
  virtual void SetAuthType(const IMTribeNumber& request, IMCallback<> done) = 0;
  virtual void GetAuthType(const IMTribeRequest& request, IMCallback<IMTribeNumberValue> done) = 0;
  virtual void SetJoinPwd(const IMTribeText& request, IMCallback<> done) = 0;
  virtual void GetJoinPwd(const IMTribeRequest& request, IMCallback<IMTribeTextValue> done) = 0;
  virtual void SetAllowShowChatRecordBeforeJoin(const IMTribeNumber& request,
                                                IMCallback<> done) = 0;
  virtual void IsAllowShowChatRecordBeforeJoin(const IMTribeRequest& request,
                                               IMCallback<IMTribeNumberValue> done) = 0;
  virtual void SetAllowVisitor(const IMTribeNumber& request, IMCallback<> done) = 0;
  virtual void IsAllowVisitor(const IMTribeRequest& request,
                              IMCallback<IMTribeNumberValue> done) = 0;
  virtual void SetAtAllPermission(const IMTribeNumber& request, IMCallback<> done) = 0;
  virtual void GetAtAllPermission(const IMTribeRequest& request,
                                  IMCallback<IMTribeNumberValue> done) = 0;

  // The black list, for managers. A member who is put on it stays a member.
  virtual void AddTribeBlack(const IMTribeUser& request, IMCallback<> done) = 0;
  virtual void DelTribeBlack(const IMTribeUser& request, IMCallback<> done) = 0;
  virtual void GetTribeBlackList(const IMTribeRequest& request,
                                 IMCallback<IMTribeBlackList> done) = 0;

  // Verification: requests to join, for managers, and invitations. The first decision counts. New
  // ones are announced by a system message of the virtual user "tribe".
  virtual void GetTribeVerifyMsgs(const IMTribeVerifyPage& request,
                                  IMCallback<IMTribeVerifyMsgs> done) = 0;
  virtual void AllowJoinTribe(const IMTribeVerifyAction& request, IMCallback<> done) = 0;
  virtual void RefuseJoinTribe(const IMTribeVerifyAction& request, IMCallback<> done) = 0;
  virtual void AddToTribeBlack(const IMTribeVerifyAction& request, IMCallback<> done) = 0;
  virtual void AllowInviteJoinTribe(const IMTribeVerifyAction& request, IMCallback<> done) = 0;
  virtual void RefuseInviteJoinTribe(const IMTribeVerifyAction& request, IMCallback<> done) = 0;
  // For this account only. An open request stays open for other managers.
  virtual void DeleteTribeVerifyMsgs(const IMTribeVerifyAction& request, IMCallback<> done) = 0;

  // Without a method of the page protocol.
  virtual void CreateTribe(const IMNewTribe& request, IMCallback<IMTribeRequest> done) = 0;
  virtual void JoinTribe(const IMJoinTribe& request, IMCallback<IMJoinedTribe> done) = 0;
  // Of a multi-chat the invited are members at once; a tribe asks them first.
  virtual void InviteToTribe(const IMTribeInvitation& request, IMCallback<> done) = 0;
  virtual void QuitTribe(const IMTribeRequest& request, IMCallback<> done) = 0;
  // Owner only; the owner becomes an administrator.
  virtual void TransferTribe(const IMTribeUser& request, IMCallback<> done) = 0;
  virtual void EnableTribe(const IMTribeRequest& request, IMCallback<> done) = 0;
  // Changes what of a tribe has no operation of its own: bulletin, portrait, the images.
  virtual void SetTribe(const IMTribeSetting& request, IMCallback<> done) = 0;
  virtual void SetAttention(const IMTribeAttention& request, IMCallback<> done) = 0;

 protected:
  ~IIMTribeMgr() = default;
};

}  // namespace imsdk::biz
