// The tribes of an account of the engine in memory: every operation is noted and answered at once
// with what the test wants.
#pragma once

#include <any>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "imsdk/biz/tribe_mgr.h"

namespace imsdk::test {

class MemoryTribeMgr final : public RefPtrCounted<biz::IIMTribeMgr> {
 public:
  biz::IMTribeEvents& Events() override { return events; }
  bool IsShallowLogin() override { return logged_in; }

#define ANSWERS(Operation, Request, ...)                                                    \
  void Operation(const biz::Request& request, biz::IMCallback<__VA_ARGS__> done) override { \
    Answer(#Operation, request, std::move(done));                                           \
  }
  ANSWERS(ShallowLogin, IMNothing)
  ANSWERS(DeepLogin, IMTribeRequest)
  ANSWERS(GetTribe, IMTribeRequest, biz::IMTribeInfo)
  ANSWERS(GetTribes, IMNothing, biz::IMTribes)
  ANSWERS(GetListedTribes, IMTribeList, biz::IMTribes)
  ANSWERS(GetQuittedTribe, IMNothing, biz::IMTribes)
  ANSWERS(GetEnableTribeNum, IMNothing, biz::IMEnableTribeNum)
  ANSWERS(GetTribeBulletin, IMTribeRequest, biz::IMTribeTextValue)
  ANSWERS(GetVisitorCount, IMTribeRequest, biz::IMTribeNumberValue)
  ANSWERS(ClearVisitors, IMTribeRequest)
  ANSWERS(CloseTribe, IMTribeRequest)
  ANSWERS(GetTribeMemberList, IMTribeRequest, biz::IMTribeRoster)
  ANSWERS(GetTribeMemberbyID, IMTribeMembersRequest, biz::IMTribeMembers)
  ANSWERS(GetAttentionMembers, IMTribeRequest, biz::IMTribeMembers)
  ANSWERS(GetMultiChatMembers, IMTribeRequest, biz::IMTribeMembers)
  ANSWERS(SearchTribeMember, IMTribeMemberSearch, biz::IMTribeMembers)
  ANSWERS(SelectTribeSearchResult, IMTribeRequest)
  ANSWERS(GetListDNick, IMTribeNickRequest, biz::IMTribeDisplayNicks)
  ANSWERS(KickTribeMember, IMTribeUser)
  ANSWERS(ChangeLevel, IMTribeMemberLevel)
  ANSWERS(GetMyTribeNickname, IMTribeRequest, biz::IMTribeNicknameValue)
  ANSWERS(SetMyTribeNickname, IMTribeNickname)
  ANSWERS(SetTribeMemberNicknameByAdmin, IMTribeNickname)
  ANSWERS(ChangeMultiName, IMMultiChatName)
  ANSWERS(GetAllClass, IMNothing, biz::IMTribeClasses)
  ANSWERS(SetClass, IMTribeNumber)
  ANSWERS(SetTribeName, IMTribeText)
  ANSWERS(SetTribeDes, IMTribeText)
  ANSWERS(SetMsgRemindType, IMTribeNumber)
  ANSWERS(GetMsgRemindType, IMTribeRequest, biz::IMTribeNumberValue)
  ANSWERS(SetAuthType, IMTribeNumber)
  ANSWERS(GetAuthType, IMTribeRequest, biz::IMTribeNumberValue)
  ANSWERS(SetJoinPwd, IMTribeText)
  ANSWERS(GetJoinPwd, IMTribeRequest, biz::IMTribeTextValue)
  ANSWERS(SetAllowShowChatRecordBeforeJoin, IMTribeNumber)
  ANSWERS(IsAllowShowChatRecordBeforeJoin, IMTribeRequest, biz::IMTribeNumberValue)
  ANSWERS(SetAllowVisitor, IMTribeNumber)
  ANSWERS(IsAllowVisitor, IMTribeRequest, biz::IMTribeNumberValue)
  ANSWERS(SetAtAllPermission, IMTribeNumber)
  ANSWERS(GetAtAllPermission, IMTribeRequest, biz::IMTribeNumberValue)
  ANSWERS(AddTribeBlack, IMTribeUser)
  ANSWERS(DelTribeBlack, IMTribeUser)
  ANSWERS(GetTribeBlackList, IMTribeRequest, biz::IMTribeBlackList)
  ANSWERS(GetTribeVerifyMsgs, IMTribeVerifyPage, biz::IMTribeVerifyMsgs)
  ANSWERS(AllowJoinTribe, IMTribeVerifyAction)
  ANSWERS(RefuseJoinTribe, IMTribeVerifyAction)
  ANSWERS(AddToTribeBlack, IMTribeVerifyAction)
  ANSWERS(AllowInviteJoinTribe, IMTribeVerifyAction)
  ANSWERS(RefuseInviteJoinTribe, IMTribeVerifyAction)
  ANSWERS(DeleteTribeVerifyMsgs, IMTribeVerifyAction)
  ANSWERS(CreateTribe, IMNewTribe, biz::IMTribeRequest)
  ANSWERS(JoinTribe, IMJoinTribe, biz::IMJoinedTribe)
  ANSWERS(InviteToTribe, IMTribeInvitation)
  ANSWERS(QuitTribe, IMTribeRequest)
  ANSWERS(TransferTribe, IMTribeUser)
  ANSWERS(EnableTribe, IMTribeRequest)
  ANSWERS(SetTribe, IMTribeSetting)
  ANSWERS(SetAttention, IMTribeAttention)
#undef ANSWERS

  // The request of the last operation.
  template <class Request>
  const Request& Last() const {
    return std::any_cast<const Request&>(last);
  }

  biz::IMTribeEvents events;
  bool logged_in = false;
  // What operations answer: the outcome of one with a name here, else of all others.
  biz::ResultCode result;
  std::map<std::string, biz::ResultCode> results;
  std::tuple<biz::IMTribeInfo, biz::IMTribes, biz::IMEnableTribeNum, biz::IMTribeTextValue,
             biz::IMTribeNumberValue, biz::IMTribeNicknameValue, biz::IMTribeRoster,
             biz::IMTribeMembers, biz::IMTribeDisplayNicks, biz::IMTribeClasses,
             biz::IMTribeBlackList, biz::IMTribeVerifyMsgs, biz::IMTribeRequest, biz::IMJoinedTribe>
      answers;
  // What was asked.
  std::vector<std::string> asked;
  std::any last;

 private:
  template <class Request, class... A>
  void Answer(const char* operation, const Request& request, biz::IMCallback<A...> done) {
    asked.push_back(operation);
    last = request;
    if constexpr (requires { request.tribeid; }) {
      if (request.tribeid.id == 0) {
        return done({biz::kEngineRefused, biz::kTribeUnknown, L"there is no such tribe"}, A{}...);
      }
    }
    const auto own = results.find(operation);
    done(own == results.end() ? result : own->second, std::get<A>(answers)...);
  }
};

}  // namespace imsdk::test
