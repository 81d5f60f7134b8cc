#include "account/conversations/reporter.h"

#include <algorithm>
#include <optional>

namespace imsdk::account {

void Reporter::Withdraw(const biz::IMConversationID& cid, std::int64_t msgid,
                        biz::IMCallback<> done) {
  state_->line->Ask(link::Withdraw{cid, msgid},
                    [weak = weak_from_this(), cid, msgid, done = std::move(done)](
                        const biz::ResultCode& result, const auto&) {
                      const auto self = weak.lock();
                      if (!result.ok() || !self) return done(result);
                      self->Withdrawn(cid, msgid, done);
                    });
}

void Reporter::Withdrawn(const biz::IMConversationID& cid, std::int64_t msgid,
                         const biz::IMCallback<>& done) {
  // The server tells this device too; whichever comes first makes it known.
  const auto was = std::make_shared<std::optional<account::Withdrawn>>();
  state_->commit.Add(
      [this, cid, msgid, was](sqlite::Database&) {
        *was = state_->store.Withdraw(cid, state_->self, msgid);
      },
      [this, cid, was, done](const biz::ResultCode& stored) {
        if (stored.ok() && *was) {
          const biz::IMMessage& message = (*was)->message;
          state_->RaiseWithdrawn(
              {cid, state_->self, message.msgid, message.msgtime, message.svrtime});
        }
        done(stored);
      });
}

void Reporter::ReportRead(const biz::IMConversationID& cid, std::vector<std::int64_t> msgids,
                          biz::IMCallback<> done) {
  if (const auto why = state_->line->Can<link::ReportRead>(); !why.ok()) return done(why);
  state_->commit.Flush();
  const biz::ResultCode read =
      sqlite::Guarded([&] { msgids = state_->store.Reportable(cid, msgids); });
  if (!read.ok()) return done(read);
  const auto all = std::make_shared<const std::vector<std::int64_t>>(std::move(msgids));
  ReportFrom(cid, all, 0, std::move(done));
}

void Reporter::ReportFrom(const biz::IMConversationID& cid, const Msgids& all, std::size_t from,
                          biz::IMCallback<> done) {
  if (from == all->size()) return done({});
  const std::size_t to = std::min(all->size(), from + link::kMaxReported);
  const std::vector<std::int64_t> part(all->begin() + static_cast<std::ptrdiff_t>(from),
                                       all->begin() + static_cast<std::ptrdiff_t>(to));
  state_->line->Ask(link::ReportRead{cid, part}, [weak = weak_from_this(), cid, part, all, to,
                                                  done = std::move(done)](
                                                     const biz::ResultCode& result, const auto&) {
    const auto self = weak.lock();
    if (!result.ok() || !self) return done(result);
    self->state_->commit.Add([state = self->state_.get(), cid,
                              part](sqlite::Database&) { state->store.SetReported(cid, part); },
                             [self, cid, all, to, done](const biz::ResultCode& stored) {
                               if (!stored.ok()) return done(stored);
                               self->ReportFrom(cid, all, to, done);
                             });
  });
}

void Reporter::TellRead(const biz::IMConversationID& cid) {
  const std::uint64_t number = ++last_;
  untold_[cid] = number;
  if (state_->line->connected()) SendRead(cid, number);
}

void Reporter::Connected() {
  const auto untold = untold_;
  for (const auto& [cid, number] : untold) SendRead(cid, number);
}

void Reporter::SendRead(const biz::IMConversationID& cid, std::uint64_t number) {
  Position upto;
  const biz::ResultCode read = sqlite::Guarded([&] {
    ConversationTable& table = state_->store.conversations();
    upto = table.ReadBoundary(table.Find(cid));
  });
  if (!read.ok() || upto.is_end()) return;
  state_->line->Ask(
      link::MarkRead{cid, {upto.msgtime, upto.msgid}},
      [weak = weak_from_this(), cid, number](const biz::ResultCode& result, const auto&) {
        const auto self = weak.lock();
        if (!self || result.code == biz::kEngineNoLink || result.code == biz::kEngineTimeout) {
          return;  // the next link tells it
        }
        const auto untold = self->untold_.find(cid);
        if (untold != self->untold_.end() && untold->second == number) self->untold_.erase(untold);
      });
}

}  // namespace imsdk::account
