// Business module "im.contact": contacts and the requests to become one.
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "kexcom/result.h"
#include "source/bridge/bridgecontactfeed.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/jsparams/contactrecords.h"
#include "source/bridge/jsparams/longuserid.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {
namespace {

using Mgr = biz::IIMContactMgr;
using Manager = RefPtr<Mgr>;

class CBridgeContact final : public CBridgeBase {
 public:
  using Form = PlainForm;
  static constexpr Name kName = "CBridgeContact";
  static constexpr RowTexts kTexts{};

  explicit CBridgeContact(ModuleContext context)
      : CBridgeBase(std::move(context), kContactNotifications, &MakeContactFeed,
                    {"CBridgeContact::OnAccountChanged", L"GetIMContactMgr."}) {}
  std::span<const MethodRow> Methods() const override;

  biz::ResultCode Find(Manager* mgr) const {
    *mgr = mgr_;
    return mgr_ ? biz::ResultCode() : NotReady();
  }

  void GetContactBaseInfo(const ContactNames& request, Manager mgr, Call<biz::IMContacts> call) {
    biz::IMUsers users;
    users.userids.reserve(request.items.size());
    for (const ContactName& one : request.items) users.userids.push_back(one.userid);
    mgr->GetContactBaseInfo(users, call);
  }

  void GetAsteriskUserList(const biz::IMNothing&, Manager mgr, Call<AsteriskUsers> call) {
    AsteriskUsers users;
    for (const biz::IMContact& one : mgr->GetAsteriskUsers()) {
      users.items.push_back({one.userid.appkey, one.userid.nick, one.display, one.portrait});
    }
    call.Succeed(users);
  }

  void GetGroupInfo(const GroupName& request, Manager mgr, Call<biz::IMContactGroupInfo> call) {
    const biz::IMContactGroupRequest group{request.groupid.value};
    if (!request.groupid.given || group.groupid < 0) {
      return call.Fail(E_INVALIDARG, L"invalid gid json");
    }
    call.Trace(ns_log::kRoutine, L"begin").Brief("_brief_,groupid", group.groupid);
    mgr->GetGroupInfo(group,
                      [call](const biz::ResultCode& result, const biz::IMContactGroupInfo& info) {
                        if (result.ok() && info.name.empty()) {
                          call.Trace(ns_log::kWarning, L"can NOT get display name!");
                        }
                        call.Finish(result, info);
                      });
  }

  // Decisions need the account to be connected.
  template <auto kOperation>
  void Act(const biz::IMContactAction& request, Manager mgr, Call<> call) {
    if (account_->GetState() != biz::kAccountOnline) return call.Refuse(NotReady());
    (mgr.get()->*kOperation)(request, std::move(call));
  }

  void GetUserDisplayNick(const LongUserIds& request, Manager mgr, Call<UserNicks> call) {
    UserNicks nicks;
    biz::IMLongUserIDs asked;
    for (const LongUserId& id : request.items) {
      nicks.items.push_back({id.text, {}, false});
      if (id.text.empty()) {
        call.Trace(ns_log::kError, L"invalid uid");
      } else {
        asked.users.push_back(SplitLongUserId(id.text));
      }
    }
    mgr->GetUserDisplayNick(asked, [call, nicks = std::move(nicks)](const biz::ResultCode& result,
                                                                    const biz::IMUserNicks& found) {
      GetUserDisplayNickImp(result, found, nicks, call);
    });
  }

 private:
  // Gives the users the names that were found, in the order of the request.
  static void GetUserDisplayNickImp(const biz::ResultCode& result, const biz::IMUserNicks& found,
                                    UserNicks nicks, const Call<UserNicks>& call) {
    std::map<std::wstring_view, std::wstring_view> names;
    for (const biz::IMUserNick& one : found.nicks) names.emplace(one.identifier, one.nick);
    std::vector<std::wstring> left;
    for (UserNick& one : nicks.items) {
      const auto name = names.find(SplitLongUserId(one.uid).identifier);
      one.is_valid = name != names.end();
      if (one.is_valid) {
        one.snick = name->second;
      } else {
        left.push_back(one.uid);
      }
    }
    call.Trace(ns_log::kRoutine, L"rsp: left", "GetUserDisplayNickImp")
        .Brief("_brief_,jsonLeftIDs", RecordText<Form>(left));
    call.Finish(result, nicks);
  }

  void OnAccountChanged(biz::IIMAccount* engine) override {
    CBridgeBase::OnAccountChanged(engine);
    account_ = RefPtr<biz::IIMAccount>(engine);
    mgr_ = engine ? engine->GetIMContactMgr() : nullptr;
  }

  RefPtr<biz::IIMAccount> account_;  // the current one, or null
  Manager mgr_;                      // of the current account, or null
};

using M = CBridgeContact;
constexpr MethodRow kMethods[] = {
    Row<M, "GetContactBaseInfo", &M::GetContactBaseInfo>(
        "What the account may see of users: name, portrait, whether they are there."),
    Row<M, "GetAsteriskUserList", &M::GetAsteriskUserList>("The contacts that bear a mark."),
    Row<M, "GetGroupInfo", &M::GetGroupInfo>("A group's sub-groups and members."),
    Row<M, "AgreeAddContact", &M::Act<&Mgr::AgreeAddContact>>(
        "Lets who asks have the account as a contact."),
    Row<M, "AgreeAndAddContact", &M::Act<&Mgr::AgreeAndAddContact>>(
        "The same, and makes who asks a contact in turn."),
    Row<M, "RefuseAddContact", &M::Act<&Mgr::RefuseAddContact>>("Refuses a request."),
    Row<M, "AddToBlack", &M::Act<&Mgr::AddToBlack>>(
        "Refuses, and puts who asks on the black list; also somebody who did not ask."),
    Row<M, "ReportAddContact", &Mgr::ReportAddContact>(
        "Puts a request aside and reports it to the server's administration."),
    Row<M, "IgnoreAddContact", &Mgr::IgnoreAddContact>(
        "Puts a request aside; who asks hears nothing."),
    Row<M, "DeleteContactVerifyMsgs", &Mgr::DeleteContactVerifyMsgs>(
        "Takes verification messages off the account's own list."),
    Row<M, "GetContactVerifyMsgs", &Mgr::GetContactVerifyMsgs>(
        "A page of requests and answers, oldest first."),
    Row<M, "GetContactDisplayName", &Mgr::GetContactDisplayName>("The names to show for users."),
    Row<M, "GetUserDisplayNick", &M::GetUserDisplayNick>(
        "The names to show for users named by long identifiers, in their order."),
};

std::span<const MethodRow> CBridgeContact::Methods() const { return kMethods; }

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeContact(const ModuleContext& context) {
  return std::make_shared<CBridgeContact>(context);
}

}  // namespace imsdk::bridge
