// What can be read and set of a tribe.
#include <algorithm>
#include <array>

#include "account/tribes/tribe_mgr.h"

namespace imsdk::account {

namespace {

// In the order in which to offer them.
const std::array<biz::IMTribeClass, 7> kClasses{{{1, L"Friends"},
                                                 {2, L"Family"},
                                                 {3, L"Work"},
                                                 {4, L"Study"},
                                                 {5, L"Hobbies"},
                                                 {6, L"Trade"},
                                                 {0, L"Others"}}};

biz::ResultCode NoSuchNumber(std::wstring text) {
  return {biz::kEngineRefused, 0, std::move(text)};
}

biz::IMTribeNumberValue NumberOf(std::int32_t number) { return {number}; }

}  // namespace

void TribeMgr::GetTribeBulletin(const biz::IMTribeRequest& request,
                                Done<biz::IMTribeTextValue> done) {
  ReadTribe(request, std::move(done),
            [](const biz::IMTribeInfo& tribe) { return biz::IMTribeTextValue{tribe.bulletin}; });
}

void TribeMgr::GetVisitorCount(const biz::IMTribeRequest& request,
                               Done<biz::IMTribeNumberValue> done) {
  AskServer(state_, link::CountVisitors{request.tribeid, false}, std::move(done));
}

void TribeMgr::ClearVisitors(const biz::IMTribeRequest& request, Done<> done) {
  AskChange(link::CountVisitors{request.tribeid, true}, std::move(done));
}

void TribeMgr::GetMyTribeNickname(const biz::IMTribeRequest& request,
                                  Done<biz::IMTribeNicknameValue> done) {
  ReadTribe(request, std::move(done), [](const biz::IMTribeInfo& tribe) {
    return biz::IMTribeNicknameValue{tribe.mine.nickname};
  });
}

void TribeMgr::ChangeMultiName(const biz::IMMultiChatName& request, Done<> done) {
  WithTribes(
      request, done,
      [this, keep = RefPtr<TribeMgr>(this), done](AccountState&, TribeBook& book,
                                                  const biz::IMMultiChatName& asked) {
        const biz::IMTribeInfo* info = book.Find(asked.tribeid);
        if (info && info->type != biz::kMultiChat) {
          return done({biz::kEngineRefused, biz::kTribeNotAMultiChat, L"this is no multi-chat"});
        }
        SetTribeName({asked.tribeid, asked.name}, done);
      });
}

void TribeMgr::GetAllClass(const biz::IMNothing&, Done<biz::IMTribeClasses> done) {
  if (state_->closed) return done(NotLoggedIn(), {});
  done({}, {{kClasses.begin(), kClasses.end()}});
}

void TribeMgr::SetClass(const biz::IMTribeNumber& request, Done<> done) {
  const bool known = std::any_of(kClasses.begin(), kClasses.end(),
                                 [&](const auto& one) { return one.index == request.num; });
  if (!known) return done(NoSuchNumber(L"error class"));
  Change(request.tribeid, biz::kTribeKeyClass, std::to_wstring(request.num), std::move(done));
}

void TribeMgr::SetTribeName(const biz::IMTribeText& request, Done<> done) {
  Change(request.tribeid, biz::kTribeKeyName, request.str, std::move(done));
}

void TribeMgr::SetTribeDes(const biz::IMTribeText& request, Done<> done) {
  Change(request.tribeid, biz::kTribeKeyDescription, request.str, std::move(done));
}

void TribeMgr::SetMsgRemindType(const biz::IMTribeNumber& request, Done<> done) {
  if (request.num < biz::kRemindAll || request.num > biz::kRemindNothing) {
    return done(NoSuchNumber(L"Error Type"));
  }
  const auto type = static_cast<biz::TribeMsgRemindType>(request.num);
  AskServer(state_, link::SetRemindType{request.tribeid, type},
            Done<>([state = state_, book = book_, tribe = request.tribeid, type,
                    done = std::move(done)](const biz::ResultCode& result) {
              if (!result.ok() || state->ended) return done(result);
              book->SetRemindType(tribe, type, done);
            }));
}

void TribeMgr::GetMsgRemindType(const biz::IMTribeRequest& request,
                                Done<biz::IMTribeNumberValue> done) {
  ReadTribe(request, std::move(done),
            [](const biz::IMTribeInfo& tribe) { return NumberOf(tribe.mine.remind); });
}

void TribeMgr::ChangeNumber(const biz::IMTribeNumber& request, biz::TribeModifyKey key,
                            std::int32_t most, Done<> done) const {
  if (request.num < 0 || request.num > most) {
    return done(NoSuchNumber(L"\"num\" has no such value"));
  }
  Change(request.tribeid, key, std::to_wstring(request.num), std::move(done));
}

void TribeMgr::SetAuthType(const biz::IMTribeNumber& request, Done<> done) {
  ChangeNumber(request, biz::kTribeKeyAuthType, biz::kJoinClosed, std::move(done));
}

void TribeMgr::GetAuthType(const biz::IMTribeRequest& request, Done<biz::IMTribeNumberValue> done) {
  ReadTribe(request, std::move(done),
            [](const biz::IMTribeInfo& tribe) { return NumberOf(tribe.authtype); });
}

void TribeMgr::SetJoinPwd(const biz::IMTribeText& request, Done<> done) {
  if (request.str.empty()) return done({biz::kEngineEmpty, 0, L"the password is empty"});
  Change(request.tribeid, biz::kTribeKeyJoinPassword, request.str, std::move(done));
}

void TribeMgr::GetJoinPwd(const biz::IMTribeRequest& request, Done<biz::IMTribeTextValue> done) {
  AskServer(state_, link::GetJoinPassword{request.tribeid}, std::move(done));
}

void TribeMgr::SetAllowShowChatRecordBeforeJoin(const biz::IMTribeNumber& request, Done<> done) {
  ChangeNumber(request, biz::kTribeKeyOpenHistory, 1, std::move(done));
}

void TribeMgr::IsAllowShowChatRecordBeforeJoin(const biz::IMTribeRequest& request,
                                               Done<biz::IMTribeNumberValue> done) {
  ReadTribe(request, std::move(done),
            [](const biz::IMTribeInfo& tribe) { return NumberOf(tribe.open_history); });
}

void TribeMgr::SetAllowVisitor(const biz::IMTribeNumber& request, Done<> done) {
  ChangeNumber(request, biz::kTribeKeyVisitors, 1, std::move(done));
}

void TribeMgr::IsAllowVisitor(const biz::IMTribeRequest& request,
                              Done<biz::IMTribeNumberValue> done) {
  ReadTribe(request, std::move(done),
            [](const biz::IMTribeInfo& tribe) { return NumberOf(tribe.visitors); });
}

void TribeMgr::SetAtAllPermission(const biz::IMTribeNumber& request, Done<> done) {
  ChangeNumber(request, biz::kTribeKeyAtAll, biz::kAtAllEverybody, std::move(done));
}

void TribeMgr::GetAtAllPermission(const biz::IMTribeRequest& request,
                                  Done<biz::IMTribeNumberValue> done) {
  ReadTribe(request, std::move(done),
            [](const biz::IMTribeInfo& tribe) { return NumberOf(tribe.atall); });
}

void TribeMgr::SetTribe(const biz::IMTribeSetting& request, Done<> done) {
  if (const auto why = link::CheckBounds(request); !why.ok()) return done(why);
  Change(request.tribeid, request.key, request.value, std::move(done));
}

}  // namespace imsdk::account
