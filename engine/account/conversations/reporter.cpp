#include "account/conversations/reporter.h"

#include <optional>

namespace imsdk::account {

void Reporter::Withdraw(const biz::IMUserID& cid, std::int64_t msgid, biz::IMDoneCallback done) {
  state_->line->Ask(
      [cid, msgid](link::Session& session, link::DoneCallback answer) {
        session.Withdraw(cid, msgid, std::move(answer));
      },
      [weak = weak_from_this(), cid, msgid, done = std::move(done)](const biz::ResultCode& result) {
        const auto self = weak.lock();
        if (!result.ok() || !self) return done(result);
        self->Withdrawn(cid, msgid, done);
      });
}

void Reporter::Withdrawn(const biz::IMUserID& cid, std::int64_t msgid,
                         const biz::IMDoneCallback& done) {
  // The server tells this device too; whichever comes first makes it known.
  const auto was = std::make_shared<std::optional<account::Withdrawn>>();
  state_->commit.Add(
      [this, cid, msgid, was](sqlite::Database&) {
        *was = state_->store.Withdraw(cid, state_->self, msgid);
      },
      [this, cid, was, done](const biz::ResultCode& stored) {
        if (stored.ok() && *was) {
          const biz::IMMessage& message = (*was)->message;
          state_->events.on_msg_withdraw(
              cid, {cid, state_->self, message.msgid, message.msgtime, message.svrtime}, {});
        }
        done(stored);
      });
}

void Reporter::ReportRead(const biz::IMUserID& cid, std::vector<std::int64_t> msgids,
                          biz::IMDoneCallback done) {
  state_->commit.Flush();
  const biz::ResultCode read =
      sqlite::Guarded([&] { msgids = state_->store.Reportable(cid, msgids); });
  if (!read.ok() || msgids.empty()) return done(read);
  state_->line->Ask(
      [cid, msgids](link::Session& session, link::DoneCallback answer) {
        session.ReportRead(cid, msgids, std::move(answer));
      },
      [weak = weak_from_this(), cid, msgids,
       done = std::move(done)](const biz::ResultCode& result) {
        const auto self = weak.lock();
        if (!result.ok() || !self) return done(result);
        self->state_->commit.Add([state = self->state_.get(), cid, msgids](
                                     sqlite::Database&) { state->store.SetReported(cid, msgids); },
                                 [done](const biz::ResultCode& stored) { done(stored); });
      });
}

void Reporter::TellRead(const ChatKey& key) {
  const std::uint64_t number = ++last_;
  untold_[key] = number;
  if (state_->line->session()) SendRead(key, number);
}

void Reporter::Connected() {
  const auto untold = untold_;
  for (const auto& [key, number] : untold) SendRead(key, number);
}

void Reporter::SendRead(const ChatKey& key, std::uint64_t number) {
  Position upto;
  const biz::ResultCode read =
      sqlite::Guarded([&] { upto = state_->store.conversations().ReadBoundary(key); });
  if (!read.ok() || upto.is_end()) return;
  state_->line->Ask(
      [cid = key.cid, upto](link::Session& session, link::DoneCallback answer) {
        session.MarkRead(cid, {upto.msgtime, upto.msgid}, std::move(answer));
      },
      [weak = weak_from_this(), key, number](const biz::ResultCode& result) {
        const auto self = weak.lock();
        if (!self || result.code == biz::kEngineNoLink || result.code == biz::kEngineTimeout) {
          return;  // the next link tells it
        }
        const auto untold = self->untold_.find(key);
        if (untold != self->untold_.end() && untold->second == number) self->untold_.erase(untold);
      });
}

}  // namespace imsdk::account
