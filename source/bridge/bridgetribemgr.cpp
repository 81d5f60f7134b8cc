// Business module "im.tribemgr": tribes, but for their messages.
#include "imsdk/biz/tribe_mgr.h"

#include <utility>

#include "source/bridge/bridgemodules.h"
#include "source/bridge/bridgetribefeed.h"
#include "source/bridge/jsparams/tribeshapes.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {
namespace {

using Mgr = biz::IIMTribeMgr;
using Manager = RefPtr<Mgr>;

// Operations whose answers pages get in another shape, and what makes it.
template <class R, class A>
ServedTypes<R, void, A> OperationTypes(void (Mgr::*)(const R&, biz::IMCallback<A>));
template <auto kOperation>
using RequestOf = typename decltype(OperationTypes(kOperation))::Request;
template <auto kOperation>
using AnswerOf = typename decltype(OperationTypes(kOperation))::Answer;
template <auto kOperation, auto kMake>
using Shape = decltype(kMake(AnswerOf<kOperation>{}));

class CBridgeTribeMgr final : public CBridgeBase {
 public:
  using Form = PlainForm;
  static constexpr Name kName = "CBridgeTribeMgr";
  static constexpr RowTexts kTexts{.input = L"json:"};

  explicit CBridgeTribeMgr(ModuleContext context)
      : CBridgeBase(std::move(context), kTribeNotifications, &MakeTribeFeed,
                    {"CBridgeTribeMgr::OnAccountChanged", L"GetIMTribeMgr."}) {}
  std::span<const MethodRow> Methods() const override;

  biz::ResultCode Find(Manager* mgr) const {
    *mgr = mgr_;
    return mgr_ ? biz::ResultCode() : NotReady();
  }

  void InitTribe(const biz::IMNothing& request, Manager mgr, Call<> call) {
    if (mgr->IsShallowLogin()) return call.Finish({0, 0, L"Alread Login"});
    mgr->ShallowLogin(request, call);
  }

  template <auto kOperation, auto kMake>
  void Shaped(const RequestOf<kOperation>& request, Manager mgr,
              Call<Shape<kOperation, kMake>> call) {
    (mgr.get()->*kOperation)(
        request, [call](const biz::ResultCode& result, const AnswerOf<kOperation>& answer) {
          call.Finish(result, result.ok() ? kMake(answer) : Shape<kOperation, kMake>{});
        });
  }

  void GetTribeMemberList(const biz::IMTribeRequest& request, Manager mgr,
                          Call<biz::IMTribeRoster> call) {
    TraceTribe(call.site(), L"begin", request.tribeid);
    mgr->DeepLogin(request, [mgr, request, call](const biz::ResultCode& result) {
      CallbackDeepLoginTribe(result, request, mgr, call);
    });
  }

  void GetListDNick(const biz::IMTribeNickRequest& request, Manager mgr,
                    Call<biz::IMTribeDisplayNicks> call) {
    mgr->GetListDNick(request,
                      [call](const biz::ResultCode& result, const biz::IMTribeDisplayNicks& nicks) {
                        GeListDNickCallback(result, nicks, call);
                      });
  }

 private:
  static void TraceTribe(const ns_log::TraceSite& site, std::wstring_view text,
                         const biz::IMTribeID& tribe) {
    ns_log::CTraceProxy(ns_log::kRoutine, site, text).Brief("_brief_,tribeid", tribe.id);
  }

  // The member list, or why there is none. The engine's codes stay, the texts are fixed.
  static void CallbackDeepLoginTribe(const biz::ResultCode& login,
                                     const biz::IMTribeRequest& request, const Manager& mgr,
                                     const Call<biz::IMTribeRoster>& call) {
    if (!login.ok()) return call.Finish({login.code, login.subcode, L"deep login error"});
    mgr->GetTribeMemberList(
        request, [request, call](const biz::ResultCode& result, const biz::IMTribeRoster& roster) {
          if (result.ok()) {
            call.Finish(result, roster);
          } else {
            call.Finish({result.code, result.subcode, L"get tribe member list error"});
          }
          TraceTribe({"CBridgeTribeMgr::CallbackDeepLoginTribe"}, L"end", request.tribeid);
        });
  }

  static void GeListDNickCallback(const biz::ResultCode& result,
                                  const biz::IMTribeDisplayNicks& nicks,
                                  const Call<biz::IMTribeDisplayNicks>& call) {
    ns_log::CTraceProxy(ns_log::kRoutine, {"CBridgeTribeMgr::GeListDNickCallback"}, L"rsp: left")
        .Brief("_brief_,jsonLeftIDs", RecordText<Form>(nicks.left));
    call.Finish(result, nicks);
  }

  void OnAccountChanged(biz::IIMAccount* engine) override {
    CBridgeBase::OnAccountChanged(engine);
    mgr_ = engine ? engine->GetIMTribeMgr() : nullptr;
  }

  Manager mgr_;  // of the current account, or null
};

using M = CBridgeTribeMgr;
constexpr MethodRow kMethods[] = {
    Row<M, "GetShallowTribe", &M::Shaped<&Mgr::GetTribe, &ToShallowTribe>>("One tribe in short."),
    Row<M, "GetShallowTribeList", &M::Shaped<&Mgr::GetTribes, &ToShallowTribes>>(
        "All tribes of the account in short."),
    Row<M, "GetQuittedTribe", &M::Shaped<&Mgr::GetQuittedTribe, &ToQuittedTribes>>(
        "The tribes that the account has left, or was removed from."),
    Row<M, "GetShallowTribeEx", &M::Shaped<&Mgr::GetListedTribes, &ToShallowTribesEx>>(
        "The notice images of tribes."),
    Row<M, "GetTribeMemberList", &M::GetTribeMemberList>(
        "All members of a tribe; who is online is told by notifications from then on."),
    Row<M, "GetTribeMemberbyID", &Mgr::GetTribeMemberbyID>(
        "Those of the users named who are members."),
    Row<M, "GetAttentionMembers", &Mgr::GetAttentionMembers>(
        "The members whom the account pays attention to."),
    Row<M, "GetTribeBulletin", &Mgr::GetTribeBulletin>("The tribe's bulletin."),
    Row<M, "SearchTribeMember", &Mgr::SearchTribeMember>(
        "Members with a text in one of their names, at most 200."),
    Row<M, "SelectTribeSearchResult", &Mgr::SelectTribeSearchResult>(
        "What the last search in this tribe found comes first in the next ones."),
    Row<M, "GetTribeBaseInfo", &M::Shaped<&Mgr::GetTribe, &ToTribeBaseInfo>>(
        "What a tribe says of itself, also to those who are no members and may see it."),
    Row<M, "GetAllClass", &Mgr::GetAllClass>("The classes that a tribe can have."),
    Row<M, "SetClass", &Mgr::SetClass>("Gives the tribe another class; managers only."),
    Row<M, "SetTribeName", &Mgr::SetTribeName>("Renames a tribe; managers only."),
    Row<M, "SetTribeDes", &Mgr::SetTribeDes>("Describes a tribe; managers only."),
    Row<M, "ClearVisitors", &Mgr::ClearVisitors>("Forgets the tribe's visitors; managers only."),
    Row<M, "KickTribeMember", &Mgr::KickTribeMember>(
        "Removes a member of a lower level than one's own; managers only."),
    Row<M, "ChangeLevel", &Mgr::ChangeLevel>(
        "Makes a member an administrator, or an administrator a member; the owner only."),
    Row<M, "GetMyTribeNickname", &Mgr::GetMyTribeNickname>("One's own name in the tribe."),
    Row<M, "SetMyTribeNickname", &Mgr::SetMyTribeNickname>("Sets one's own name in the tribe."),
    Row<M, "SetTribeMemberNicknameByAdmin", &Mgr::SetTribeMemberNicknameByAdmin>(
        "Sets the name in the tribe of a member of a lower level; managers only."),
    Row<M, "SetMsgRemindType", &Mgr::SetMsgRemindType>(
        "Which of the tribe's messages count: 0 all and shown, 1 all and not shown, 2 none."),
    Row<M, "GetMsgRemindType", &Mgr::GetMsgRemindType>("Which of the tribe's messages count."),
    Row<M, "SetAuthType", &Mgr::SetAuthType>(
        "Who may join: 0 everybody, 1 by a password, 2 when a manager allows it, 3 who is invited; "
        "managers only."),
    Row<M, "GetAuthType", &Mgr::GetAuthType>("Who may join."),
    Row<M, "GetJoinPwd", &Mgr::GetJoinPwd>("The password to join by; managers only."),
    Secret("str",
           Row<M, "SetJoinPwd", &Mgr::SetJoinPwd>("Sets the password to join by; managers only.")),
    Row<M, "IsAllowShowChatRecordBeforeJoin", &Mgr::IsAllowShowChatRecordBeforeJoin>(
        "Whether members see what was written before they joined: 0 or 1."),
    Row<M, "SetAllowShowChatRecordBeforeJoin", &Mgr::SetAllowShowChatRecordBeforeJoin>(
        "Whether members see what was written before they joined: 0 or 1; managers only."),
    Row<M, "SetAtAllPermission", &Mgr::SetAtAllPermission>(
        "Who may mention all members at once: 0 managers, 1 everybody; managers only."),
    Row<M, "GetAtAllPermission", &Mgr::GetAtAllPermission>("Who may mention all members at once."),
    Row<M, "SetAllowVisitor", &Mgr::SetAllowVisitor>(
        "Whether those who are no members may look at it: 0 or 1; managers only."),
    Row<M, "IsAllowVisitor", &Mgr::IsAllowVisitor>(
        "Whether those who are no members may look at it: 0 or 1."),
    Row<M, "AddTribeBlack", &Mgr::AddTribeBlack>(
        "Puts a user on the tribe's black list; managers only."),
    Row<M, "DelTribeBlack", &Mgr::DelTribeBlack>(
        "Takes a user off the tribe's black list; managers only."),
    Row<M, "GetTribeBlackList", &M::Shaped<&Mgr::GetTribeBlackList, &ToTribeBlackItems>>(
        "Who is on the tribe's black list; managers only."),
    Row<M, "InitTribe", &M::InitTribe>(
        "Logs the account into its tribes; says so when it is already."),
    Row<M, "GetVisitorCount", &Mgr::GetVisitorCount>(
        "How many visitors there were since they were last cleared; managers only."),
    Row<M, "CloseTribe", &Mgr::CloseTribe>("Closes the tribe; the owner only."),
    Row<M, "GetListDNick", &M::GetListDNick>(
        "The names to show in the tribe of those of the users who are members.",
        {.unreadable = L"PARAM ERROR, JSON:"}),
    Row<M, "GetMultiChatMembers", &Mgr::GetMultiChatMembers>("All members of a multi-chat."),
    Row<M, "ChangeMultiName", &Mgr::ChangeMultiName>("Renames a multi-chat; every member may."),
    Row<M, "GetTribeVerifyMsgs", &M::Shaped<&Mgr::GetTribeVerifyMsgs, &ToTribeVerifyMsgs>>(
        "Requests to join, and invitations, with what became of them."),
    Row<M, "AllowJoinTribe", &Mgr::AllowJoinTribe>("Allows somebody to join; managers only."),
    Row<M, "RefuseJoinTribe", &Mgr::RefuseJoinTribe>("Refuses a request to join; managers only."),
    Row<M, "AddToTribeBlack", &Mgr::AddToTribeBlack>(
        "Refuses a request to join and puts who asked on the black list; managers only."),
    Row<M, "AllowInviteJoinTribe", &Mgr::AllowInviteJoinTribe>("Accepts an invitation."),
    Row<M, "RefuseInviteJoinTribe", &Mgr::RefuseInviteJoinTribe>("Refuses an invitation."),
    Row<M, "DeleteTribeVerifyMsgs", &Mgr::DeleteTribeVerifyMsgs>(
        "Takes a verification message off the account's own list."),
    Row<M, "GetEnableTribeNum", &Mgr::GetEnableTribeNum>(
        "How many tribes the account has, and how many of them are not closed."),
};

std::span<const MethodRow> CBridgeTribeMgr::Methods() const { return kMethods; }

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeTribeMgr(const ModuleContext& context) {
  return std::make_shared<CBridgeTribeMgr>(context);
}

}  // namespace imsdk::bridge
