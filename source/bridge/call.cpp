#include "source/bridge/call.h"

#include <algorithm>

#include "kexcom/result.h"

namespace imsdk::bridge {

CallBase::CallBase(AnswerCallback answer, const MethodRow& row)
    : answer_(std::move(answer)), row_(&row) {
  answer_.SetHandler(row.site.function);
}

void CallBase::Fail(const biz::ResultCode& result, std::wstring_view fixed) const {
  Answer(result, AnswerText(result), fixed);
}

void CallBase::Invalid() const { Fail(E_INVALIDARG, row_->texts.invalid); }

void CallBase::Unreadable(const std::wstring& jsonStr) const {
  const RowTexts& texts = row_->texts;
  const biz::ResultCode result{E_INVALIDARG, 0, texts.invalid};
  Trace(ns_log::kError, texts.unreadable ? texts.unreadable : texts.invalid)
      .Brief("_brief_,code,subcode,result,jsonStr", result.code, result.subcode, result.text,
             SecretFree(jsonStr, SecretsOf({row_, 1})));
  answer_(result.code, AnswerText(result));
}

void CallBase::FinishSend(const biz::ResultCode& status) const {
  const bool refused = status.code < 0;
  Answer({refused ? status.code : 0, status.subcode, status.text},
         AnswerText({status.code, 0, refused ? L"failed" : L"success"}), row_->texts.failed);
}

void CallBase::Answer(const biz::ResultCode& result, std::wstring payload,
                      std::wstring_view fixed) const {
  if (result.code != 0) {
    Trace(ns_log::kError, fixed)
        .Brief("_brief_,code,subcode,result", result.code, result.subcode, Envelope(result).text);
  }
  answer_(result.code, std::move(payload));
}

}  // namespace imsdk::bridge
