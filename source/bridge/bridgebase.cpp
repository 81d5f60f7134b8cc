#include "source/bridge/bridgebase.h"

#include <algorithm>

#include "kexbase/json_reader.h"
#include "kexcom/result.h"
#include "source/bridge/jsparams/secretfree.h"

namespace imsdk::bridge {
namespace {

// Lengths first: most names of a table differ in length already. A name is ASCII, so its length is
// the same in UTF-16.
bool SameName(const std::wstring& given, std::string_view name) {
  return given.size() == name.size() &&
         std::equal(given.begin(), given.end(), name.begin(),
                    [](wchar_t a, char b) { return a == static_cast<wchar_t>(b); });
}

}  // namespace

bool CBridgeBase::JsInvoke(const std::wstring& bizmethod, const std::wstring& jsonparam,
                           AnswerCallback answer) {
  for (const MethodRow& row : Methods()) {
    if (!SameName(bizmethod, row.name)) continue;
    row.run(*this, row, jsonparam, std::move(answer));
    return true;
  }
  answer(E_NOTIMPL, {});
  return false;
}

void CBridgeBase::TraceInput(const MethodRow& row, const std::wstring& jsonStr) {
  ns_log::CTraceProxy(ns_log::kRoutine, row.site, row.text)
      .Brief("_brief_,jsonStr", SecretFree(jsonStr));
}

std::optional<base::Value> CBridgeBase::ReadRequest(const MethodRow& row,
                                                    const std::wstring& jsonStr,
                                                    const AnswerCallback& answer) {
  auto json = base::JSONReader::Read(base::WideToUTF8(jsonStr));
  if (json && (row.request->kind != JsonKind::kList || json->is_list())) return json;
  ns_log::CTraceProxy(ns_log::kError, row.site, row.invalid)
      .Brief("_brief_,jsonStr", SecretFree(jsonStr));
  answer(E_INVALIDARG, AnswerText({E_INVALIDARG, 0, row.invalid}));
  return std::nullopt;
}

}  // namespace imsdk::bridge
