#include "account/conversations/chat_state.h"

#include <algorithm>
#include <iterator>
#include <limits>

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

void ChatState::AddConversation(const biz::IMConversationID& cid) {
  base::AutoLock hold(lock_);
  conversations_.try_emplace(cid);
}

void ChatState::AddUnread(Arrived stored) {
  base::AutoLock hold(lock_);
  Conversation& conversation = conversations_[stored.message.cid];
  Cache(conversation, std::move(stored));
}

void ChatState::AddSeen(const biz::IMMessage& message) {
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
    Cache(conversation, std::move(arrived));
  }
}

void ChatState::Cache(Conversation& conversation, Arrived arrived) {
  const Place place{PositionOf(arrived.message), arrived.arrival};
  const std::size_t text = arrived.message.msgbody.size();
  New entry{std::make_shared<const biz::IMMessage>(std::move(arrived.message)), arrived.offline};
  if (!conversation.cached.emplace(place, std::move(entry)).second) return;
  cached_.emplace(place, &conversation);
  cached_text_ += text;
  ShrinkCache();
}

void ChatState::Uncache(Conversation& conversation, Cached::iterator entry) {
  cached_text_ -= entry->second.message->msgbody.size();
  cached_.erase({entry->first, &conversation});
  conversation.cached.erase(entry);
}

void ChatState::ShrinkCache() {
  while (cached_.size() > most_cached_ || cached_text_ > kMostCachedText) {
    const auto [oldest, owner] = *cached_.begin();
    Uncache(*owner, owner->cached.find(oldest));
  }
}

void ChatState::ForgetIn(Conversation& conversation, const std::vector<NoLongerUnread>& messages) {
  for (const NoLongerUnread& message : messages) {
    if (message.arrival <= conversation.read_arrival) continue;
    --conversation.unread;
    const auto entry = conversation.cached.find({message.position, message.arrival});
    if (entry != conversation.cached.end()) Uncache(conversation, entry);
  }
}

void ChatState::Forget(const biz::IMConversationID& cid,
                       const std::vector<NoLongerUnread>& messages) {
  base::AutoLock hold(lock_);
  const auto found = conversations_.find(cid);
  if (found != conversations_.end()) ForgetIn(found->second, messages);
}

void ChatState::Remove(const biz::IMConversationID& cid, const std::vector<NoLongerUnread>& unread,
                       const Position& newest) {
  base::AutoLock hold(lock_);
  const auto found = conversations_.find(cid);
  if (found == conversations_.end()) return;
  ForgetIn(found->second, unread);
  found->second.newest = newest;
}

biz::IMMessagePage ChatState::NewMessages(const biz::IMConversationID& cid,
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
      auto entry = at.is_end() ? cached.end() : cached.lower_bound({at, 0});
      while (found.size() < count && entry != cached.begin())
        found.push_back((--entry)->second.message);
      std::reverse(found.begin(), found.end());
    } else {
      auto entry = cached.upper_bound({at, std::numeric_limits<std::int64_t>::max()});
      for (; found.size() < count && entry != cached.end(); ++entry)
        found.push_back(entry->second.message);
    }
    page.outofcache = found.size() < count ||
                      static_cast<std::size_t>(conversation->second.unread) > cached.size();
  }
  page.msgs.reserve(found.size());
  for (const auto& message : found) page.msgs.push_back(*message);
  return page;
}

biz::IMMessagePage ChatState::OfflineMessages(const biz::IMConversationID& cid) const {
  std::vector<std::shared_ptr<const biz::IMMessage>> found;
  biz::IMMessagePage page;
  {
    base::AutoLock hold(lock_);
    const auto conversation = conversations_.find(cid);
    if (conversation == conversations_.end()) return page;
    const Cached& cached = conversation->second.cached;
    for (const auto& [place, entry] : cached) {
      if (entry.offline) found.push_back(entry.message);
    }
    page.outofcache = static_cast<std::size_t>(conversation->second.unread) > cached.size();
  }
  page.msgs.reserve(found.size());
  for (const auto& message : found) page.msgs.push_back(*message);
  return page;
}

std::int32_t ChatState::Unread(const biz::IMConversationID& cid) const {
  base::AutoLock hold(lock_);
  const auto conversation = conversations_.find(cid);
  return conversation == conversations_.end() ? 0 : conversation->second.unread;
}

std::vector<biz::IMUnreadCount> ChatState::Conversations(const ChatKinds& kinds) const {
  std::vector<std::pair<Position, biz::IMUnreadCount>> all;
  {
    base::AutoLock hold(lock_);
    all.reserve(conversations_.size());
    for (const auto& [cid, conversation] : conversations_) {
      const bool wanted = std::find(kinds.begin(), kinds.end(), cid.type) != kinds.end();
      if (!wanted || conversation.newest.is_end()) continue;
      all.push_back({conversation.newest, {cid, conversation.unread}});
    }
  }
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<biz::IMUnreadCount> sorted;
  sorted.reserve(all.size());
  for (auto& entry : all) sorted.push_back(std::move(entry.second));
  return sorted;
}

bool ChatState::Knows(const biz::IMConversationID& cid) const {
  base::AutoLock hold(lock_);
  return conversations_.contains(cid);
}

std::int64_t ChatState::MarkRead(const biz::IMConversationID& cid) {
  base::AutoLock hold(lock_);
  const auto found = conversations_.find(cid);
  if (found == conversations_.end() || found->second.unread == 0) return 0;
  Conversation& conversation = found->second;
  conversation.unread = 0;
  conversation.read_arrival = conversation.last_arrival;
  while (!conversation.cached.empty()) Uncache(conversation, conversation.cached.begin());
  return conversation.last_arrival;
}

void ChatState::SetMaxCache(std::int32_t count) {
  base::AutoLock hold(lock_);
  most_cached_ = count > 0 ? std::min(static_cast<std::size_t>(count), kMostCachedMessages)
                           : kMostCachedMessages;
  ShrinkCache();
}

}  // namespace imsdk::account
