// JSON forms of what the client's own services do with messages: translation, dynamic content.
#pragma once

#include <cstdint>
#include <string>

#include "source/bridge/jsparams/record.h"

namespace imsdk::bridge {

// A message's text, to translate and translated.
struct TranslateMsg {
  std::wstring msgid;
  std::wstring msgcontent;
};
template <>
struct Record<TranslateMsg> {
  static constexpr auto kFields = FieldList(Field("msgid", &TranslateMsg::msgid),
                                            Field("msgcontent", &TranslateMsg::msgcontent));
};

struct TranslateSetting {
  std::int32_t enable = 0;
};
template <>
struct Record<TranslateSetting> {
  static constexpr auto kFields = FieldList(Field("enable", &TranslateSetting::enable));
};

struct DynamicMsgRequest {
  std::wstring bizType;
  std::wstring bizUuid;
};
template <>
struct Record<DynamicMsgRequest> {
  static constexpr auto kFields = FieldList(Field("bizType", &DynamicMsgRequest::bizType),
                                            Field("bizUuid", &DynamicMsgRequest::bizUuid));
};

struct DynamicMsgAnswer {
  std::wstring content;
};
template <>
struct Record<DynamicMsgAnswer> {
  static constexpr auto kFields = FieldList(Field("content", &DynamicMsgAnswer::content));
};

}  // namespace imsdk::bridge
