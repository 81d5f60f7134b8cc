#include "account/tribes/tribe_mgr.h"

#include "kexbase/distinct.h"

namespace imsdk::account {

void TribeMgr::ShallowLogin(const biz::IMNothing& request, Done<> done) {
  OnWorker(
      state_, request,
      [book = book_, done](AccountState&, const auto&) { book->ShallowLogin(done); },
      [done](const biz::ResultCode& why) { done(why); });
}

void TribeMgr::DeepLogin(const biz::IMTribeRequest& request, Done<> done) {
  OnWorker(
      state_, request,
      [book = book_, done](AccountState& here, const auto& asked) {
        here.commit.Flush();
        book->DeepLogin(asked->tribeid, done);
      },
      [done](const biz::ResultCode& why) { done(why); });
}

void TribeMgr::GetTribe(const biz::IMTribeRequest& request, Done<biz::IMTribeInfo> done) {
  WithTribes(request, done, [done](AccountState& here, TribeBook& book, const auto& asked) {
    if (const biz::IMTribeInfo* info = book.Find(asked.tribeid)) return done({}, *info);
    here.line->Ask(link::GetTribe{asked.tribeid}, done);
  });
}

void TribeMgr::GetTribes(const biz::IMNothing& request, Done<biz::IMTribes> done) {
  WithTribes(request, done,
             [done](AccountState&, TribeBook& book, const auto&) { done({}, {book.All()}); });
}

void TribeMgr::GetListedTribes(const biz::IMTribeList& request, Done<biz::IMTribes> done) {
  WithTribes(request, done, [done](AccountState&, TribeBook& book, const auto& asked) {
    biz::IMTribes listed;
    std::vector<std::int64_t> ids;
    for (const auto& one : asked.tribelist) ids.push_back(one.tribeid.id);
    for (const std::int64_t id : base::Distinct(ids)) {
      if (const biz::IMTribeInfo* info = book.Find({id})) listed.tribes.push_back(*info);
    }
    done({}, listed);
  });
}

void TribeMgr::GetQuittedTribe(const biz::IMNothing&, Done<biz::IMTribes> done) {
  AskParts<link::GetTribes, std::vector<biz::IMTribeInfo>>(
      state_, {.quitted = true}, &link::Tribes::tribes,
      [done](const biz::ResultCode& result, const auto& tribes) { done(result, {tribes}); });
}

void TribeMgr::GetEnableTribeNum(const biz::IMNothing& request, Done<biz::IMEnableTribeNum> done) {
  WithTribes(request, done, [done](AccountState&, TribeBook& book, const auto&) {
    biz::IMEnableTribeNum count;
    for (const biz::IMTribeInfo& tribe : book.All()) {
      ++count.total;
      if (tribe.enabled) ++count.enable;
    }
    done({}, count);
  });
}

void TribeMgr::CloseTribe(const biz::IMTribeRequest& request, Done<> done) {
  AskChange(link::EnableTribe{request.tribeid, false}, std::move(done));
}

void TribeMgr::EnableTribe(const biz::IMTribeRequest& request, Done<> done) {
  AskChange(link::EnableTribe{request.tribeid, true}, std::move(done));
}

void TribeMgr::CreateTribe(const biz::IMNewTribe& request, Done<biz::IMTribeRequest> done) {
  AskChange(link::CreateTribe{request}, std::move(done));
}

void TribeMgr::JoinTribe(const biz::IMJoinTribe& request, Done<biz::IMJoinedTribe> done) {
  AskChange(link::JoinTribe{request}, std::move(done));
}

void TribeMgr::InviteToTribe(const biz::IMTribeInvitation& request, Done<> done) {
  AskChange(link::InviteToTribe{request}, std::move(done));
}

void TribeMgr::QuitTribe(const biz::IMTribeRequest& request, Done<> done) {
  AskChange(link::RemoveMember{request.tribeid, state_->self}, std::move(done));
}

void TribeMgr::TransferTribe(const biz::IMTribeUser& request, Done<> done) {
  AskChange(link::SetTribeLevel{request.tribeid, request.userid, biz::kTribeOwner},
            std::move(done));
}

void TribeMgr::GetTribeVerifyMsgs(const biz::IMTribeVerifyPage& request,
                                  Done<biz::IMTribeVerifyMsgs> done) {
  AskServer(state_, link::GetVerifyMsgs{request}, std::move(done));
}

void TribeMgr::AllowJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) {
  Decide(request, false, link::Decision::kAllow, std::move(done));
}

void TribeMgr::RefuseJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) {
  Decide(request, false, link::Decision::kRefuse, std::move(done));
}

void TribeMgr::AddToTribeBlack(const biz::IMTribeVerifyAction& request, Done<> done) {
  Decide(request, false, link::Decision::kRefuseAndBlack, std::move(done));
}

void TribeMgr::AllowInviteJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) {
  Decide(request, true, link::Decision::kAllow, std::move(done));
}

void TribeMgr::RefuseInviteJoinTribe(const biz::IMTribeVerifyAction& request, Done<> done) {
  Decide(request, true, link::Decision::kRefuse, std::move(done));
}

void TribeMgr::DeleteTribeVerifyMsgs(const biz::IMTribeVerifyAction& request, Done<> done) {
  AskServer(state_, link::DeleteVerify{request}, std::move(done));
}

}  // namespace imsdk::account
