#include "source/bridge/bridgebase.h"

#include <algorithm>

#include "kexbase/json_reader.h"
#include "kexbase/location.h"
#include "kexcom/result.h"
#include "source/bridge/jsparams/idrecords.h"
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
  if (!json) {
    ns_log::CTraceProxy(ns_log::kError, row.site, L"invalid!")
        .Brief("_brief_,jsonStr", SecretFree(jsonStr));
    answer(E_INVALIDARG, AnswerText({E_INVALIDARG, 0, L"invalid!"}, NoKeys{}));
  }
  return json;
}

void CBridgeBase::RunOnView(std::function<void()> task) const {
  const auto& runner = context_.channel->runner();
  if (runner->RunsTasksOnCurrentThread()) return task();
  runner->PostTask(
      FROM_HERE,
      base::BindWeak(weak_from_this(), [run = std::move(task)](const CBridgeBase&) { run(); }));
}

}  // namespace imsdk::bridge
