// The members of a tribe.
#include <algorithm>
#include <unordered_map>

#include "account/tribes/tribe_mgr.h"
#include "kexbase/distinct.h"

namespace imsdk::account {

namespace {

// Users who are asked for, and those of them who are members.
struct Question {
  const biz::IMTribeMembersRequest request;
  const biz::IMCallback<biz::IMTribeMembers> done;
  biz::IMTribeMembers found{};
};

// Asks the server, some users after others.
void Ask(const std::shared_ptr<AccountState>& state, const std::shared_ptr<Question>& question,
         std::size_t from) {
  const auto& users = question->request.memberlist;
  if (from >= users.size()) return question->done({}, question->found);
  const std::size_t until = std::min(users.size(), from + link::kMostTribeUsers);
  const auto begin = users.begin();
  AskServer(
      state,
      link::FindTribeMembers{
          question->request.tribeid,
          {begin + static_cast<std::ptrdiff_t>(from), begin + static_cast<std::ptrdiff_t>(until)}},
      biz::IMCallback<biz::IMTribeMembers>(
          [state, question, until](const biz::ResultCode& result, const biz::IMTribeMembers& some) {
            if (!result.ok()) return question->done(result, {});
            auto& found = question->found.memberlist;
            found.insert(found.end(), some.memberlist.begin(), some.memberlist.end());
            Ask(state, question, until);
          }));
}

}  // namespace

void TribeMgr::GetTribeMemberList(const biz::IMTribeRequest& request,
                                  Done<biz::IMTribeRoster> done) {
  WithTribes(request, done, [done](AccountState&, TribeBook& book, const auto& asked) {
    Roster* roster = book.RosterOf(asked.tribeid);
    if (!roster) return done({biz::kEngineRefused, 0, L"the tribe has no deep login"}, {});
    done({}, *roster->List());
  });
}

void TribeMgr::GetTribeMemberbyID(const biz::IMTribeMembersRequest& request,
                                  Done<biz::IMTribeMembers> done) {
  WithTribes(
      request, done, [state = state_, done](AccountState&, TribeBook& book, const auto& asked) {
        const Roster* roster = book.RosterOf(asked.tribeid);
        if (!roster) {
          const biz::IMTribeMembersRequest each{asked.tribeid, base::Distinct(asked.memberlist)};
          return Ask(state, std::make_shared<Question>(Question{each, done}), 0);
        }
        biz::IMTribeMembers found;
        for (const biz::IMUserID& user : base::Distinct(asked.memberlist)) {
          if (const biz::IMTribeMember* member = roster->Find(user)) {
            found.memberlist.push_back(*member);
          }
        }
        done({}, found);
      });
}

void TribeMgr::GetListDNick(const biz::IMTribeNickRequest& request,
                            Done<biz::IMTribeDisplayNicks> done) {
  GetTribeMemberbyID({request.tribeid, request.listuid},
                     [listuid = base::Distinct(request.listuid), done](
                         const biz::ResultCode& result, const biz::IMTribeMembers& members) {
                       if (!result.ok()) return done(result, {});
                       std::unordered_map<biz::IMUserID, const biz::IMTribeMember*> by_user;
                       for (const auto& member : members.memberlist)
                         by_user.emplace(member.userid, &member);
                       biz::IMTribeDisplayNicks nicks;
                       for (const biz::IMUserID& user : listuid) {
                         const auto member = by_user.find(user);
                         if (member == by_user.end()) {
                           nicks.left.push_back(user);
                         } else {
                           nicks.nicklist.push_back({user, member->second->display});
                         }
                       }
                       done({}, nicks);
                     });
}

void TribeMgr::GetAttentionMembers(const biz::IMTribeRequest& request,
                                   Done<biz::IMTribeMembers> done) {
  AskServer(state_, link::GetAttention{request.tribeid}, std::move(done));
}

void TribeMgr::GetMultiChatMembers(const biz::IMTribeRequest& request,
                                   Done<biz::IMTribeMembers> done) {
  WithTribes(request, done,
             [book = book_, done](AccountState&, TribeBook& here, const auto& asked) {
               const biz::IMTribeID tribe = asked.tribeid;
               const biz::IMTribeInfo* info = here.Find(tribe);
               if (info && info->type != biz::kMultiChat) {
                 return done(
                     {biz::kEngineRefused, biz::kTribeNotAMultiChat, L"this is no multi-chat"}, {});
               }
               here.DeepLogin(tribe, [book, tribe, done](const biz::ResultCode& result) {
                 Roster* roster = book->RosterOf(tribe);
                 if (!result.ok() || !roster) return done(result.ok() ? NoMemberOf() : result, {});
                 done({}, {roster->List()->memberlist});
               });
             });
}

void TribeMgr::SearchTribeMember(const biz::IMTribeMemberSearch& request,
                                 Done<biz::IMTribeMembers> done) {
  WithTribes(request, done,
             [book = book_, done](AccountState&, TribeBook& here, const auto& asked) {
               here.DeepLogin(asked.tribeid, [book, asked, done](const biz::ResultCode& result) {
                 Roster* roster = book->RosterOf(asked.tribeid);
                 if (!result.ok() || !roster) return done(result.ok() ? NoMemberOf() : result, {});
                 done({}, {roster->Search(asked.key)});
               });
             });
}

void TribeMgr::SelectTribeSearchResult(const biz::IMTribeRequest& request, Done<> done) {
  WithTribes(request, done, [done](AccountState&, TribeBook& book, const auto& asked) {
    Roster* roster = book.RosterOf(asked.tribeid);
    if (roster && roster->Favour()) return done({});
    done({biz::kEngineNotFound, 0, L"no members of this tribe were searched for"});
  });
}

void TribeMgr::KickTribeMember(const biz::IMTribeUser& request, Done<> done) {
  if (request.userid == state_->self) {
    return done({biz::kEngineRefused, biz::kTribeYourself, L"one cannot remove oneself"});
  }
  AskChange(link::RemoveMember{request.tribeid, request.userid}, std::move(done));
}

void TribeMgr::ChangeLevel(const biz::IMTribeMemberLevel& request, Done<> done) {
  if (request.level != biz::kTribeMember && request.level != biz::kTribeManager) {
    return done({biz::kEngineRefused, 0, L"\"level\" has no such value"});
  }
  AskChange(link::SetTribeLevel{request.tribeid, request.userid,
                                static_cast<biz::TribeMemberLevel>(request.level)},
            std::move(done));
}

void TribeMgr::SetMyTribeNickname(const biz::IMTribeNickname& request, Done<> done) {
  if (!request.userid.empty() && request.userid != state_->self) {
    return done({biz::kEngineRefused, 0, L"this is for the account's own nickname"});
  }
  AskChange(link::SetTribeNickname{request.tribeid, state_->self, request.nickname},
            std::move(done));
}

void TribeMgr::SetTribeMemberNicknameByAdmin(const biz::IMTribeNickname& request, Done<> done) {
  AskChange(link::SetTribeNickname{request.tribeid, request.userid, request.nickname},
            std::move(done));
}

void TribeMgr::SetAttention(const biz::IMTribeAttention& request, Done<> done) {
  AskServer(state_, link::SetAttention{request.tribeid, request.userid, request.on},
            std::move(done));
}

void TribeMgr::AddTribeBlack(const biz::IMTribeUser& request, Done<> done) {
  AskServer(state_, link::SetTribeBlack{request.tribeid, request.userid, true}, std::move(done));
}

void TribeMgr::DelTribeBlack(const biz::IMTribeUser& request, Done<> done) {
  AskServer(state_, link::SetTribeBlack{request.tribeid, request.userid, false}, std::move(done));
}

void TribeMgr::GetTribeBlackList(const biz::IMTribeRequest& request,
                                 Done<biz::IMTribeBlackList> done) {
  AskParts<link::GetTribeBlack, std::vector<biz::IMTribeBlackItem>>(
      state_, {request.tribeid, {}}, &link::TribeBlack::list,
      [done](const biz::ResultCode& result, const auto& list) { done(result, {list}); });
}

}  // namespace imsdk::account
