#include "account/chat_state.h"

#include <algorithm>
#include <iterator>

namespace imsdk::account {

namespace {

// What a request for new messages gets that names no count, and the most that any gets.
constexpr std::int32_t kDefaultCount = 200;
constexpr std::int32_t kMostCount = 1000;

}  // namespace

void ChatState::AddConversation(const StoredConversation& stored) {
  base::AutoLock hold(lock_);
  Conversation& conversation = conversations_[stored.cid];
  conversation.newest = stored.newest;
  conversation.last_arrival = stored.last_arrival;
  conversation.unread = stored.unread;
}

void ChatState::AddUnread(biz::IMMessage message) {
  base::AutoLock hold(lock_);
  Conversation& conversation = conversations_[message.cid];
  Cache(conversation, std::move(message));
}

void ChatState::AddOutgoing(const biz::IMMessage& message) {
  base::AutoLock hold(lock_);
  Conversation& conversation = conversations_[message.cid];
  conversation.newest = std::max(conversation.newest, PositionOf(message));
}

void ChatState::AddIncoming(std::vector<Arrived> messages) {
  base::AutoLock hold(lock_);
  for (Arrived& arrived : messages) {
    Conversation& conversation = conversations_[arrived.message.cid];
    conversation.newest = std::max(conversation.newest, PositionOf(arrived.message));
    conversation.last_arrival = std::max(conversation.last_arrival, arrived.arrival);
    ++conversation.unread;
    Cache(conversation, std::move(arrived.message));
  }
}

void ChatState::Cache(Conversation& conversation, biz::IMMessage message) {
  const Position position = PositionOf(message);
  const std::size_t text = message.msgbody.size();
  const bool fresh =
      conversation.cached
          .emplace(position, std::make_shared<const biz::IMMessage>(std::move(message)))
          .second;
  if (!fresh) return;
  cached_.emplace(position, &conversation);
  cached_text_ += text;
  while (cached_.size() > kMostCachedMessages || cached_text_ > kMostCachedText) {
    const auto [oldest, owner] = *cached_.begin();
    Uncache(*owner, owner->cached.find(oldest));
  }
}

void ChatState::Uncache(Conversation& conversation, Cached::iterator entry) {
  cached_text_ -= entry->second->msgbody.size();
  cached_.erase({entry->first, &conversation});
  conversation.cached.erase(entry);
}

biz::IMMessagePage ChatState::NewMessages(const biz::IMUserID& cid,
                                          const biz::IMPageRequest& request) const {
  const auto count = static_cast<std::size_t>(
      request.count > 0 ? std::min(request.count, kMostCount) : kDefaultCount);
  const Position at{request.msgtime, request.msgid};
  std::vector<std::shared_ptr<const biz::IMMessage>> found;
  biz::IMMessagePage page;
  page.outofcache = true;
  {
    base::AutoLock hold(lock_);
    const auto conversation = conversations_.find(cid);
    if (conversation == conversations_.end()) return page;
    const Cached& cached = conversation->second.cached;
    // Without a position the page is the newest one, whichever way it goes on.
    if (request.gohistory || at.is_end()) {
      auto entry = at.is_end() ? cached.end() : cached.lower_bound(at);
      while (found.size() < count && entry != cached.begin()) found.push_back((--entry)->second);
      std::reverse(found.begin(), found.end());
    } else {
      auto entry = cached.upper_bound(at);
      for (; found.size() < count && entry != cached.end(); ++entry) found.push_back(entry->second);
    }
    page.outofcache = found.size() < count ||
                      static_cast<std::size_t>(conversation->second.unread) > cached.size();
  }
  page.msgs.reserve(found.size());
  for (const auto& message : found) page.msgs.push_back(*message);
  return page;
}

std::int32_t ChatState::Unread(const biz::IMUserID& cid) const {
  base::AutoLock hold(lock_);
  const auto conversation = conversations_.find(cid);
  return conversation == conversations_.end() ? 0 : conversation->second.unread;
}

std::vector<biz::IMUnreadCount> ChatState::Conversations() const {
  std::vector<std::pair<Position, biz::IMUnreadCount>> all;
  {
    base::AutoLock hold(lock_);
    all.reserve(conversations_.size());
    for (const auto& [cid, conversation] : conversations_) {
      all.push_back({conversation.newest, {cid, conversation.unread}});
    }
  }
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<biz::IMUnreadCount> sorted;
  sorted.reserve(all.size());
  for (auto& entry : all) sorted.push_back(std::move(entry.second));
  return sorted;
}

std::int64_t ChatState::MarkRead(const biz::IMUserID& cid) {
  base::AutoLock hold(lock_);
  const auto found = conversations_.find(cid);
  if (found == conversations_.end() || found->second.unread == 0) return 0;
  Conversation& conversation = found->second;
  conversation.unread = 0;
  while (!conversation.cached.empty()) Uncache(conversation, conversation.cached.begin());
  return conversation.last_arrival;
}

}  // namespace imsdk::account
