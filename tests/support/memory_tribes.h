// The tribes of an account of the engine in memory.
#pragma once

#include "imsdk/biz/tribe_mgr.h"
#include "tests/support/memory_answers.h"

namespace imsdk::test {

class MemoryTribeMgr final
    : public RefPtrCounted<biz::IIMTribeMgr>,
      public MemoryAnswers<biz::IMTribeInfo, biz::IMTribes, biz::IMEnableTribeNum,
                           biz::IMTribeTextValue, biz::IMTribeNumberValue,
                           biz::IMTribeNicknameValue, biz::IMTribeRoster, biz::IMTribeMembers,
                           biz::IMTribeDisplayNicks, biz::IMTribeClasses, biz::IMTribeBlackList,
                           biz::IMTribeVerifyMsgs, biz::IMTribeRequest, biz::IMJoinedTribe> {
 public:
  biz::IMTribeEvents& Events() override { return events; }
  bool IsShallowLogin() override { return logged_in; }

  IMSDK_MEMORY_ANSWERS(ShallowLogin, IMNothing)
  IMSDK_MEMORY_ANSWERS(DeepLogin, IMTribeRequest)
  IMSDK_MEMORY_ANSWERS(GetTribe, IMTribeRequest, biz::IMTribeInfo)
  IMSDK_MEMORY_ANSWERS(GetTribes, IMNothing, biz::IMTribes)
  IMSDK_MEMORY_ANSWERS(GetListedTribes, IMTribeList, biz::IMTribes)
  IMSDK_MEMORY_ANSWERS(GetQuittedTribe, IMNothing, biz::IMTribes)
  IMSDK_MEMORY_ANSWERS(GetEnableTribeNum, IMNothing, biz::IMEnableTribeNum)
  IMSDK_MEMORY_ANSWERS(GetTribeBulletin, IMTribeRequest, biz::IMTribeTextValue)
  IMSDK_MEMORY_ANSWERS(GetVisitorCount, IMTribeRequest, biz::IMTribeNumberValue)
  IMSDK_MEMORY_ANSWERS(ClearVisitors, IMTribeRequest)
  IMSDK_MEMORY_ANSWERS(CloseTribe, IMTribeRequest)
  IMSDK_MEMORY_ANSWERS(GetTribeMemberList, IMTribeRequest, biz::IMTribeRoster)
  IMSDK_MEMORY_ANSWERS(GetTribeMemberbyID, IMTribeMembersRequest, biz::IMTribeMembers)
  IMSDK_MEMORY_ANSWERS(GetAttentionMembers, IMTribeRequest, biz::IMTribeMembers)
  IMSDK_MEMORY_ANSWERS(GetMultiChatMembers, IMTribeRequest, biz::IMTribeMembers)
  IMSDK_MEMORY_ANSWERS(SearchTribeMember, IMTribeMemberSearch, biz::IMTribeMembers)
  IMSDK_MEMORY_ANSWERS(SelectTribeSearchResult, IMTribeRequest)
  IMSDK_MEMORY_ANSWERS(GetListDNick, IMTribeNickRequest, biz::IMTribeDisplayNicks)
  IMSDK_MEMORY_ANSWERS(KickTribeMember, IMTribeUser)
  IMSDK_MEMORY_ANSWERS(ChangeLevel, IMTribeMemberLevel)
  IMSDK_MEMORY_ANSWERS(GetMyTribeNickname, IMTribeRequest, biz::IMTribeNicknameValue)
  IMSDK_MEMORY_ANSWERS(SetMyTribeNickname, IMTribeNickname)
  IMSDK_MEMORY_ANSWERS(SetTribeMemberNicknameByAdmin, IMTribeNickname)
  IMSDK_MEMORY_ANSWERS(ChangeMultiName, IMMultiChatName)
  IMSDK_MEMORY_ANSWERS(GetAllClass, IMNothing, biz::IMTribeClasses)
  IMSDK_MEMORY_ANSWERS(SetClass, IMTribeNumber)
  IMSDK_MEMORY_ANSWERS(SetTribeName, IMTribeText)
  IMSDK_MEMORY_ANSWERS(SetTribeDes, IMTribeText)
  IMSDK_MEMORY_ANSWERS(SetMsgRemindType, IMTribeNumber)
  IMSDK_MEMORY_ANSWERS(GetMsgRemindType, IMTribeRequest, biz::IMTribeNumberValue)
  IMSDK_MEMORY_ANSWERS(SetAuthType, IMTribeNumber)
  IMSDK_MEMORY_ANSWERS(GetAuthType, IMTribeRequest, biz::IMTribeNumberValue)
  IMSDK_MEMORY_ANSWERS(SetJoinPwd, IMTribeText)
  IMSDK_MEMORY_ANSWERS(GetJoinPwd, IMTribeRequest, biz::IMTribeTextValue)
  IMSDK_MEMORY_ANSWERS(SetAllowShowChatRecordBeforeJoin, IMTribeNumber)
  IMSDK_MEMORY_ANSWERS(IsAllowShowChatRecordBeforeJoin, IMTribeRequest, biz::IMTribeNumberValue)
  IMSDK_MEMORY_ANSWERS(SetAllowVisitor, IMTribeNumber)
  IMSDK_MEMORY_ANSWERS(IsAllowVisitor, IMTribeRequest, biz::IMTribeNumberValue)
  IMSDK_MEMORY_ANSWERS(SetAtAllPermission, IMTribeNumber)
  IMSDK_MEMORY_ANSWERS(GetAtAllPermission, IMTribeRequest, biz::IMTribeNumberValue)
  IMSDK_MEMORY_ANSWERS(AddTribeBlack, IMTribeUser)
  IMSDK_MEMORY_ANSWERS(DelTribeBlack, IMTribeUser)
  IMSDK_MEMORY_ANSWERS(GetTribeBlackList, IMTribeRequest, biz::IMTribeBlackList)
  IMSDK_MEMORY_ANSWERS(GetTribeVerifyMsgs, IMTribeVerifyPage, biz::IMTribeVerifyMsgs)
  IMSDK_MEMORY_ANSWERS(AllowJoinTribe, IMTribeVerifyAction)
  IMSDK_MEMORY_ANSWERS(RefuseJoinTribe, IMTribeVerifyAction)
  IMSDK_MEMORY_ANSWERS(AddToTribeBlack, IMTribeVerifyAction)
  IMSDK_MEMORY_ANSWERS(AllowInviteJoinTribe, IMTribeVerifyAction)
  IMSDK_MEMORY_ANSWERS(RefuseInviteJoinTribe, IMTribeVerifyAction)
  IMSDK_MEMORY_ANSWERS(DeleteTribeVerifyMsgs, IMTribeVerifyAction)
  IMSDK_MEMORY_ANSWERS(CreateTribe, IMNewTribe, biz::IMTribeRequest)
  IMSDK_MEMORY_ANSWERS(JoinTribe, IMJoinTribe, biz::IMJoinedTribe)
  IMSDK_MEMORY_ANSWERS(InviteToTribe, IMTribeInvitation)
  IMSDK_MEMORY_ANSWERS(QuitTribe, IMTribeRequest)
  IMSDK_MEMORY_ANSWERS(TransferTribe, IMTribeUser)
  IMSDK_MEMORY_ANSWERS(EnableTribe, IMTribeRequest)
  IMSDK_MEMORY_ANSWERS(SetTribe, IMTribeSetting)
  IMSDK_MEMORY_ANSWERS(SetAttention, IMTribeAttention)

  biz::IMTribeEvents events;
  bool logged_in = false;
};

}  // namespace imsdk::test
