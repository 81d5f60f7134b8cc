#include "account/conversations/single_chat.h"

#include "account/conversations/conversation.h"
#include "account/session/on_worker.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

constexpr std::size_t kLongestName = 256;  // UTF-16 code units

}  // namespace

bool CanNameUser(const biz::IMUserID& user) {
  return user.valid() && base::Utf16Length(user.appkey) <= kLongestName &&
         base::Utf16Length(user.nick) <= kLongestName;
}

RefPtr<biz::IIMConversation> SingleChatMgr::GetConversation(const biz::IMUserID& cid) {
  if (account_.state->closed || !CanNameUser(cid)) return {};
  return RefPtr<biz::IIMConversation>(new Conversation(account_, WellFormed(cid)));
}

std::vector<biz::IMUnreadCount> SingleChatMgr::GetConversations() {
  if (account_.state->closed) return {};
  return account_.state->chat.Conversations();
}

void SingleChatMgr::SearchMsg(const biz::IMSearchRequest& request, biz::IMSearchCallback done) {
  if (const auto why = CheckSearch(request); !why.ok()) return done(why, {});
  Query<biz::IMSearchPage>(account_.state, std::move(done), [request](AccountState& here) {
    return here.store.search().SearchAll(request);
  });
}

void SingleChatMgr::SearchConversations(const biz::IMSearchRequest& request,
                                        biz::IMUsersCallback done) {
  if (const auto why = CheckSearch(request); !why.ok()) return done(why, {});
  Query<std::vector<biz::IMUserID>>(account_.state, std::move(done), [request](AccountState& here) {
    return here.store.search().Conversations(request);
  });
}

void SingleChatMgr::SetNewMsgMaxCache(std::int32_t count) {
  if (!account_.state->closed) account_.state->chat.SetMaxCache(count);
}

void SingleChatMgr::GetRoamStatus(biz::IMRoamStatusCallback done) {
  OnWorker(
      account_.state,
      [done](AccountState& here) {
        here.line->Ask<biz::IMRoamStatus>(
            [](link::Session& session, link::RoamingCallback answer) {
              session.GetRoaming(std::move(answer));
            },
            done);
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

void SingleChatMgr::SetRoamStatus(std::int32_t status, biz::IMDoneCallback done) {
  if (status != biz::kRoamingOff && status != biz::kRoamingOn) {
    return done({biz::kEngineRefused, 0, L"there is no such status"});
  }
  OnWorker(
      account_.state,
      [status, done](AccountState& here) {
        here.line->Ask(
            [status](link::Session& session, link::DoneCallback answer) {
              session.SetRoaming(status, std::move(answer));
            },
            done);
      },
      done);
}

}  // namespace imsdk::account
