#include "account/single_chat.h"

#include <utility>

#include "kexbase/callback.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

constexpr std::size_t kLongestName = 256;  // UTF-16 code units

}  // namespace

bool CanNameUser(const biz::IMUserID& user) {
  return user.valid() && base::Utf16Length(user.appkey) <= kLongestName &&
         base::Utf16Length(user.nick) <= kLongestName;
}

biz::IMMessagePage Conversation::GetNewMsg(const biz::IMPageRequest& request) {
  if (state_->closed) return {};
  return state_->chat.NewMessages(cid_, request);
}

void Conversation::SetNewMsgReaded(biz::IMDoneCallback done) {
  if (state_->closed) return done(NotLoggedIn());
  const std::int64_t arrival = state_->chat.MarkRead(cid_);
  if (arrival == 0) return done({});
  auto mark = [cid = cid_, arrival, done = std::move(done)](AccountState& state) {
    if (state.ended) return done(NotLoggedIn());
    state.commit.Add(
        [&state, cid, arrival](sqlite::Database&) { state.store.MarkRead(cid, arrival); },
        [done](const biz::ResultCode& stored) { done(stored); });
  };
  state_->runner->PostTask(FROM_HERE, base::BindWeak(std::weak_ptr(state_), std::move(mark)));
}

std::int32_t Conversation::GetUnreadCount() const {
  return state_->closed ? 0 : state_->chat.Unread(cid_);
}

void Conversation::GetLocalHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) {
  if (state_->closed) return done(NotLoggedIn(), {});
  auto read = [cid = cid_, request, done = std::move(done)](AccountState& state) {
    if (state.ended) return done(NotLoggedIn(), {});
    state.commit.Flush();  // what was done before is part of the page
    biz::IMMessagePage page;
    const biz::ResultCode result = sqlite::Guarded([&] { page = state.store.Page(cid, request); });
    done(result, result.ok() ? std::move(page) : biz::IMMessagePage{});
  };
  state_->runner->PostTask(FROM_HERE, base::BindWeak(std::weak_ptr(state_), std::move(read)));
}

std::int32_t Conversation::SendMsg(std::vector<biz::IMBodyItem> body,
                                   const biz::IMSendOptions& options) {
  return outbox_->Send(cid_, std::move(body), options);
}

std::int32_t Conversation::ReSendMsg(std::int64_t msgid) { return outbox_->Resend(cid_, msgid); }

RefPtr<biz::IIMConversation> SingleChatMgr::GetConversation(const biz::IMUserID& cid) {
  if (state_->closed || !CanNameUser(cid)) return {};
  return RefPtr<biz::IIMConversation>(new Conversation(state_, outbox_, WellFormed(cid)));
}

std::vector<biz::IMUnreadCount> SingleChatMgr::GetConversations() {
  if (state_->closed) return {};
  return state_->chat.Conversations();
}

}  // namespace imsdk::account
