// JSON forms of the identifiers and of the result envelope.
#pragma once

#include <string_view>

#include "imsdk/biz/user_id.h"
#include "source/bridge/jsparams/record.h"

namespace imsdk::bridge {

template <>
struct Record<biz::IMUserID> {
  static constexpr auto kFields =
      FieldList(Field("appkey", &biz::IMUserID::appkey), Field("nick", &biz::IMUserID::nick));
};

template <>
struct Record<biz::ResultCode> {
  static constexpr auto kFields =
      FieldList(Field("code", &biz::ResultCode::code), Field("subcode", &biz::ResultCode::subcode),
                Field("result", &biz::ResultCode::text));
};

// The engine's result with a text for the page: its own, else "success" or "failed" by the code.
inline biz::ResultCode Envelope(biz::ResultCode result) {
  if (result.text.empty()) result.text = result.ok() ? L"success" : L"failed";
  return result;
}

// The answer text: the envelope's keys, then the answer's own.
template <IsRecord Answer>
std::wstring AnswerText(const biz::ResultCode& result, const Answer& answer) {
  JsonText json;
  json.BeginObject();
  WriteMembers(json, Envelope(result));
  WriteMembers(json, answer);
  json.EndObject();
  return json.Take();
}

}  // namespace imsdk::bridge
