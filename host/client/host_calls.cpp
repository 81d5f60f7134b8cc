#include "client/host_calls.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "client/host_call.h"
#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"
#include "kexcore/kexcom.h"

namespace imsdk::host {

namespace {

struct Group {
  std::wstring_view method;
  HostCallRows (*rows)();
};
constexpr Group kGroups[] = {{L"bridgehost.tribes.invoke", &TribeCalls},
                             {L"bridgehost.contacts.invoke", &ContactCalls}};

const Group* FindGroup(std::wstring_view method) {
  const auto* found = std::find_if(std::begin(kGroups), std::end(kGroups),
                                   [method](const Group& one) { return one.method == method; });
  return found == std::end(kGroups) ? nullptr : found;
}

}  // namespace

OneAnswer::~OneAnswer() {
  try {
    Give({E_UNEXPECTED, 0, {}});
  } catch (...) {  // memory has run out
  }
}

void OneAnswer::Give(const biz::ResultCode& result, base::DictionaryValue more) {
  if (given_.exchange(true)) return;
  std::string text = base::WideToUTF8(result.text);
  if (text.empty()) text = result.ok() ? "success" : "failed";
  base::DictionaryValue envelope;
  envelope.Set("code", result.code);
  envelope.Set("subcode", result.subcode);
  envelope.Set("result", std::move(text));
  for (auto& [key, value] : more) envelope.Set(key, std::move(value));
  std::string json;
  base::JSONWriter::Write(std::move(envelope), &json);
  done_({!result.ok(), base::UTF8ToWide(json)});
}

std::wstring HostCall::TextIn(const base::DictionaryValue& object, std::string_view key) {
  const base::Value* value = object.Find(key);
  const std::string* utf8 = value ? value->GetIfString() : nullptr;
  return utf8 ? base::UTF8ToWide(*utf8) : std::wstring();
}

std::int64_t HostCall::Decimal(std::string_view key) const {
  std::int64_t number = 0;
  return base::StringToInt64(Text(key), &number) ? number : 0;
}

std::int64_t HostCall::Number(std::string_view key, std::int64_t missing) const {
  const base::Value* value = plain.Find(key);
  return value ? value->GetIfInt64().value_or(missing) : missing;
}

biz::IMUserID HostCall::User() const {
  const base::Value* value = plain.Find("userid");
  const base::DictionaryValue* user = value ? value->GetIfDict() : nullptr;
  return user ? biz::IMUserID{TextIn(*user, "appkey"), TextIn(*user, "nick")} : biz::IMUserID{};
}

bool HostCalls::Has(std::wstring_view method) { return FindGroup(method) != nullptr; }

void HostCalls::Serve(const biz::IMUserID& account, std::wstring_view method,
                      std::wstring_view name, std::string json, Done done) const {
  const auto answer = std::make_shared<OneAnswer>(std::move(done));
  const Group* group = FindGroup(method);
  const HostCallRows rows = group ? group->rows() : HostCallRows();
  const auto row = std::find_if(rows.begin(), rows.end(),
                                [name](const HostCallRow& one) { return one.name == name; });
  if (row == rows.end()) return answer->Give({E_NOTIMPL, 0, {}});
  const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
  const auto engine = accounts && account.valid() ? accounts->GetAccount(account) : nullptr;
  const bool served = engine && engine->GetIMTribeMgr() && engine->GetIMContactMgr();
  if (!served) return answer->Give({E_UNEXPECTED, 0, {}});
  std::optional<base::Value> plain = base::JSONReader::Read(json);
  if (!plain || !plain->is_dict()) return answer->Give({E_INVALIDARG, 0, L"invalid!"});
  row->serve({library_, std::move(json), std::move(*plain->GetIfDict()), engine, answer});
}

}  // namespace imsdk::host
