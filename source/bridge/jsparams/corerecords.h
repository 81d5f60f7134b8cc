// JSON forms of the messaging core's own records.
#pragma once

#include "bridge/core_records.h"
#include "source/bridge/jsparams/filerecords.h"
#include "source/bridge/jsparams/form.h"
#include "source/bridge/jsparams/tribevalues.h"

namespace imsdk::bridge {

// The core writes users and tribes in forms of its own.
struct CoreForm {};

template <>
struct FormRecord<biz::IMUserID, CoreForm> {
  using R = biz::IMUserID;
  static constexpr auto kFields =
      FieldList(Field("strAppKey", &R::appkey, "The application that the user belongs to."),
                Field("strUserID", &R::nick, "The user's name there."));
};

template <>
struct FormRecord<biz::IMTribeID, CoreForm> {
  static constexpr auto kFields =
      FieldList(Field("llTribeID", &biz::IMTribeID::id, "The tribe's number."));
};

template <>
struct Record<CoreConversation> {
  using R = CoreConversation;
  using Id = biz::IMConversationID;
  static constexpr auto kFields =
      FieldList(Field("emCIDType", Path(&R::cid, &Id::type), "What it is held with."),
                Field("stUID", Path(&R::cid, &Id::user), "The user, unless it is a tribe."),
                Field("stTID", Path(&R::cid, &Id::tribe), "The tribe."));
};

inline constexpr char kCoreTribeSays[] = "The tribe.";

template <>
struct Record<CoreLevelChange> {
  using R = CoreLevelChange;
  static constexpr auto kFields = FieldList(
      Field("emLevel", &R::emLevel, "The new level.", &kTribeMemberLevel),
      Field("stMasterUID", &R::stMasterUID, "Who changed it."),
      Field("stUID", &R::stUID, "The member."), Field("stTribeID", &R::stTribeID, kCoreTribeSays));
};

template <>
struct Record<CoreRemoval> {
  using R = CoreRemoval;
  static constexpr auto kFields =
      FieldList(Field("stKickedUID", &R::stKickedUID, "Who was removed."),
                Field("stKickUID", &R::stKickUID, "Who did it."),
                Field("stTribeID", &R::stTribeID, kCoreTribeSays));
};

template <>
struct Record<CoreMember> {
  using R = CoreMember;
  static constexpr auto kFields = FieldList(Field("stUID", &R::stUID, "The member."),
                                            Field("stTribeID", &R::stTribeID, kCoreTribeSays));
};

template <>
struct Record<CoreMembers> {
  using R = CoreMembers;
  static constexpr auto kFields = FieldList(Field("stUIDs", &R::stUIDs, "The members."),
                                            Field("stTribeID", &R::stTribeID, kCoreTribeSays));
};

template <>
struct Record<CoreTribeUser> {
  using R = CoreTribeUser;
  static constexpr auto kFields = FieldList(
      Field("userName", &R::userName, "The name to show."),
      Field("userId", &R::userId, "The user's name in the application."),
      Field("tribeLevel", &R::tribeLevel, "The member's level.", &kTribeMemberLevel),
      Field("basicSts", &R::basicSts, "Whether the member is online.", &kTribeMemberBasicStatus),
      Field("mobileNo", &R::mobileNo, "A telephone number, or empty."));
};

template <>
struct Record<CoreTribe> {
  using R = CoreTribe;
  static constexpr auto kFields =
      FieldList(Field("managerId", &R::managerId, "The owner's name in the application."),
                Field("tribeName", &R::tribeName, "The tribe's name."),
                Field("tribeType", &R::tribeType, "What kind of tribe it is.", &kTribeType),
                Field("subType", &R::subType, "The tribe's class."),
                Field("business", &R::business, "The business that it belongs to, or empty."),
                Field("extSts", &R::extSts, "Further states; 0 for none."),
                Field("userList", &R::userList, "Its members."));
};

template <>
struct Record<CoreFileOwner> {
  using R = CoreFileOwner;
  static constexpr auto kFields =
      FieldList(Field("from", &R::from, "Who sent the file."),
                Field("uuid", &R::uuid, "The identifier of the message that carried it."),
                Field("localTime", &R::localTime, "When it was sent, by the sender's clock."),
                Field("srvTime", &R::srvTime, "When it was sent, by the server's clock."));
};

template <>
struct Record<CoreFileNode> {
  using R = CoreFileNode;
  static constexpr auto kFields =
      FieldList(Field("parentId", &R::parentId, "The identifier of its folder."),
                Field("nodeName", &R::nodeName, "Its name."),
                Field("nodeSize", &R::nodeSize, "Its size in bytes."),
                Field("nodeType", &R::nodeType, "What it is.", &kNodeType),
                Field("msgInfo", &R::msgInfo, "Who sent it with which message."));
};

template <>
struct Record<CoreFileEvent> {
  using R = CoreFileEvent;
  static constexpr auto kFields =
      FieldList(Field("fileInfo", &R::fileInfo, "The conversation that the file is in."),
                Field("transferInfo", &R::transferInfo, "Where its transfer stands."),
                Field("fileMeta", &R::fileMeta, "The file."));
};

}  // namespace imsdk::bridge
