#include "client/tribe_calls.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <utility>
#include <variant>

#include "imsdk/biz/account.h"
#include "imsdk/biz/tribe_mgr.h"
#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"
#include "kexcore/kexcom.h"

namespace imsdk::host {
namespace {

using bridge::CoreMember;
using bridge::CoreMembers;
using bridge::CoreTribe;

// The one answer of a call, also when the engine drops its callback.
class OneAnswer {
 public:
  explicit OneAnswer(TribeCalls::Done done) : done_(std::move(done)) {}
  ~OneAnswer() {
    try {
      Give({E_UNEXPECTED, 0, {}});
    } catch (...) {  // memory has run out
    }
  }
  OneAnswer(const OneAnswer&) = delete;
  OneAnswer& operator=(const OneAnswer&) = delete;

  void Give(const biz::ResultCode& result, const base::DictionaryValue& more = {}) {
    if (given_.exchange(true)) return;
    std::string text = base::WideToUTF8(result.text);
    if (text.empty()) text = result.ok() ? "success" : "failed";
    base::DictionaryValue envelope;
    envelope.Set("code", result.code);
    envelope.Set("subcode", result.subcode);
    envelope.Set("result", std::move(text));
    for (const auto& [key, value] : more) envelope.Set(key, value);
    std::string json;
    base::JSONWriter::Write(std::move(envelope), &json);
    done_({!result.ok(), base::UTF8ToWide(json)});
  }

 private:
  const TribeCalls::Done done_;
  std::atomic<bool> given_{false};
};

// One call: its request and what serves it.
struct TribeCall {
  const BridgeLibrary& library;
  std::string json;
  base::DictionaryValue plain;
  biz::IMUserID self;
  RefPtr<biz::IIMTribeMgr> mgr;
  std::shared_ptr<OneAnswer> answer;

  // What of the request is a record of the core.
  template <class R>
  R Core() const {
    bridge::CoreRecord record = R{};
    library.ReadCore(json, &record);
    return std::get<R>(std::move(record));
  }
  std::wstring Text(std::string_view key) const {
    const base::Value* value = plain.Find(key);
    const std::string* utf8 = value ? value->GetIfString() : nullptr;
    return utf8 ? base::UTF8ToWide(*utf8) : std::wstring();
  }
  std::int64_t Number(std::string_view key, std::int64_t missing) const {
    const base::Value* value = plain.Find(key);
    return value ? value->GetIfInt64().value_or(missing) : missing;
  }
  // Answers with the outcome alone.
  biz::IMCallback<> Finish() const {
    return [answer = answer](const biz::ResultCode& result) { answer->Give(result); };
  }
};

void CreateTribe(const TribeCall& call) {
  const CoreTribe core = call.Core<CoreTribe>();
  biz::IMNewTribe tribe;
  tribe.name = core.tribeName;
  tribe.type = core.tribeType;
  tribe.classtype = core.subType;
  tribe.password = call.Text("password");
  if (!tribe.password.empty()) tribe.authtype = biz::kJoinByPassword;
  for (const bridge::CoreTribeUser& user : core.userList) {
    tribe.members.push_back({call.self.appkey, user.userId});
  }
  call.mgr->CreateTribe(tribe, [answer = call.answer](const biz::ResultCode& result,
                                                      const biz::IMTribeRequest& made) {
    base::DictionaryValue more;
    if (result.ok()) more.Set("tribeid", base::NumberToString(made.tribeid.id));
    answer->Give(result, more);
  });
}

void JoinTribe(const TribeCall& call) {
  const biz::IMJoinTribe join{call.Core<CoreMember>().stTribeID, call.Text("password"),
                              call.Text("authinfo")};
  call.mgr->JoinTribe(
      join, [answer = call.answer](const biz::ResultCode& result, const biz::IMJoinedTribe& made) {
        base::DictionaryValue more;
        if (result.ok()) more.Set("waiting", made.waiting ? 1 : 0);
        answer->Give(result, more);
      });
}

void InviteToTribe(const TribeCall& call) {
  const CoreMembers invited = call.Core<CoreMembers>();
  call.mgr->InviteToTribe({invited.stTribeID, invited.stUIDs, call.Text("authinfo")},
                          call.Finish());
}

void QuitTribe(const TribeCall& call) {
  call.mgr->QuitTribe({call.Core<CoreMember>().stTribeID}, call.Finish());
}

void TransferTribe(const TribeCall& call) {
  const CoreMember heir = call.Core<CoreMember>();
  call.mgr->TransferTribe({heir.stTribeID, heir.stUID}, call.Finish());
}

void EnableTribe(const TribeCall& call) {
  call.mgr->EnableTribe({call.Core<CoreMember>().stTribeID}, call.Finish());
}

void SetTribe(const TribeCall& call) {
  const auto key = static_cast<biz::TribeModifyKey>(call.Number("key", 0));
  call.mgr->SetTribe({call.Core<CoreMember>().stTribeID, key, call.Text("value")}, call.Finish());
}

void SetAttention(const TribeCall& call) {
  const CoreMember member = call.Core<CoreMember>();
  call.mgr->SetAttention({member.stTribeID, member.stUID, call.Number("on", 1) != 0},
                         call.Finish());
}

struct Row {
  std::wstring_view name;
  void (*serve)(const TribeCall& call);
};
constexpr Row kRows[] = {{L"CreateTribe", &CreateTribe},     {L"JoinTribe", &JoinTribe},
                         {L"InviteToTribe", &InviteToTribe}, {L"QuitTribe", &QuitTribe},
                         {L"TransferTribe", &TransferTribe}, {L"EnableTribe", &EnableTribe},
                         {L"SetTribe", &SetTribe},           {L"SetAttention", &SetAttention}};

RefPtr<biz::IIMTribeMgr> TribesOf(const biz::IMUserID& user) {
  const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
  const auto account = accounts && user.valid() ? accounts->GetAccount(user) : nullptr;
  return account ? account->GetIMTribeMgr() : nullptr;
}

}  // namespace

void TribeCalls::Serve(const biz::IMUserID& account, std::wstring_view name, std::string json,
                       Done done) const {
  const auto answer = std::make_shared<OneAnswer>(std::move(done));
  const Row* row = std::find_if(std::begin(kRows), std::end(kRows),
                                [name](const Row& one) { return one.name == name; });
  if (row == std::end(kRows)) return answer->Give({E_NOTIMPL, 0, {}});
  const RefPtr<biz::IIMTribeMgr> mgr = TribesOf(account);
  if (!mgr) return answer->Give({E_UNEXPECTED, 0, {}});
  std::optional<base::Value> plain = base::JSONReader::Read(json);
  if (!plain || !plain->is_dict()) return answer->Give({E_INVALIDARG, 0, L"invalid!"});
  row->serve({library_, std::move(json), std::move(*plain->GetIfDict()), account, mgr, answer});
}

}  // namespace imsdk::host
