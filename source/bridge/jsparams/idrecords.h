// JSON forms of the identifiers and of the result envelope.
#pragma once

#include "imsdk/biz/callback.h"
#include "imsdk/biz/user_id.h"
#include "source/bridge/jsparams/recordjson.h"

namespace imsdk::bridge {

// The form of the modules that know no conversations.
struct PlainForm {};

// No keys. The JSON text of such a request is not even looked at.
template <>
struct Record<biz::IMNothing> {
  static constexpr auto kFields = FieldList();
};

template <>
struct Record<biz::IMUserID> {
  using R = biz::IMUserID;
  static constexpr auto kFields =
      FieldList(Field("appkey", &R::appkey, "The application that the user belongs to."),
                Field("nick", &R::nick, "The user's name there."));
};

template <>
struct Record<biz::ResultCode> {
  using R = biz::ResultCode;
  static constexpr auto kFields = FieldList(
      Field("code", &R::code, "0 or more for success, a negative code for a failure."),
      Field("subcode", &R::subcode, "A code that tells more of a failure."),
      Field("result", &R::text, "\"success\", \"failed\", or a text for the page's developer."));
};

// The engine's result with a text for the page: its own, else "success" or "failed" by the code.
inline biz::ResultCode Envelope(biz::ResultCode result) {
  if (result.text.empty()) result.text = result.ok() ? L"success" : L"failed";
  return result;
}

// The answer text: the envelope's keys, then the answer's own. An answer that stands under "result"
// does so when the outcome is good.
template <class Form = PlainForm, class Answer = biz::IMNothing>
std::wstring AnswerText(const biz::ResultCode& result, const Answer& answer = {}) {
  JsonText json;
  json.BeginObject();
  if constexpr (requires { RecordIn<Answer, Form>::kUnderResult; }) {
    if (result.ok()) {
      json.Key("code");
      json.Integer(result.code);
      json.Key("subcode");
      json.Integer(result.subcode);
      json.Key("result");
      WriteValue<Form>(json, answer);
    } else {
      WriteMembers<Form>(json, Envelope(result));
    }
  } else {
    WriteMembers<Form>(json, Envelope(result));
    WriteMembers<Form>(json, answer);
  }
  json.EndObject();
  return json.Take();
}

}  // namespace imsdk::bridge
