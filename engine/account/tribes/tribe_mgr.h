// The account's tribes as the bridge sees them.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "account/session/on_worker.h"
#include "account/tribes/tribe_book.h"
#include "account/tribes/tribe_changes.h"
#include "imsdk/biz/tribe_mgr.h"

namespace imsdk::account {

class TribeMgr final : public RefPtrCounted<biz::IIMTribeMgr> {
 public:
  template <class... Answer>
  using Done = biz::IMCallback<Answer...>;

  TribeMgr(std::shared_ptr<AccountState> state, std::shared_ptr<TribeBook> book)
      : state_(std::move(state)), book_(std::move(book)) {}

  biz::IMTribeEvents& Events() override { return state_->tribe_mgr_events; }

  // tribe_mgr.cpp
  bool IsShallowLogin() override { return book_->IsOpen(); }
  void ShallowLogin(const biz::IMNothing& request, Done<> done) override;
  void DeepLogin(const biz::IMTribeRequest& request, Done<> done) override;
  void GetTribe(const biz::IMTribeRequest& request, Done<biz::IMTribeInfo> done) override;
  void GetTribes(const biz::IMNothing& request, Done<biz::IMTribes> done) override;
  void GetListedTribes(const biz::IMTribeList& request, Done<biz::IMTribes> done) override;
  void GetQuittedTribe(const biz::IMNothing& request, Done<biz::IMTribes> done) override;
  void GetEnableTribeNum(const biz::IMNothing& request, Done<biz::IMEnableTribeNum> done) override;
  void CloseTribe(const biz::IMTribeRequest& request, Done<> done) override;
  void EnableTribe(const biz::IMTribeRequest& request, Done<> done) override;
  void CreateTribe(const biz::IMNewTribe& request, Done<biz::IMTribeRequest> done) override;
  void JoinTribe(const biz::IMJoinTribe& request, Done<biz::IMJoinedTribe> done) override;
  void InviteToTribe(const biz::IMTribeInvitation& request, Done<> done) override;
  void QuitTribe(const biz::IMTribeRequest& request, Done<> done) override;
  void TransferTribe(const biz::IMTribeUser& request, Done<> done) override;
  void GetTribeVerifyMsgs(const biz::IMTribeVerifyPage& request,
                          Done<biz::IMTribeVerifyMsgs> done) override;
  void AllowJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) override;
  void RefuseJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) override;
  void AddToTribeBlack(const biz::IMTribeVerifyAction& request, Done<> done) override;
  void AllowInviteJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) override;
  void RefuseInviteJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) override;
  void DeleteTribeVerifyMsgs(const biz::IMTribeVerifyAction& request, Done<> done) override;

  // tribe_members.cpp
  void GetTribeMemberList(const biz::IMTribeRequest& request,
                          Done<biz::IMTribeRoster> done) override;
  void GetTribeMemberbyID(const biz::IMTribeMembersRequest& request,
                          Done<biz::IMTribeMembers> done) override;
  void GetAttentionMembers(const biz::IMTribeRequest& request,
                           Done<biz::IMTribeMembers> done) override;
  void GetMultiChatMembers(const biz::IMTribeRequest& request,
                           Done<biz::IMTribeMembers> done) override;
  void SearchTribeMember(const biz::IMTribeMemberSearch& request,
                         Done<biz::IMTribeMembers> done) override;
  void SelectTribeSearchResult(const biz::IMTribeRequest& request, Done<> done) override;
  void GetListDNick(const biz::IMTribeNickRequest& request,
                    Done<biz::IMTribeDisplayNicks> done) override;
  void KickTribeMember(const biz::IMTribeUser& request, Done<> done) override;
  void ChangeLevel(const biz::IMTribeMemberLevel& request, Done<> done) override;
  void SetMyTribeNickname(const biz::IMTribeNickname& request, Done<> done) override;
  void SetTribeMemberNicknameByAdmin(const biz::IMTribeNickname& request, Done<> done) override;
  void SetAttention(const biz::IMTribeAttention& request, Done<> done) override;
  void AddTribeBlack(const biz::IMTribeUser& request, Done<> done) override;
  void DelTribeBlack(const biz::IMTribeUser& request, Done<> done) override;
  void GetTribeBlackList(const biz::IMTribeRequest& request,
                         Done<biz::IMTribeBlackList> done) override;

  // tribe_settings.cpp
  void GetTribeBulletin(const biz::IMTribeRequest& request,
                        Done<biz::IMTribeTextValue> done) override;
  void GetVisitorCount(const biz::IMTribeRequest& request,
                       Done<biz::IMTribeNumberValue> done) override;
  void ClearVisitors(const biz::IMTribeRequest& request, Done<> done) override;
  void GetMyTribeNickname(const biz::IMTribeRequest& request,
                          Done<biz::IMTribeNicknameValue> done) override;
  void ChangeMultiName(const biz::IMMultiChatName& request, Done<> done) override;
  void GetAllClass(const biz::IMNothing& request, Done<biz::IMTribeClasses> done) override;
  void SetClass(const biz::IMTribeNumber& request, Done<> done) override;
  void SetTribeName(const biz::IMTribeText& request, Done<> done) override;
  void SetTribeDes(const biz::IMTribeText& request, Done<> done) override;
  void SetMsgRemindType(const biz::IMTribeNumber& request, Done<> done) override;
  void GetMsgRemindType(const biz::IMTribeRequest& request,
                        Done<biz::IMTribeNumberValue> done) override;
  void SetAuthType(const biz::IMTribeNumber& request, Done<> done) override;
  void GetAuthType(const biz::IMTribeRequest& request, Done<biz::IMTribeNumberValue> done) override;
  void SetJoinPwd(const biz::IMTribeText& request, Done<> done) override;
  void GetJoinPwd(const biz::IMTribeRequest& request, Done<biz::IMTribeTextValue> done) override;
  void SetAllowShowChatRecordBeforeJoin(const biz::IMTribeNumber& request, Done<> done) override;
  void IsAllowShowChatRecordBeforeJoin(const biz::IMTribeRequest& request,
                                       Done<biz::IMTribeNumberValue> done) override;
  void SetAllowVisitor(const biz::IMTribeNumber& request, Done<> done) override;
  void IsAllowVisitor(const biz::IMTribeRequest& request,
                      Done<biz::IMTribeNumberValue> done) override;
  void SetAtAllPermission(const biz::IMTribeNumber& request, Done<> done) override;
  void GetAtAllPermission(const biz::IMTribeRequest& request,
                          Done<biz::IMTribeNumberValue> done) override;
  void SetTribe(const biz::IMTribeSetting& request, Done<> done) override;

 private:
  // Runs `work(AccountState&, TribeBook&, const Request&)` on the worker, once the tribes are
  // known.
  template <class Request, class Work, class... Answer>
  void WithTribes(const Request& request, Done<Answer...> done, Work work) const {
    OnWorker(
        state_, request,
        [book = book_, done, work = std::move(work)](AccountState& here, const auto& kept) {
          if (!book->IsOpen()) return done(NoTribesYet(), Answer{}...);
          here.commit.Flush();  // what was told before is part of the answer
          work(here, *book, *kept);
        },
        [done](const biz::ResultCode& why) { done(why, Answer{}...); });
  }
  // Answers with what `read(const IMTribeInfo&)` finds in one of the account's tribes.
  template <class Answer, class Read>
  void ReadTribe(const biz::IMTribeRequest& request, Done<Answer> done, Read read) const {
    WithTribes(request, done, [done, read](AccountState&, TribeBook& book, const auto& asked) {
      const biz::IMTribeInfo* info = book.Find(asked.tribeid);
      if (!info) return done(NoMemberOf(), {});
      done({}, read(*info));
    });
  }
  // Asks the server for a change. When it is answered, the account knows what it changed: the
  // server has told that before. A refusal may come on the caller's thread.
  template <class Operation, class... Answer>
  void AskChange(Operation operation, Done<Answer...> done) const {
    AskServer(state_, std::move(operation),
              Done<Answer...>([state = state_, book = book_, done = std::move(done)](
                                  const biz::ResultCode& result, const Answer&... answer) {
                if (!result.ok() || state->ended) return done(result, answer...);
                state->commit.Flush();
                book->WhenLearned([=] { done(result, answer...); });
              }));
  }
  void Change(biz::IMTribeID tribe, biz::TribeModifyKey key, std::wstring value,
              Done<> done) const {
    AskChange(link::ChangeTribe{tribe, key, std::move(value)}, std::move(done));
  }
  // One that is a number from 0 up to and with `most`.
  void ChangeNumber(const biz::IMTribeNumber& request, biz::TribeModifyKey key, std::int32_t most,
                    Done<> done) const;
  void Decide(const biz::IMTribeVerifyAction& request, bool invitation, link::Decision decision,
              Done<> done) const {
    AskChange(link::DecideVerify{request, invitation, decision}, std::move(done));
  }

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<TribeBook> book_;
};

}  // namespace imsdk::account
