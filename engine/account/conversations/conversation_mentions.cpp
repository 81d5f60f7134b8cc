#include <algorithm>

#include "account/conversations/conversation.h"

namespace imsdk::account {

namespace {

biz::ResultCode NotFound(const wchar_t* text) { return {biz::kEngineNotFound, 0, text}; }

// Of the attention members those that are asked for; all when nobody is named.
std::vector<biz::IMUserID> SendersAmong(const biz::IMTribeMembers& attention,
                                        const std::vector<biz::IMUserID>& asked) {
  std::vector<biz::IMUserID> senders;
  for (const biz::IMTribeMember& member : attention.memberlist) {
    const bool wanted =
        asked.empty() || std::find(asked.begin(), asked.end(), member.userid) != asked.end();
    if (wanted) senders.push_back(member.userid);
  }
  return senders;
}

}  // namespace

void Conversation::AtTribeMember(const biz::IMAtMemberRequest& request,
                                 biz::IMCallback<biz::IMAtMember> done) {
  if (Refuses(Ability::kMention, done)) return;
  if (const auto why = state()->line->Can<link::ReadMentions>(); !why.ok()) return done(why, {});
  if (request.userid.empty()) {
    return AskServer(
        state(), link::GetTribe{cid_.tribe},
        biz::IMCallback<biz::IMTribeInfo>(
            [done = std::move(done)](const biz::ResultCode& result, const biz::IMTribeInfo& tribe) {
              const bool may =
                  tribe.atall == biz::kAtAllEverybody || tribe.mine.level >= biz::kTribeManager;
              if (!result.ok() || may) return done(result, {});
              done({biz::kEngineRefused, biz::kTribeAtAllRefused,
                    L"only the tribe's owner and administrators may mention all members"},
                   {});
            }));
  }
  AskServer(state(), link::FindTribeMembers{cid_.tribe, {request.userid}},
            biz::IMCallback<biz::IMTribeMembers>(
                [done = std::move(done)](const biz::ResultCode& result,
                                         const biz::IMTribeMembers& found) {
                  if (!result.ok()) return done(result, {});
                  if (found.memberlist.empty()) {
                    return done({biz::kEngineRefused, biz::kTribeUserNotAMember,
                                 L"the user is no member of the tribe"},
                                {});
                  }
                  const biz::IMTribeMember& member = found.memberlist.front();
                  done({}, {member.userid, member.display});
                }));
}

void Conversation::GetSendMsgTribeAtInfo(const biz::IMMsgRequest& request,
                                         biz::IMCallback<biz::IMTribeAt> done) {
  if (Refuses(Ability::kMention, done)) return;
  using Found = std::optional<biz::IMTribeAt>;
  Query<Found>(state(), request,
               biz::IMCallback<Found>(
                   [done = std::move(done)](const biz::ResultCode& result, const Found& found) {
                     if (!result.ok() || found)
                       return done(result, found.value_or(biz::IMTribeAt{}));
                     done(NotFound(L"there is no such message"), {});
                   }),
               [cid = cid_](AccountState& here, const auto& kept) {
                 const biz::IMUserID& from = kept.fromid.empty() ? here.self : kept.fromid;
                 const auto message = here.store.Find(cid, kept.msgid, from);
                 return message ? Found(message->tribeat) : Found();
               });
}

void Conversation::GetTribeAtMsgUnreadCount(const biz::IMMsgsRequest& request,
                                            biz::IMCallback<biz::IMAtUnread> done) {
  if (Refuses(Ability::kMention, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.mentions->Count(cid, kept.msgids, answer);
       });
}

void Conversation::GetTribeAtMsgUnreadUsers(const biz::IMMsgRequest& request,
                                            biz::IMCallback<biz::IMAtReaders> done) {
  if (Refuses(Ability::kMention, done)) return;
  if (!request.fromid.empty() && request.fromid != state()->self) {
    return done(NotFound(L"the account has sent no such message"), {});
  }
  account_.mentions->Readers(cid_, request.msgid, std::move(done));
}

void Conversation::RoamTribeAtMsgs(const biz::IMPageRequest& request,
                                   biz::IMCallback<biz::IMMessagePage> done) {
  if (Refuses(Ability::kMention, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.roamer->MentionPage(cid, kept, answer);
       });
}

void Conversation::RoamTribeAtMsgContext(const biz::IMAtContextRequest& request,
                                         biz::IMCallback<biz::IMMessagePage> done) {
  if (Refuses(Ability::kMention, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.roamer->Context(cid, kept, answer);
       });
}

void Conversation::SetTribeAtMsgsReaded(const biz::IMMsgsRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kMention, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.mentions->MarkRead(cid, kept.msgids, answer);
       });
}

void Conversation::SearchAttentionMsg(const biz::IMSearchRequest& request,
                                      biz::IMCallback<biz::IMSearchPage> done) {
  if (Refuses(Ability::kMention, done)) return;
  if (const auto why = link::CheckBounds(request); !why.ok()) return done(why, {});
  AskServer(state(), link::GetAttention{cid_.tribe},
            biz::IMCallback<biz::IMTribeMembers>(
                [state = state(), cid = cid_, request, done = std::move(done)](
                    const biz::ResultCode& result, const biz::IMTribeMembers& attention) {
                  const auto senders = SendersAmong(attention, request.fromids);
                  if (!result.ok() || senders.empty()) return done(result, {});
                  Search<biz::IMSearchPage>(state, request, done,
                                            [cid, senders](AccountState& here, auto kept) {
                                              kept.fromids = senders;
                                              return here.store.search().Search(cid, kept);
                                            });
                }));
}

}  // namespace imsdk::account
