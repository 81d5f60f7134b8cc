// Tribes: made, joined, left and handed over. Requests are records of the messaging core with a few
// plain keys beside them.
#include "client/host_call.h"
#include "imsdk/biz/tribe_mgr.h"
#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

using bridge::CoreMember;
using bridge::CoreMembers;
using bridge::CoreTribe;

RefPtr<biz::IIMTribeMgr> Mgr(const HostCall& call) { return call.account->GetIMTribeMgr(); }

void CreateTribe(const HostCall& call) {
  const CoreTribe core = call.Core<CoreTribe>();
  biz::IMNewTribe tribe;
  tribe.name = core.tribeName;
  tribe.type = core.tribeType;
  tribe.classtype = core.subType;
  tribe.password = call.Text("password");
  if (!tribe.password.empty()) tribe.authtype = biz::kJoinByPassword;
  for (const bridge::CoreTribeUser& user : core.userList) {
    tribe.members.push_back({call.account->GetSelfID().appkey, user.userId});
  }
  Mgr(call)->CreateTribe(tribe,
                         call.FinishWith<biz::IMTribeRequest>([](const biz::IMTribeRequest& made) {
                           base::DictionaryValue more;
                           more.Set("tribeid", base::NumberToString(made.tribeid.id));
                           return more;
                         }));
}

void JoinTribe(const HostCall& call) {
  const biz::IMJoinTribe join{call.Core<CoreMember>().stTribeID, call.Text("password"),
                              call.Text("authinfo")};
  Mgr(call)->JoinTribe(join,
                       call.FinishWith<biz::IMJoinedTribe>([](const biz::IMJoinedTribe& made) {
                         base::DictionaryValue more;
                         more.Set("waiting", made.waiting ? 1 : 0);
                         return more;
                       }));
}

void InviteToTribe(const HostCall& call) {
  const CoreMembers invited = call.Core<CoreMembers>();
  Mgr(call)->InviteToTribe({invited.stTribeID, invited.stUIDs, call.Text("authinfo")},
                           call.Finish());
}

void QuitTribe(const HostCall& call) {
  Mgr(call)->QuitTribe({call.Core<CoreMember>().stTribeID}, call.Finish());
}

void TransferTribe(const HostCall& call) {
  const CoreMember heir = call.Core<CoreMember>();
  Mgr(call)->TransferTribe({heir.stTribeID, heir.stUID}, call.Finish());
}

void EnableTribe(const HostCall& call) {
  Mgr(call)->EnableTribe({call.Core<CoreMember>().stTribeID}, call.Finish());
}

void SetTribe(const HostCall& call) {
  const auto key = static_cast<biz::TribeModifyKey>(call.Number("key", 0));
  Mgr(call)->SetTribe({call.Core<CoreMember>().stTribeID, key, call.Text("value")}, call.Finish());
}

void SetAttention(const HostCall& call) {
  const CoreMember member = call.Core<CoreMember>();
  Mgr(call)->SetAttention({member.stTribeID, member.stUID, call.Number("on", 1) != 0},
                          call.Finish());
}

constexpr HostCallRow kRows[] = {
    {L"CreateTribe", &CreateTribe},     {L"JoinTribe", &JoinTribe},
    {L"InviteToTribe", &InviteToTribe}, {L"QuitTribe", &QuitTribe},
    {L"TransferTribe", &TransferTribe}, {L"EnableTribe", &EnableTribe},
    {L"SetTribe", &SetTribe},           {L"SetAttention", &SetAttention}};

}  // namespace

HostCallRows TribeCalls() { return kRows; }

}  // namespace imsdk::host
