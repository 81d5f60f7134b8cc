// JSON forms of what is sent.
#pragma once

#include "source/bridge/jsparams/messagerecords.h"

namespace imsdk::bridge {

struct BodyItem {
  std::int32_t type = 0;
  std::wstring jvale;
  std::wstring value;
  std::wstring filecontent;  // Base64
  base::FilePath filepath;

  static constexpr auto kFields = FieldList(
      Field("type", &BodyItem::type, "Kind of the item.", &kMsgType),
      Field("jvale", &BodyItem::jvale, "Extra JSON text, carried as it stands."),
      Field("value", &BodyItem::value, "Its body: text with tokens in it."),
      Field("filecontent", &BodyItem::filecontent,
            "The content of a file, Base64, where it comes along."),
      Field("filepath", &BodyItem::filepath, "The path of a local file, where one is meant."));
};

inline constexpr char kBodySays[] = "What to send, in the order in which it is shown.";

// Whom a message is to mention.
struct TribeAtRequest : biz::IMTribeAt {};

struct SendMsgRequest {
  bool autosend = false;
  std::vector<BodyItem> msgbody;
  TribeAtRequest tribeat;  // only tribes have the key

  static constexpr auto kFields = FieldList(
      Field("autosend", &SendMsgRequest::autosend, "1: sent by the client, not typed by its user."),
      Field("msgbody", &SendMsgRequest::msgbody, kBodySays));
};

struct BroadcastMsgRequest : biz::IMConversations {
  std::vector<BodyItem> msgbody;
};
template <class Form>
struct FormRecord<BroadcastMsgRequest, Form> {
  static constexpr auto kFields =
      std::tuple_cat(RecordIn<biz::IMConversations, Form>::kFields,
                     FieldList(Field("msgbody", &BroadcastMsgRequest::msgbody, kBodySays)));
};

struct ForwardMsgRequest : BroadcastMsgRequest {
  std::int32_t msgtype = 0;
  std::int64_t msgid = 0;
};
template <class Form>
struct FormRecord<ForwardMsgRequest, Form> {
  using R = ForwardMsgRequest;
  static constexpr auto kFields = std::tuple_cat(
      RecordIn<BroadcastMsgRequest, Form>::kFields,
      FieldList(Field("msgtype", &R::msgtype, "Kind of the forwarded message.", &kMsgType),
                Field("msgid", &R::msgid, "The forwarded message.")));
};

// A text to convert, and the converted text: a body item without its file keys.
struct EmotionText {
  std::int32_t type = 0;
  std::wstring value;
  std::wstring jvale;

  static constexpr auto kFields = FieldList(
      Field("type", &EmotionText::type, "Kind of the item.", &kMsgType),
      Field("value", &EmotionText::value, "The text; in the answer with emotions as tokens."),
      Field("jvale", &EmotionText::jvale, "Extra JSON text, carried as it stands."));
};

struct EditPicRequest : biz::IMConversations {
  std::wstring fileMD5;
  base::FilePath filepath;
};
template <class Form>
struct FormRecord<EditPicRequest, Form> {
  using R = EditPicRequest;
  static constexpr auto kFields = std::tuple_cat(
      RecordIn<biz::IMConversations, Form>::kFields,
      FieldList(Field("fileMD5", &R::fileMD5, "The digest that the page knows the picture by."),
                Field("filepath", &R::filepath, "The path of the picture.")));
};

template <>
struct Record<biz::IMResendRequest> {
  static constexpr auto kFields =
      FieldList(Field("msgid", &biz::IMResendRequest::msgid, "The own message to send again."));
};

template <>
struct Record<biz::IMShieldRequest> {
  static constexpr auto kFields = FieldList(Field("setignore", &biz::IMShieldRequest::setignore,
                                                  "1: the peer's automatic replies are ignored."));
};

}  // namespace imsdk::bridge
