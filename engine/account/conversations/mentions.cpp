#include "account/conversations/mentions.h"

#include <algorithm>

#include "account/session/on_worker.h"

namespace imsdk::account {

namespace {

biz::ResultCode NobodyMentioned(const wchar_t* text) { return {biz::kEngineRefused, 0, text}; }

}  // namespace

biz::ResultCode CheckMention(const biz::IMTribeAt& mention) {
  if (mention.atmsgtype < biz::kAtNobody || mention.atmsgtype > biz::kAtAll) {
    return NobodyMentioned(L"there is no such kind of mention");
  }
  if (mention.atmsgtype == biz::kAtMembers && mention.atmembers.empty()) {
    return NobodyMentioned(L"the message mentions nobody");
  }
  return {};
}

void Mentions::MarkRead(const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids,
                        biz::IMCallback<> done) {
  if (const auto why = state_->line->Can<link::ReadMentions>(); !why.ok()) return done(why);
  const auto marked = std::make_shared<std::vector<link::MessageName>>();
  state_->commit.Add(
      [this, cid, msgids, marked](sqlite::Database&) {
        *marked = state_->store.mentions().MarkRead(cid, msgids);
      },
      [self = shared_from_this(), cid, marked,
       done = std::move(done)](const biz::ResultCode& stored) {
        if (stored.ok() && !marked->empty()) {
          biz::IMAtReaded readed;
          readed.readers = {self->state_->self};
          for (const auto& name : *marked) readed.counts.push_back({name.msgid});
          self->state_->tribe_events.on_tribe_at_msg_readed(cid.tribe, readed);
          self->Tell(cid);
        }
        done(stored);
      });
}

void Mentions::Tell(const biz::IMConversationID& cid) {
  if (!state_->line->connected()) return;
  std::vector<link::MessageName> names;
  const biz::ResultCode read =
      sqlite::Guarded([&] { names = state_->store.mentions().Untold(cid); });
  if (!read.ok() || names.empty()) return;
  state_->line->Ask(
      link::ReadMentions{cid.tribe, names},
      [weak = weak_from_this(), cid, names](const biz::ResultCode& result, const auto&) {
        const auto self = weak.lock();
        if (!self || result.code == biz::kEngineNoLink || result.code == biz::kEngineTimeout) {
          return;  // the next link tells it
        }
        // Nobody hears of it from a server that refuses, and asking again changes nothing.
        self->state_->commit.Add(
            [state = self->state_.get(), cid, names](sqlite::Database&) {
              state->store.mentions().SetTold(cid, names);
            },
            [self, cid, more = names.size() == link::kMostMentions](const biz::ResultCode& stored) {
              if (stored.ok() && more) self->Tell(cid);
            });
      });
}

void Mentions::Connected() {
  if (!state_->line->Can<link::ReadMentions>().ok()) return;
  std::vector<biz::IMConversationID> untold;
  sqlite::Guarded([&] { untold = state_->store.mentions().WithUntold(); });
  for (const auto& cid : untold) Tell(cid);
}

void Mentions::Count(const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids,
                     biz::IMCallback<biz::IMAtUnread> done) {
  state_->commit.Flush();  // what was done before counts
  const auto found = std::make_shared<biz::IMAtUnread>();
  const biz::ResultCode read =
      sqlite::Guarded([&] { found->count = state_->store.mentions().CountUnread(cid); });
  if (!read.ok()) return done(read, {});
  CountFrom(cid, std::make_shared<std::vector<std::int64_t>>(msgids), found, std::move(done));
}

void Mentions::CountFrom(const biz::IMConversationID& cid,
                         const std::shared_ptr<std::vector<std::int64_t>>& left,
                         const std::shared_ptr<biz::IMAtUnread>& found,
                         biz::IMCallback<biz::IMAtUnread> done) {
  if (left->empty()) return done({}, *found);
  const auto end =
      left->begin() + std::min(std::ssize(*left), static_cast<std::ptrdiff_t>(link::kMostMentions));
  link::CountMentionReaders request{cid.tribe, {left->begin(), end}};
  left->erase(left->begin(), end);
  state_->line->Ask(
      std::move(request), [weak = weak_from_this(), cid, left, found, done = std::move(done)](
                              const biz::ResultCode& result, const link::MentionCounts& part) {
        const auto self = weak.lock();
        if (!result.ok() || !self) return done(result, {});
        found->counts.insert(found->counts.end(), part.counts.begin(), part.counts.end());
        self->CountFrom(cid, left, found, done);
      });
}

void Mentions::Readers(const biz::IMConversationID& cid, std::int64_t msgid,
                       biz::IMCallback<biz::IMAtReaders> done) {
  using Readers = std::vector<link::MentionReader>;
  AskParts<link::GetMentionReaders, Readers>(
      state_, {cid.tribe, msgid}, &link::MentionReaders::readers,
      [done = std::move(done)](const biz::ResultCode& result, const Readers& found) {
        biz::IMAtReaders readers;
        for (const link::MentionReader& one : found) {
          (one.read ? readers.readedusers : readers.unreadusers).push_back(one.user);
        }
        std::sort(readers.unreadusers.begin(), readers.unreadusers.end());
        std::sort(readers.readedusers.begin(), readers.readedusers.end());
        done(result, readers);
      });
}

}  // namespace imsdk::account
