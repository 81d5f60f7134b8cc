// JSON forms of mentions.
#pragma once

#include "source/bridge/jsparams/sendrecords.h"

namespace imsdk::bridge {

inline constexpr Values kTribeAtMsgType{
    Value<biz::kAtNobody>("The message mentions nobody."),
    Value<biz::kAtMembers>("It mentions the members named."),
    Value<biz::kAtAll>("It mentions all members."),
};

inline constexpr Values kTribeAtRelation{
    Value<biz::kAtRelationNone>("It mentions nobody, or others only."),
    Value<biz::kAtRelationMember>("It mentions the account by name."),
    Value<biz::kAtRelationAll>("It mentions all members."),
    Value<biz::kAtRelationSender>("An own message that mentions somebody."),
};

template <>
struct Record<biz::IMTribeAt> {
  using R = biz::IMTribeAt;
  static constexpr auto kFields = FieldList(
      Field("msgreaded", &R::msgreaded, "Whether the account has read the mention of it.",
            &kReadFlag),
      Field("atmsgtype", &R::atmsgtype, "Whom the message mentions.", &kTribeAtMsgType),
      Field("relation2me", &R::relation2me, "How it relates to the account.", &kTribeAtRelation),
      Field("atmembers", &R::atmembers, "The members it mentions; empty unless they are named."));
};

template <>
struct Record<TribeAtRequest> {
  using R = biz::IMTribeAt;
  static constexpr auto kFields =
      FieldList(Field("atmsgtype", &R::atmsgtype, "Whom the message mentions.", &kTribeAtMsgType),
                Field("atmembers", &R::atmembers, "The members it mentions, when they are named."));
};

template <>
struct Record<biz::IMAtReadCounts> {
  using R = biz::IMAtReadCounts;
  static constexpr auto kFields = FieldList(
      Field("msgid", &R::msgid, kMsgIdSays),
      Field("readedcount", &R::readedcount, "How many of those it mentions have read it."),
      Field("unreadcount", &R::unreadcount, "How many of them have not."));
};

inline constexpr char kReadCountsSays[] = "How far own messages that mention were read.";

template <>
struct Record<biz::IMAtUnread> {
  using R = biz::IMAtUnread;
  static constexpr auto kFields =
      FieldList(Field("count", &R::count, "The number of unread mentions of the account."),
                Field("counts", &R::counts, kReadCountsSays));
};

template <>
struct Record<biz::IMAtReaders> {
  using R = biz::IMAtReaders;
  static constexpr auto kFields =
      FieldList(Field("unreadusers", &R::unreadusers, "Who has not read the mention."),
                Field("readedusers", &R::readedusers, "Who has read it."));
};

template <>
struct Record<biz::IMAtContextRequest> {
  using R = biz::IMAtContextRequest;
  static constexpr auto kFields = FieldList(Field("msgid", &R::msgid, "The message in the middle."),
                                            Field("fromid", &R::fromid, kWhichSenderSays),
                                            Field("count", &R::count, kCountSays));
};

template <>
struct Record<biz::IMAtMemberRequest> {
  static constexpr auto kFields = FieldList(Field("userid", &biz::IMAtMemberRequest::userid,
                                                  "The member to mention; empty for all members."));
};

template <>
struct Record<biz::IMAtMember> {
  using R = biz::IMAtMember;
  static constexpr auto kFields =
      FieldList(Field("userid", &R::userid, "The member to mention; empty for all members."),
                Field("display", &R::display, "The name to show in the tribe; empty for all."));
};

}  // namespace imsdk::bridge
