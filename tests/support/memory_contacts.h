// The contacts of an account of the engine in memory.
#pragma once

#include <vector>

#include "imsdk/biz/contact.h"
#include "tests/support/memory_answers.h"

namespace imsdk::test {

class MemoryContacts final
    : public RefPtrCounted<biz::IIMContactMgr>,
      public MemoryAnswers<biz::IMContacts, biz::IMDisplayNames, biz::IMUserNicks,
                           biz::IMContactGroupInfo, biz::IMContactVerifyMsgs, biz::IMContactList,
                           biz::IMContactGroupRequest> {
 public:
  biz::IMContactEvents& Events() override { return events; }

  IMSDK_MEMORY_ANSWERS(GetContactBaseInfo, IMUsers, biz::IMContacts)
  IMSDK_MEMORY_ANSWERS(GetContactDisplayName, IMUsers, biz::IMDisplayNames)
  IMSDK_MEMORY_ANSWERS(GetUserDisplayNick, IMLongUserIDs, biz::IMUserNicks)
  IMSDK_MEMORY_ANSWERS(GetGroupInfo, IMContactGroupRequest, biz::IMContactGroupInfo)
  IMSDK_MEMORY_ANSWERS(AgreeAddContact, IMContactAction)
  IMSDK_MEMORY_ANSWERS(AgreeAndAddContact, IMContactAction)
  IMSDK_MEMORY_ANSWERS(RefuseAddContact, IMContactAction)
  IMSDK_MEMORY_ANSWERS(AddToBlack, IMContactAction)
  IMSDK_MEMORY_ANSWERS(ReportAddContact, IMContactAction)
  IMSDK_MEMORY_ANSWERS(IgnoreAddContact, IMContactAction)
  IMSDK_MEMORY_ANSWERS(DeleteContactVerifyMsgs, IMContactActions)
  IMSDK_MEMORY_ANSWERS(GetContactVerifyMsgs, IMContactVerifyPage, biz::IMContactVerifyMsgs)
  IMSDK_MEMORY_ANSWERS(GetContactList, IMNothing, biz::IMContactList)
  IMSDK_MEMORY_ANSWERS(AskContact, IMContactRequest)
  IMSDK_MEMORY_ANSWERS(RemoveContact, IMContactUser)
  IMSDK_MEMORY_ANSWERS(MoveContact, IMContactPlace)
  IMSDK_MEMORY_ANSWERS(SetAsterisk, IMContactSwitch)
  IMSDK_MEMORY_ANSWERS(SetGroup, IMContactGroupChange, biz::IMContactGroupRequest)
  IMSDK_MEMORY_ANSWERS(SetProfile, IMProfile)
  IMSDK_MEMORY_ANSWERS(SearchUsers, IMUserSearch, biz::IMContacts)
  IMSDK_MEMORY_ANSWERS(GetBlackList, IMNothing, biz::IMContacts)
  IMSDK_MEMORY_ANSWERS(SetBlack, IMContactSwitch)

  std::vector<biz::IMContact> GetAsteriskUsers() override { return marked; }

  biz::IMContactEvents events;
  std::vector<biz::IMContact> marked;
};

}  // namespace imsdk::test
