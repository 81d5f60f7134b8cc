// JSON forms of what is sent in single chat.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

struct BodyItem {
  std::int32_t type = 0;
  std::wstring jvale;
  std::wstring value;
  std::wstring filecontent;  // Base64
  std::wstring filepath;
};
template <>
struct Record<BodyItem> {
  static constexpr auto kFields =
      FieldList(Field("type", &BodyItem::type), Field("jvale", &BodyItem::jvale),
                Field("value", &BodyItem::value), Field("filecontent", &BodyItem::filecontent),
                Field("filepath", &BodyItem::filepath));
};

struct SendMsgRequest {
  biz::IMUserID cid;
  std::int32_t autosend = 0;
  std::vector<BodyItem> msgbody;
};
template <>
struct Record<SendMsgRequest> {
  static constexpr auto kFields =
      FieldList(Field("cid", &SendMsgRequest::cid), Field("autosend", &SendMsgRequest::autosend),
                Field("msgbody", &SendMsgRequest::msgbody));
};

struct BroadcastMsgRequest {
  std::vector<biz::IMUserID> cids;
  std::vector<BodyItem> msgbody;
};
template <>
struct Record<BroadcastMsgRequest> {
  static constexpr auto kFields = FieldList(Field("cids", &BroadcastMsgRequest::cids),
                                            Field("msgbody", &BroadcastMsgRequest::msgbody));
};

// A text to convert, and the converted text: a body item without its file keys.
struct EmotionText {
  std::int32_t type = 0;
  std::wstring value;
  std::wstring jvale;
};
template <>
struct Record<EmotionText> {
  static constexpr auto kFields =
      FieldList(Field("type", &EmotionText::type), Field("value", &EmotionText::value),
                Field("jvale", &EmotionText::jvale));
};

struct ForwardMsgRequest {
  std::vector<biz::IMUserID> cids;
  std::vector<BodyItem> msgbody;
  std::int32_t msgtype = 0;
  std::int64_t msgid = 0;
};
template <>
struct Record<ForwardMsgRequest> {
  static constexpr auto kFields = FieldList(
      Field("cids", &ForwardMsgRequest::cids), Field("msgbody", &ForwardMsgRequest::msgbody),
      Field("msgtype", &ForwardMsgRequest::msgtype), Field("msgid", &ForwardMsgRequest::msgid));
};

struct EditPicRequest {
  std::vector<biz::IMUserID> cids;
  std::wstring fileMD5;
  std::wstring filepath;
};
template <>
struct Record<EditPicRequest> {
  static constexpr auto kFields =
      FieldList(Field("cids", &EditPicRequest::cids), Field("fileMD5", &EditPicRequest::fileMD5),
                Field("filepath", &EditPicRequest::filepath));
};

struct ShieldRequest {
  biz::IMUserID cid;
  std::int32_t setignore = 0;
};
template <>
struct Record<ShieldRequest> {
  static constexpr auto kFields =
      FieldList(Field("cid", &ShieldRequest::cid), Field("setignore", &ShieldRequest::setignore));
};

}  // namespace imsdk::bridge
