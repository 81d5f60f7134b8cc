// Contacts: the people whom an account keeps a list of, and the requests by which they come there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/callback.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/event.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// The numbers of all enumerations here are in stores and on pages. Times are milliseconds since the
// Unix epoch, UTC.

// What the account may see of a user. Who has put the account on the black list is offline to it.
enum IMContactStatus : std::int32_t {
  kContactOffline = 0,
  kContactOnline = 1,
};

// What kind of verification message it is: a request, which waits for a decision as long as it was
// only put aside, and what the account decided; or the answer to a request of the account's own.
enum IMContactVerifyType : std::int32_t {
  kContactAsked = 1,  // `fromid` wants to have the account as a contact
  kContactAgreed = 2,
  kContactAgreedAndAdded = 3,  // it went both ways
  kContactRefused = 4,
  kContactBlacked = 5,   // refused; whoever asked may not ask or write any more
  kContactIgnored = 6,   // put aside; whoever asked hears nothing
  kContactReported = 7,  // put aside, and kept for the server's administration

  kContactAnsweredYes = 8,       // `fromid` is a contact now
  kContactAnsweredAndAdded = 9,  // the same, in both directions
  kContactAnsweredNo = 10,
};

// What a refusal of the server (`kEngineRefused`) means, as its sub-code.
enum IMContactRefusal : std::int32_t {
  kContactBlackListed = 101,     // the other one has put the account on the black list
  kContactYourself = 102,        // the operation is for others
  kContactAlready = 103,         // the user is a contact already
  kContactNoSuchRequest = 104,   // there is no such verification message for this account
  kContactAlreadyDecided = 105,  // by another device, or before
  kContactNoSuchGroup = 106,     // or one that cannot be changed in this way
  kContactTooMany = 107,         // contacts, groups, or requests that wait for a decision
  kContactNoContact = 108,       // the user is none of the account's contacts
};

// The group that every list has, and whose members are in no other one.
inline constexpr std::int64_t kRootGroup = 0;

// A user as the account sees him. `display` is the name that he has given himself, else his nick.
struct IMContact {
  IMUserID userid{};
  IMContactStatus status = kContactOffline;
  std::wstring display{};
  std::wstring portrait{};     // a picture's path as tokens in messages write it; empty for none
  std::int32_t unreadnum = 0;  // of his messages to the account
};

// A contact in its place.
struct IMListedContact {
  IMContact contact{};
  std::int64_t gid = kRootGroup;
  bool asterisk = false;  // marked by the account as one of those who matter most
};

// A group of the list, or with a parent a sub-group of one.
struct IMContactGroup {
  std::int64_t gid = kRootGroup;
  std::int64_t parent = kRootGroup;
  std::wstring name{};

  static constexpr auto Bounds() {
    return Bounded(Letters("name", &IMContactGroup::name, kMaxTribeNicknameLetters));
  }
};

// A request to become a contact, or what became of one. Of one that came, `fromid` is who asks; of
// one that the account sent, who decided.
struct IMContactVerifyMsg {
  IMContact fromid{};
  std::wstring fromname{};
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;
  std::wstring authinfo{};  // the words of `fromid`
  // Where whoever asked puts the new contact.
  std::int64_t gidinpeergroup = kRootGroup;
  IMContactVerifyType type = kContactAsked;
};

// What operations are asked for.
struct IMUsers {
  std::vector<IMUserID> userids{};

  static constexpr auto Bounds() {
    return Bounded(Entries("userids", &IMUsers::userids, kNoBound));
  }
};
struct IMContactGroupRequest {
  std::int64_t groupid = kRootGroup;

  static constexpr auto Bounds() { return Bounded(); }
};
// Names a verification message by its identifier, or without one the newest of `fromid` that waits
// for a decision. `authinfo` are the words that go back.
struct IMContactAction {
  IMUserID fromid{};
  std::int64_t gidinpeergroup = kRootGroup;
  std::wstring authinfo{};
  std::int64_t msgid = 0;

  static constexpr auto Bounds() {
    return Bounded(Inner("fromid", &IMContactAction::fromid),
                   Letters("authinfo", &IMContactAction::authinfo, kMaxTribeWordsLetters));
  }
};
struct IMContactActions {
  std::vector<IMContactAction> list{};

  static constexpr auto Bounds() {
    return Bounded(Entries("list", &IMContactActions::list, kMaxInvited));
  }
};
// Verification messages between `btime` and `etime` (0: to the end). Without `msgid` from the
// newest end; with it from that message to older ones when `gohistory` is not 0, else to newer
// ones; the message itself is left out when `ignoreboundary` is not 0. At most `count`: 20 when
// that is 0 or less, 200 when it is more.
struct IMContactVerifyPage {
  std::int64_t btime = 0;
  std::int64_t etime = 0;
  std::int64_t msgid = 0;
  std::int32_t count = 0;
  std::int32_t gohistory = 0;
  std::int32_t ignoreboundary = 0;

  static constexpr auto Bounds() { return Bounded(); }
};
// A user by one text: site prefix and nick in one.
struct IMLongUserID {
  std::int32_t site = 0;  // 0: unknown
  std::wstring identifier{};

  static constexpr auto Bounds() {
    return Bounded(Letters("uid", &IMLongUserID::identifier, 2 * kMaxNameLetters));
  }
};
struct IMLongUserIDs {
  std::vector<IMLongUserID> users{};

  static constexpr auto Bounds() {
    return Bounded(Entries("users", &IMLongUserIDs::users, kNoBound));
  }
};

// What the protocol of pages has no method for; a client offers it in a way of its own.
struct IMContactRequest {
  IMUserID userid{};
  std::int64_t gid = kRootGroup;  // where the contact is put
  std::wstring authinfo{};        // words for who decides

  static constexpr auto Bounds() {
    return Bounded(Inner("userid", &IMContactRequest::userid),
                   Letters("authinfo", &IMContactRequest::authinfo, kMaxTribeWordsLetters));
  }
};
struct IMContactUser {
  IMUserID userid{};

  static constexpr auto Bounds() { return Bounded(Inner("userid", &IMContactUser::userid)); }
};
struct IMContactPlace {
  IMUserID userid{};
  std::int64_t gid = kRootGroup;

  static constexpr auto Bounds() { return Bounded(Inner("userid", &IMContactPlace::userid)); }
};
struct IMContactSwitch {
  IMUserID userid{};
  bool on = true;

  static constexpr auto Bounds() { return Bounded(Inner("userid", &IMContactSwitch::userid)); }
};
// `gid` 0 makes a group, in `parent`; another one is renamed. A group with an empty name is
// removed, with its sub-groups; their contacts go to the root group.
struct IMContactGroupChange {
  IMContactGroup group{};

  static constexpr auto Bounds() { return Bounded(Inner("", &IMContactGroupChange::group)); }
};
struct IMProfile {
  std::wstring display{};  // empty: the nick is shown
  std::wstring portrait{};

  static constexpr auto Bounds() {
    return Bounded(Letters("display", &IMProfile::display, kMaxTribeNicknameLetters),
                   Letters("portrait", &IMProfile::portrait, kMaxTribePictureLetters));
  }
};
struct IMUserSearch {
  std::wstring key{};

  static constexpr auto Bounds() {
    return Bounded(Letters("key", &IMUserSearch::key, kMaxTribeLetters));
  }
};

// What they are answered with.
struct IMContacts {
  std::vector<IMContact> contacts{};
};
struct IMContactList {
  std::vector<IMContactGroup> groups{};  // without the root group, by their numbers
  std::vector<IMListedContact> contacts{};
};
struct IMContactGroupInfo {
  std::wstring name{};
  std::vector<IMContactGroup> subgroups{};
  std::vector<IMUserID> uids{};  // members, without those of sub-groups
};
struct IMContactVerifyMsgs {
  std::vector<IMContactVerifyMsg> msgs{};  // oldest first
};
struct IMDisplayName {
  IMUserID userid{};
  std::wstring display{};
};
struct IMDisplayNames {
  std::vector<IMDisplayName> names{};
};
struct IMUserNick {
  std::wstring identifier{};  // as it was asked for
  std::wstring nick{};
};
struct IMUserNicks {
  std::vector<IMUserNick> nicks{};  // of those whom there are
};

// What happens to the account's contacts. Raised on engine threads while the account is connected.
// When an event is raised, the account's operations already answer with what it tells.
struct IMContactEvents {
  // A contact is there now, or another one than before: name, portrait, group, mark.
  base::event<void(const IMListedContact&)> on_contact_changed;
  base::event<void(const IMUserID&)> on_contact_removed;
  base::event<void()> on_groups_changed;
  // Gathered: at most once in a second.
  base::event<void(const std::vector<IMContact>&)> on_contact_status;
  // A request came, or was decided on here, by another device or by the other side.
  base::event<void(const IMContactVerifyMsg&)> on_contact_verify_msg;
};

// The contacts of one account. Counted, any thread.
//
// Rights are the server's to check. A refusal is `kEngineRefused` with an `IMContactRefusal` as
// sub-code and a text; a user whom there is not is `kEngineUnknownUser`. Texts have bounds
// (`kEngineTooLarge`).
class IIMContactMgr : public IKexCOMRefCounted {
 public:
  // Lives as long as the manager.
  virtual IMContactEvents& Events() = 0;

  // Users, contacts or not, each once; whom there is not is left out.
  virtual void GetContactBaseInfo(const IMUsers& request, IMCallback<IMContacts> done) = 0;
  virtual void GetContactDisplayName(const IMUsers& request, IMCallback<IMDisplayNames> done) = 0;
  virtual void GetUserDisplayNick(const IMLongUserIDs& request, IMCallback<IMUserNicks> done) = 0;
  // The marked contacts as they are known now; empty before the first connect is over. Cheap.
  virtual std::vector<IMContact> GetAsteriskUsers() = 0;
  // `kContactNoSuchGroup` for a group that is not there.
  virtual void GetGroupInfo(const IMContactGroupRequest& request,
                            IMCallback<IMContactGroupInfo> done) = 0;

  // Decisions on requests. The first of agreeing, refusing and putting on the black list counts;
  // what was ignored or reported may still be decided on. Whoever is on the black list can neither
  // write to the account nor ask it, and sees it offline; the black list takes users without a
  // request, too.
  virtual void AgreeAddContact(const IMContactAction& request, IMCallback<> done) = 0;
  virtual void AgreeAndAddContact(const IMContactAction& request, IMCallback<> done) = 0;
  virtual void RefuseAddContact(const IMContactAction& request, IMCallback<> done) = 0;
  virtual void AddToBlack(const IMContactAction& request, IMCallback<> done) = 0;
  virtual void ReportAddContact(const IMContactAction& request, IMCallback<> done) = 0;
  virtual void IgnoreAddContact(const IMContactAction& request, IMCallback<> done) = 0;
  // For this account only; a request that is not decided on stays undecided for who asked. Those
  // that are not there are passed over.
  virtual void DeleteContactVerifyMsgs(const IMContactActions& request, IMCallback<> done) = 0;
  virtual void GetContactVerifyMsgs(const IMContactVerifyPage& request,
                                    IMCallback<IMContactVerifyMsgs> done) = 0;

  // Without a method of the page protocol.
  virtual void GetContactList(const IMNothing& request, IMCallback<IMContactList> done) = 0;
  // Asks again with other words while the first request waits for a decision.
  virtual void AskContact(const IMContactRequest& request, IMCallback<> done) = 0;
  // Takes the user off the account's list only.
  virtual void RemoveContact(const IMContactUser& request, IMCallback<> done) = 0;
  virtual void MoveContact(const IMContactPlace& request, IMCallback<> done) = 0;
  virtual void SetAsterisk(const IMContactSwitch& request, IMCallback<> done) = 0;
  // Answers with the group's number.
  virtual void SetGroup(const IMContactGroupChange& request,
                        IMCallback<IMContactGroupRequest> done) = 0;
  // The account's own name and portrait, for all who see it.
  virtual void SetProfile(const IMProfile& request, IMCallback<> done) = 0;
  // Users with the key in nick or name, whatever the case; at most 50.
  virtual void SearchUsers(const IMUserSearch& request, IMCallback<IMContacts> done) = 0;
  virtual void GetBlackList(const IMNothing& request, IMCallback<IMContacts> done) = 0;
  virtual void SetBlack(const IMContactSwitch& request, IMCallback<> done) = 0;

 protected:
  ~IIMContactMgr() = default;
};

}  // namespace imsdk::biz
