// JSON forms of what tribes' events tell.
#pragma once

#include <string>

#include "source/bridge/jsparams/triberecords.h"

namespace imsdk::bridge {

// Who did something to whom in which tribe.
struct TribeActor {
  biz::IMUserID actor;
  biz::IMTribeID tribeid;
  biz::IMUserID recipient;
};

// The fields of a record that begins so.
template <class R>
constexpr auto ActorFields() {
  return FieldList(Field("actor", &R::actor, "Who did it."), TribeIdField<R>(),
                   Field("recipient", &R::recipient, "Whom it was done to; may be the actor."));
}

template <>
struct Record<TribeActor> {
  static constexpr auto kFields = ActorFields<TribeActor>();
};

struct TribeJoin : TribeActor {
  biz::IMTribeMember info;
};

template <>
struct Record<TribeJoin> {
  static constexpr auto kFields =
      FieldList(ActorFields<TribeJoin>(), Field("info", &TribeJoin::info, "The new member."));
};

struct TribeLevel : TribeActor {
  biz::TribeMemberLevel level = biz::kTribeMember;
};

template <>
struct Record<TribeLevel> {
  static constexpr auto kFields =
      FieldList(ActorFields<TribeLevel>(),
                Field("level", &TribeLevel::level, "The new level.", &kTribeMemberLevel));
};

// It comes with one of two notifications, and has what that one has.
struct EnableNumChange : TribeActor {
  bool closed = false;

  bool IsClosing() const { return closed; }
};

template <>
struct Record<EnableNumChange> {
  using R = EnableNumChange;
  static constexpr auto kFields = FieldList(
      OfKind("onTribeClose", &R::IsClosing, Field("actor", &R::actor, "Who closed the tribe.")),
      TribeIdField<R>("The tribe that was closed or enabled."),
      OfKind("onTribeClose", &R::IsClosing, Field("recipient", &R::recipient, "Nobody.")));
};

struct TribeCount {
  biz::IMTribeID tribeid;
  std::uint32_t online = 0;
  std::uint32_t total = 0;
};

template <>
struct Record<TribeCount> {
  using R = TribeCount;
  static constexpr auto kFields =
      InTribe<R>(Field("online", &R::online, "How many members are online."),
                 Field("total", &R::total, "How many members there are."));
};

struct TribeMemberDisplay {
  biz::IMTribeID tribeid;
  biz::IMUserID userid;
  std::wstring display;
};

template <>
struct Record<TribeMemberDisplay> {
  using R = TribeMemberDisplay;
  static constexpr auto kFields = InTribe<R>(Field("userid", &R::userid, "The member."),
                                             Field("display", &R::display, "The name to show."));
};

struct TribeMemberStatus {
  biz::IMTribeID tribeid;
  biz::IMUserID userid;
  biz::TribeMemberBasicStatus status = biz::kMemberOffline;
};

template <>
struct Record<TribeMemberStatus> {
  using R = TribeMemberStatus;
  static constexpr auto kFields = InTribe<R>(
      Field("userid", &R::userid, "The member."),
      Field("status", &R::status, "Whether the member is online.", &kTribeMemberBasicStatus));
};

struct TribeChangeItem {
  biz::TribeModifyKey key = biz::kTribeKeyName;
  std::wstring value;
};

template <>
struct Record<TribeChangeItem> {
  using R = TribeChangeItem;
  static constexpr auto kFields =
      FieldList(Field("key", &R::key, "What changed.", &kTribeModifyKey),
                Field("value", &R::value, "The new value; numbers in decimal form."));
};

struct TribeChange {
  biz::IMTribeID tribeid;
  std::vector<TribeChangeItem> detail;
};

template <>
struct Record<TribeChange> {
  static constexpr auto kFields =
      InTribe<TribeChange>(Field("detail", &TribeChange::detail, "What changed."));
};

struct TribeNtfImage {
  biz::IMTribeID tribeid;
  std::wstring ntfImage;
};

template <>
struct Record<TribeNtfImage> {
  static constexpr auto kFields =
      InTribe<TribeNtfImage>(Field("ntfImage", &TribeNtfImage::ntfImage, "The new picture."));
};

}  // namespace imsdk::bridge
