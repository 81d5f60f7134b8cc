// The account's contacts as the bridge sees them.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "account/contacts/contact_book.h"
#include "account/session/on_worker.h"
#include "imsdk/biz/contact.h"

namespace imsdk::account {

class ContactMgr final : public RefPtrCounted<biz::IIMContactMgr> {
 public:
  template <class... Answer>
  using Done = biz::IMCallback<Answer...>;

  ContactMgr(std::shared_ptr<AccountState> state, std::shared_ptr<ContactBook> book)
      : state_(std::move(state)), book_(std::move(book)) {}

  biz::IMContactEvents& Events() override { return state_->contact_events; }

  void GetContactBaseInfo(const biz::IMUsers& request, Done<biz::IMContacts> done) override;
  void GetContactDisplayName(const biz::IMUsers& request, Done<biz::IMDisplayNames> done) override;
  void GetUserDisplayNick(const biz::IMLongUserIDs& request, Done<biz::IMUserNicks> done) override;
  std::vector<biz::IMContact> GetAsteriskUsers() override { return book_->Marked(); }
  void GetGroupInfo(const biz::IMContactGroupRequest& request,
                    Done<biz::IMContactGroupInfo> done) override;
  void AgreeAddContact(const biz::IMContactAction& request, Done<> done) override;
  void AgreeAndAddContact(const biz::IMContactAction& request, Done<> done) override;
  void RefuseAddContact(const biz::IMContactAction& request, Done<> done) override;
  void AddToBlack(const biz::IMContactAction& request, Done<> done) override;
  void ReportAddContact(const biz::IMContactAction& request, Done<> done) override;
  void IgnoreAddContact(const biz::IMContactAction& request, Done<> done) override;
  void DeleteContactVerifyMsgs(const biz::IMContactActions& request, Done<> done) override;
  void GetContactVerifyMsgs(const biz::IMContactVerifyPage& request,
                            Done<biz::IMContactVerifyMsgs> done) override;
  void GetContactList(const biz::IMNothing& request, Done<biz::IMContactList> done) override;
  void AskContact(const biz::IMContactRequest& request, Done<> done) override;
  void RemoveContact(const biz::IMContactUser& request, Done<> done) override;
  void MoveContact(const biz::IMContactPlace& request, Done<> done) override;
  void SetAsterisk(const biz::IMContactSwitch& request, Done<> done) override;
  void SetGroup(const biz::IMContactGroupChange& request,
                Done<biz::IMContactGroupRequest> done) override;
  void SetProfile(const biz::IMProfile& request, Done<> done) override;
  void SearchUsers(const biz::IMUserSearch& request, Done<biz::IMContacts> done) override;
  void GetBlackList(const biz::IMNothing& request, Done<biz::IMContacts> done) override;
  void SetBlack(const biz::IMContactSwitch& request, Done<> done) override;

 private:
  // Runs `work(AccountState&, ContactBook&, request)` on the worker, once the list is known.
  template <class Request, class Work, class Answer>
  void WithList(const Request& request, Done<Answer> done, Work work) const;
  // Asks the server for a change. When it is answered the account knows what it changed: the server
  // has told that before.
  template <class Operation, class... Answer>
  void AskChange(Operation operation, Done<Answer...> done) const;
  void Decide(const biz::IMContactAction& request, biz::IMContactVerifyType type,
              Done<> done) const;

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<ContactBook> book_;
};

}  // namespace imsdk::account
