// JSON forms of what the client's own services do with messages: translation, dynamic content.
#pragma once

#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

// A message's text, to translate and translated.
struct TranslateMsg {
  std::wstring msgid;
  std::wstring msgcontent;

  static constexpr auto kFields = FieldList(Field("msgid", &TranslateMsg::msgid, "The message."),
                                            Field("msgcontent", &TranslateMsg::msgcontent,
                                                  "Its text; in the answer the translated one."));
};

struct TranslateSetting {
  std::int32_t enable = 0;

  static constexpr auto kFields =
      FieldList(Field("enable", &TranslateSetting::enable, "1: messages are translated."));
};

struct DynamicMsgRequest {
  std::wstring bizType;
  std::wstring bizUuid;

  static constexpr auto kFields = FieldList(
      Field("bizType", &DynamicMsgRequest::bizType, "The business that the content belongs to."),
      Field("bizUuid", &DynamicMsgRequest::bizUuid, "The content's identifier there."));
};

struct DynamicMsgAnswer {
  std::wstring content;

  static constexpr auto kFields =
      FieldList(Field("content", &DynamicMsgAnswer::content, "The present content, a JSON text."));
};

}  // namespace imsdk::bridge
