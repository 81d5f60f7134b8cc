#include "source/bridge/bridgebase.h"

#include <algorithm>

#include "kexbase/json_reader.h"
#include "kexcom/result.h"

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

Secrets SecretsOf(std::span<const MethodRow> rows) {
  Secrets secrets;
  for (const MethodRow& row : rows) {
    secrets.taken |= row.takes_secrets;
    if (row.secret_key) secrets.keys.emplace_back(row.secret_key);
  }
  return secrets;
}

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
  ns_log::CTraceProxy(ns_log::kRoutine, row.site, row.texts.input)
      .Brief("_brief_,jsonStr", SecretFree(jsonStr, SecretsOf({&row, 1})));
}

std::optional<base::Value> CBridgeBase::ReadRequest(const MethodRow& row,
                                                    const std::wstring& jsonStr) {
  auto json = base::JSONReader::ReadInPlace(base::WideToUTF8(jsonStr));
  if (json && row.request->kind == JsonKind::kList && !json->is_list()) json.reset();
  return json;
}

void CBridgeBase::OnAccountChanged(biz::IIMAccount* engine) {
  if (engine || !look_up_.function || !Account().valid()) return;
  ns_log::CTraceProxy(ns_log::kError, {look_up_.function}, look_up_.text);
}

}  // namespace imsdk::bridge
