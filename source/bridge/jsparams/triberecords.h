// JSON forms of tribes and their members.
#pragma once

#include <vector>

#include "imsdk/biz/tribe_mgr.h"
#include "source/bridge/jsparams/idrecords.h"
#include "source/bridge/jsparams/tribevalues.h"

namespace imsdk::bridge {

// "tribeid", of a record with a member of that name.
template <class R>
constexpr auto TribeIdField(const char* sentence = "The tribe.") {
  return Field("tribeid", Path(&R::tribeid, &biz::IMTribeID::id), sentence);
}
// What most requests say: the tribe and something else.
template <class R, class... Fields>
constexpr auto InTribe(Fields... fields) {
  return FieldList(TribeIdField<R>(), fields...);
}

// Requests.

template <>
struct Record<biz::IMTribeRequest> {
  static constexpr auto kFields = InTribe<biz::IMTribeRequest>();
};

template <>
struct Record<biz::IMTribeMemberSearch> {
  using R = biz::IMTribeMemberSearch;
  static constexpr auto kFields =
      InTribe<R>(Field("key", &R::key, "A part of a name; whatever the case."));
};

template <>
struct Record<biz::IMTribeNumber> {
  using R = biz::IMTribeNumber;
  static constexpr auto kFields = InTribe<R>(Field("num", &R::num, "The new value."));
};

template <>
struct Record<biz::IMTribeText> {
  using R = biz::IMTribeText;
  static constexpr auto kFields = InTribe<R>(Field("str", &R::str, "The text."));
};

template <>
struct Record<biz::IMTribeUser> {
  using R = biz::IMTribeUser;
  static constexpr auto kFields = InTribe<R>(Field("userid", &R::userid, "The user."));
};

template <>
struct Record<biz::IMTribeMemberLevel> {
  using R = biz::IMTribeMemberLevel;
  static constexpr auto kFields =
      FieldList(Field("level", &R::level, "The new level.", &kTribeMemberLevel), TribeIdField<R>(),
                Field("userid", &R::userid, "The member."));
};

template <>
struct Record<biz::IMTribeNickname> {
  using R = biz::IMTribeNickname;
  static constexpr auto kFields =
      InTribe<R>(Field("userid", &R::userid, "The member; for one's own nickname it may be empty."),
                 Field("nickname", &R::nickname, "The name in this tribe; empty for none."));
};

template <>
struct Record<biz::IMMultiChatName> {
  using R = biz::IMMultiChatName;
  static constexpr auto kFields = InTribe<R>(Field("name", &R::name, "The new name."));
};

template <>
struct Record<biz::IMTribeList> {
  static constexpr auto kFields =
      FieldList(Field("tribelist", &biz::IMTribeList::tribelist, "The tribes."));
};

template <>
struct Record<biz::IMTribeMembersRequest> {
  using R = biz::IMTribeMembersRequest;
  static constexpr auto kFields = InTribe<R>(Field("memberlist", &R::memberlist, "The users."));
};

template <>
struct Record<biz::IMTribeNickRequest> {
  using R = biz::IMTribeNickRequest;
  static constexpr auto kFields = InTribe<R>(Field("listuid", &R::listuid, "The users."));
};

template <>
struct Record<biz::IMTribeVerifyAction> {
  using R = biz::IMTribeVerifyAction;
  static constexpr auto kFields =
      FieldList(Field("fromid", &R::fromid, "Who asked to join, or invited."), TribeIdField<R>(),
                Field("authinfo", &R::authinfo, "Words that go back with the decision."),
                Field("msgid", &R::msgid, "The verification message."));
};

template <>
struct Record<biz::IMTribeVerifyPage> {
  using R = biz::IMTribeVerifyPage;
  static constexpr auto kFields = FieldList(
      Field("btime", &R::btime, "From this time on."),
      Field("etime", &R::etime, "Up to and with this time; 0 for no end."),
      Field("msgid", &R::msgid, "Where to go on; 0 for the newest end."),
      Field("count", &R::count, "At most this many."),
      Field("gohistory", &R::gohistory, "Not 0: older ones than that, else newer ones."),
      Field("ignoreboundary", &R::ignoreboundary, "Not 0: a page may be larger than usual."));
};

// Answers with one value.

template <>
struct Record<biz::IMTribeNumberValue> {
  static constexpr auto kFields =
      FieldList(Field("num", &biz::IMTribeNumberValue::num, "The value."));
};

template <>
struct Record<biz::IMTribeTextValue> {
  static constexpr auto kFields = FieldList(Field("str", &biz::IMTribeTextValue::str, "The text."));
};

template <>
struct Record<biz::IMTribeNicknameValue> {
  static constexpr auto kFields =
      FieldList(Field("nickname", &biz::IMTribeNicknameValue::nickname,
                      "The account's name in this tribe; empty for none."));
};

template <>
struct Record<biz::IMEnableTribeNum> {
  using R = biz::IMEnableTribeNum;
  static constexpr bool kUnderResult = true;
  static constexpr auto kFields =
      FieldList(Field("total", &R::total, "How many tribes the account has."),
                Field("enable", &R::enable, "How many of them are not closed."));
};

template <>
struct Record<biz::IMTribeClass> {
  using R = biz::IMTribeClass;
  static constexpr auto kFields = FieldList(Field("index", &R::index, "Number of the class."),
                                            Field("name", &R::name, "Its name."));
};

template <>
struct Record<biz::IMTribeClasses> {
  static constexpr auto kFields = FieldList(
      Field("classlist", &biz::IMTribeClasses::classlist, "The classes that a tribe can have."));
};

// A tribe in the shapes that pages get it in.

struct TribeBaseInfo {
  std::wstring tribename;
  biz::IMUserID ownid;
  biz::IMTribeID tribeid;
  std::wstring des;
  std::wstring portrait;
  std::int32_t classtype = 0;
  std::int32_t level = 0;
};

template <>
struct Record<TribeBaseInfo> {
  using R = TribeBaseInfo;
  static constexpr bool kUnderResult = true;
  static constexpr auto kFields =
      FieldList(Field("tribename", &R::tribename, "The tribe's name."),
                Field("ownid", &R::ownid, "Its owner."), TribeIdField<R>(),
                Field("des", &R::des, "Its description."),
                Field("portrait", &R::portrait, "Its picture; empty for none."),
                Field("classtype", &R::classtype, "Its class, see `GetAllClass`."),
                Field("level", &R::level, "Its level: it grows with the members."));
};

struct TribeSummary {
  biz::IMTribeID tribeid;
  std::wstring display;
  std::wstring portrait;
  std::int32_t unreadnum = 0;
  biz::IMTribeType type = biz::kNormalTribe;
};

template <>
struct Record<TribeSummary> {
  using R = TribeSummary;
  static constexpr auto kFields =
      FieldList(TribeIdField<R>(), Field("display", &R::display, "The name to show."),
                Field("portrait", &R::portrait, "Its picture; empty for none."),
                Field("unreadnum", &R::unreadnum, "How many of its messages are unread."),
                Field("type", &R::type, "What kind of tribe it is.", &kTribeType));
};

struct ShallowTribe {
  biz::TribeMemberLevel mylevel = biz::kTribeNobody;
  TribeSummary tribeid;
  std::wstring signature;
  biz::IMTribeType type = biz::kNormalTribe;
};

template <>
struct Record<ShallowTribe> {
  using R = ShallowTribe;
  static constexpr bool kUnderResult = true;
  static constexpr auto kFields =
      FieldList(Field("mylevel", &R::mylevel, "What the account is there.", &kTribeMemberLevel),
                Field("tribeid", &R::tribeid, "The tribe in short, not only its identifier."),
                Field("signature", &R::signature, "What it says of itself."),
                Field("type", &R::type, "What kind of tribe it is.", &kTribeType));
};

struct ShallowTribes {
  std::vector<ShallowTribe> tribelist;

  static constexpr auto kFields =
      FieldList(Field("tribelist", &ShallowTribes::tribelist, "The account's tribes."));
};

struct QuittedTribes {
  std::vector<TribeSummary> tribeids;

  static constexpr auto kFields = FieldList(
      Field("tribeids", &QuittedTribes::tribeids, "Tribes that were left, the latest first."));
};

struct TribeNtfImages {
  std::wstring ntfImage;
  std::wstring businessImage;
  biz::IMTribeID tribeid;
  std::int32_t unreadNum = 0;
};

template <>
struct Record<TribeNtfImages> {
  using R = TribeNtfImages;
  static constexpr auto kFields = FieldList(
      Field("ntfImage", &R::ntfImage, "The picture beside its notices; empty for none."),
      Field("businessImage", &R::businessImage, "The mark of a business, or empty."),
      TribeIdField<R>(), Field("unreadNum", &R::unreadNum, "How many of its messages are unread."));
};

struct ShallowTribesEx {
  std::vector<TribeNtfImages> tribelist;

  static constexpr auto kFields = FieldList(Field("tribelist", &ShallowTribesEx::tribelist,
                                                  "Those of the tribes that are the account's."));
};

// Members.

template <>
struct Record<biz::IMTribeMember> {
  using R = biz::IMTribeMember;
  static constexpr auto kFields = FieldList(
      Field("appkey", Path(&R::userid, &biz::IMUserID::appkey),
            "The application that the member belongs to."),
      Field("nick", Path(&R::userid, &biz::IMUserID::nick), "The member's name there."),
      Field("status", &R::status, "Whether the member is online.", &kTribeMemberBasicStatus),
      Field("display", &R::display, "The name to show in this tribe."),
      Field("name", &R::name, "The member's own name."),
      Field("portrait", &R::portrait, "The member's picture; empty for none."),
      Field("activelevel", &R::activelevel, "How active the member was lately, 0 to 5."),
      Field("level", &R::level, "What the member is here.", &kTribeMemberLevel));
};

template <>
struct Record<biz::IMTribeMembers> {
  static constexpr auto kFields =
      FieldList(Field("memberlist", &biz::IMTribeMembers::memberlist, "The members."));
};

template <>
struct Record<biz::IMTribeRoster> {
  using R = biz::IMTribeRoster;
  static constexpr auto kFields =
      FieldList(Field("total", &R::total, "How many members there are."),
                Field("online", &R::online, "How many of them are online."),
                Field("memberlist", &R::memberlist, "All of them, the highest level first."));
};

template <>
struct Record<biz::IMTribeDisplayNick> {
  using R = biz::IMTribeDisplayNick;
  static constexpr auto kFields =
      FieldList(Field("userid", &R::userid, "The member."),
                Field("display", &R::display, "The name to show in this tribe."));
};

template <>
struct Record<biz::IMTribeDisplayNicks> {
  static constexpr auto kFields =
      FieldList(Field("nicklist", &biz::IMTribeDisplayNicks::nicklist,
                      "The names of those who are members, in the order of the request."));
};

// Black list and verification.

struct TribeBlackItem {
  biz::IMUserID userid;
  std::wstring nick;
  std::wstring portrait;
  WholeNumber addtime;
};

template <>
struct Record<TribeBlackItem> {
  using R = TribeBlackItem;
  static constexpr auto kFields =
      FieldList(Field("userid", &R::userid, "Who may not join."),
                Field("nick", &R::nick, "The name to show."),
                Field("portrait", &R::portrait, "The user's picture; empty for none."),
                Field("addtime", &R::addtime, "Since when."));
};

struct TribeBlackItems {
  std::vector<TribeBlackItem> list;

  static constexpr auto kFields =
      FieldList(Field("list", &TribeBlackItems::list, "Who is on the black list."));
};

struct TribeVerifyMsg {
  biz::IMTribeVerifyMsg msg;
  WholeNumber msgtime;
};

template <>
struct Record<TribeVerifyMsg> {
  using R = TribeVerifyMsg;
  using M = biz::IMTribeVerifyMsg;
  static constexpr auto kFields = FieldList(
      Field("fromid", Path(&R::msg, &M::fromid), "Who asked to join, or invited."),
      Field("fromname", Path(&R::msg, &M::fromname), "The name of that user."),
      Field("tribeid", Path(&R::msg, &M::tribeid, &biz::IMTribeID::id), "The tribe."),
      Field("tribename", Path(&R::msg, &M::tribename), "Its name."),
      Field("msgtime", &R::msgtime, "When it was asked."),
      Field("msgid", Path(&R::msg, &M::msgid), "What names the message in a decision."),
      Field("authinfo", Path(&R::msg, &M::authinfo), "The words that came with it."),
      Field("managerid", Path(&R::msg, &M::managerid), "Who has decided; empty while it is open."),
      Field("type", Path(&R::msg, &M::type), "What it is.", &kTribeVerifyType));
};

struct TribeVerifyMsgs {
  std::vector<TribeVerifyMsg> msgs;

  static constexpr auto kFields =
      FieldList(Field("msgs", &TribeVerifyMsgs::msgs, "The messages, oldest first."));
};

}  // namespace imsdk::bridge
