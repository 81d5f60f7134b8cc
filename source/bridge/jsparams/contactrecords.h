// JSON forms of contacts and of the requests to become one.
#pragma once

#include <string>
#include <vector>

#include "imsdk/biz/contact.h"
#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

inline constexpr Values kContactStatus{
    Value<biz::kContactOffline>("Not there, or not to be seen by the account."),
    Value<biz::kContactOnline>("The user is there."),
};
inline constexpr Values kContactVerifyType{
    Value<biz::kContactAsked>("A request that waits for a decision."),
    Value<biz::kContactAgreed>("The account agreed."),
    Value<biz::kContactAgreedAndAdded>("The same, and who asked is a contact in turn."),
    Value<biz::kContactRefused>("The account refused."),
    Value<biz::kContactBlacked>("Refused, and who asked is on the black list."),
    Value<biz::kContactIgnored>("Put aside; it may still be decided on."),
    Value<biz::kContactReported>("Reported and put aside; it may still be decided on."),
    Value<biz::kContactAnsweredYes>("An answer: the user is a contact now."),
    Value<biz::kContactAnsweredAndAdded>("An answer: both are contacts of each other now."),
    Value<biz::kContactAnsweredNo>("An answer: the request was refused."),
};

// The base information of a contact. Reads the same keys that it writes.
template <>
struct Record<biz::IMContact> {
  using R = biz::IMContact;
  static constexpr auto kFields = FieldList(
      Field("appkey", Path(&R::userid, &biz::IMUserID::appkey),
            "The application that the user belongs to."),
      Field("nick", Path(&R::userid, &biz::IMUserID::nick), "The user's name there."),
      Field("status", &R::status, "Whether the user is there.", &kContactStatus),
      Field("display", &R::display, "The name to show."),
      Field("portrait", &R::portrait, "The path of a picture, as tokens write it; may be empty."),
      Field("unreadnum", &R::unreadnum, "How many of the user's messages are unread."));
};

template <>
struct Record<biz::IMContactGroup> {
  using R = biz::IMContactGroup;
  static constexpr auto kFields =
      FieldList(Field("groupid", &R::gid, "The group's identifier."),
                Field("parentid", &R::parent, "The group that it is part of; 0 for none."),
                Field("name", &R::name, "Its name."));
};

template <>
struct Record<biz::IMListedContact> {
  using R = biz::IMListedContact;
  static constexpr auto kFields =
      FieldList(Field("userid", &R::contact, "The contact."),
                Field("groupid", &R::gid, "The group that it is in; 0 for none."),
                Field("asterisk", &R::asterisk, "1 when the account has marked it."));
};

template <>
struct Record<biz::IMContactVerifyMsg> {
  using R = biz::IMContactVerifyMsg;
  static constexpr auto kFields =
      FieldList(Field("fromid", &R::fromid, "Who asks; of an answer, who decided."),
                Field("fromname", &R::fromname, "That user's name."),
                Field("msgtime", &R::msgtime, "When it came, milliseconds since 1970."),
                Field("msgid", &R::msgid, "The message's identifier."),
                Field("authinfo", &R::authinfo, "The words that came with it."),
                Field("gidinpeergroup", &R::gidinpeergroup, "The group in the list of who asks."),
                Field("type", &R::type, "What it is, or what became of it.", &kContactVerifyType));
};

// Requests.

struct ContactName {
  biz::IMUserID userid;
};
template <>
struct Record<ContactName> {
  static constexpr auto kFields = FieldList(Field("userid", &ContactName::userid, "The contact."));
};
struct ContactNames {
  std::vector<ContactName> items;
};
template <>
struct Record<ContactNames> {
  static constexpr auto kItems = &ContactNames::items;
};

template <>
struct Record<biz::IMUsers> {
  static constexpr auto kFields = FieldList(Field("userids", &biz::IMUsers::userids, "The users."));
};

struct GroupName {
  GivenNumber groupid;
};
template <>
struct Record<GroupName> {
  static constexpr auto kFields = FieldList(Field(
      "groupid", &GroupName::groupid, "The group's identifier; 0 for the contacts without one."));
};

template <>
struct Record<biz::IMContactAction> {
  using R = biz::IMContactAction;
  static constexpr auto kFields = FieldList(
      Field("fromid", &R::fromid, "Who asks."),
      Field("gidinpeergroup", &R::gidinpeergroup, "As in the request."),
      Field("authinfo", &R::authinfo, "Words for who asks."),
      Field("msgid", &R::msgid, "The request; without it, the newest undecided one of that user."));
};
template <>
struct Record<biz::IMContactActions> {
  static constexpr auto kItems = &biz::IMContactActions::list;
};

template <>
struct Record<biz::IMContactVerifyPage> {
  using R = biz::IMContactVerifyPage;
  static constexpr auto kFields = FieldList(
      Field("btime", &R::btime, "From this time on, milliseconds since 1970."),
      Field("etime", &R::etime, "Up to this time; 0 for no end."),
      Field("msgid", &R::msgid, "Where the page starts; 0 at the newest end."),
      Field("count", &R::count, "At most this many; 20 when it is 0, never more than 200."),
      Field("gohistory", &R::gohistory, "1: from `msgid` to older ones, 0: to newer ones."),
      Field("ignoreboundary", &R::ignoreboundary, "1: without the message `msgid` itself."));
};

struct LongUserId {
  std::wstring text;
};
template <>
struct Record<LongUserId> {
  static constexpr auto kText = &LongUserId::text;
};
struct LongUserIds {
  std::vector<LongUserId> items;
};
template <>
struct Record<LongUserIds> {
  static constexpr auto kItems = &LongUserIds::items;
};

// Answers.

template <>
struct Record<biz::IMContacts> {
  static constexpr auto kItems = &biz::IMContacts::contacts;
  static constexpr bool kUnderResult = true;
};
template <>
struct Record<biz::IMContactVerifyMsgs> {
  static constexpr auto kItems = &biz::IMContactVerifyMsgs::msgs;
  static constexpr bool kUnderResult = true;
};

// One of the account's marked contacts.
struct AsteriskUser {
  std::wstring appkey;
  std::wstring nick;
  std::wstring display;
  std::wstring portrait;
};
template <>
struct Record<AsteriskUser> {
  using R = AsteriskUser;
  static constexpr auto kFields =
      FieldList(Field("appkey", &R::appkey, "The application that the user belongs to."),
                Field("nick", &R::nick, "The user's name there."),
                Field("display", &R::display, "The name to show."),
                Field("portrait", &R::portrait, "The path of a picture; may be empty."));
};
struct AsteriskUsers {
  std::vector<AsteriskUser> items;
};
template <>
struct Record<AsteriskUsers> {
  static constexpr auto kItems = &AsteriskUsers::items;
  static constexpr bool kUnderResult = true;
};

template <>
struct Record<biz::IMContactGroupInfo> {
  using R = biz::IMContactGroupInfo;
  static constexpr auto kFields =
      FieldList(Field("subgroups", &R::subgroups, "Its sub-groups."),
                Field("uids", &R::uids, "Its members, without those of sub-groups."));
};

template <>
struct Record<biz::IMDisplayName> {
  using R = biz::IMDisplayName;
  static constexpr auto kFields =
      FieldList(Field("appkey", Path(&R::userid, &biz::IMUserID::appkey),
                      "The application that the user belongs to."),
                Field("nick", Path(&R::userid, &biz::IMUserID::nick), "The user's name there."),
                Field("display", &R::display, "The name to show."));
};
template <>
struct Record<biz::IMDisplayNames> {
  static constexpr auto kItems = &biz::IMDisplayNames::names;
  static constexpr bool kUnderResult = true;
};

struct UserNick {
  std::wstring uid;
  std::wstring snick;
  bool is_valid = false;
};
template <>
struct Record<UserNick> {
  using R = UserNick;
  static constexpr auto kFields =
      FieldList(Field("uid", &R::uid, "The long identifier, as it was asked for."),
                Field("snick", &R::snick, "The name to show; empty when there is none."),
                Field("is_valid", &R::is_valid, "1 when there is such a user."));
};
struct UserNicks {
  std::vector<UserNick> items;
};
template <>
struct Record<UserNicks> {
  static constexpr auto kItems = &UserNicks::items;
  static constexpr bool kUnderResult = true;
};

// Notifications.

struct ContactChange {
  biz::IMListedContact contact;
  bool removed = false;
};
template <>
struct Record<ContactChange> {
  using R = ContactChange;
  static constexpr auto kFields =
      FieldList(Field("contact", &R::contact, "The contact in its place."),
                Field("removed", &R::removed, "1 when it is in the list no more."));
};
struct ContactStatuses {
  std::vector<biz::IMContact> list;
};
template <>
struct Record<ContactStatuses> {
  static constexpr auto kFields =
      FieldList(Field("list", &ContactStatuses::list, "Those who came or went."));
};

}  // namespace imsdk::bridge
