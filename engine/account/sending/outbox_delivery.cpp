// What becomes of stored messages: handed over, waited for, failed, tried again.
#include <algorithm>
#include <optional>
#include <utility>

#include "account/sending/outbox.h"
#include "kexbase/callback.h"

namespace imsdk::account {

namespace {

// How often a server may take a message and lose it before the account gives up.
constexpr int kMostTakings = 5;

}  // namespace

biz::ResultCode Outbox::Resend(const biz::IMConversationID& cid,
                               const biz::IMResendRequest& request) {
  const std::int64_t msgid = request.msgid;
  base::AutoLock hold_queue(queue_lock_);
  if (state_->closed) return NotLoggedIn();
  {
    base::AutoLock hold(failed_lock_);
    const auto entry = failed_.find(msgid);
    if (entry == failed_.end() || entry->second != cid) {
      return {biz::kEngineNotFound, 0, L"no such message has failed"};
    }
    failed_.erase(entry);
  }
  ++open_count_;
  auto try_again = [cid, msgid, at_once = request.at_once](Outbox& outbox) {
    if (at_once && !outbox.state_->line->connected()) {
      outbox.hopeless_ = false;  // until the attempt that is asked for now has failed
      outbox.want_link_();
    }
    outbox.TryAgain(cid, msgid);
  };
  state_->runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), std::move(try_again)));
  return {};
}

void Outbox::TryAgain(const biz::IMConversationID& cid, std::int64_t msgid) {
  state_->commit.Flush();
  std::optional<Unsent> found;
  biz::ResultCode read = sqlite::Guarded([&] { found = state_->store.FindUnsent(cid, msgid); });
  biz::IMMessage message;
  message.cid = cid;
  message.msgid = msgid;
  if (found) message = std::move(found->message);
  message.msgbody = {};  // the store has it
  if (read.ok() && !found) read = {biz::kEngineNotFound, 0, L"there is no such message"};
  if (found && !found->complete) {
    read = {biz::kEngineNotFound, 0, L"the files of the message were not found"};
  }
  if (!read.ok()) return Settle(message, read, 0, found.has_value());
  state_->commit.Add(
      [this, cid, msgid](sqlite::Database&) {
        state_->store.SetStatus(cid, msgid, biz::kMsgSending, 0);
      },
      [this, message](const biz::ResultCode& stored) {
        if (!stored.ok()) return Settle(message, stored, 0, true);
        HandOver(message);
      });
}

void Outbox::Load() {
  base::AutoLock hold(failed_lock_);
  for (auto& [cid, msgid] : state_->store.Failed()) failed_.emplace(msgid, std::move(cid));
  for (Unsent& unsent : state_->store.Sending()) {
    ++open_count_;
    AddOpen(std::move(unsent.message));
  }
}

void Outbox::AddOpen(biz::IMMessage message) {
  message.msgbody = {};
  message.extinfo.others = {};
  message.tribeat.atmembers = {};
  const std::int64_t msgid = message.msgid;
  open_[msgid] = {std::move(message), {}};
  SetDeadline(msgid, open_[msgid]);
}

void Outbox::SetDeadline(std::int64_t msgid, Open& open) {
  open.deadline = Clock::now() + state_->environment->timeouts.send;
  deadlines_.emplace_back(open.deadline, msgid);
  WaitForDeadline();
}

void Outbox::Connected() {
  ++link_;
  hopeless_ = false;
  std::vector<std::int64_t> msgids;
  for (const auto& [msgid, open] : open_) msgids.push_back(msgid);
  for (const std::int64_t msgid : msgids) {
    const auto entry = open_.find(msgid);
    if (entry != open_.end()) Queue(entry->second.message.cid, msgid);
  }
}

void Outbox::Disconnected() {
  turns_.clear();
  ready_.clear();
  ++link_;
  for (auto& [msgid, open] : open_) {
    StopWork(open);
    if (open.stage == Stage::kTaken) continue;
    const bool had_none = open.deadline == Deadline::max();
    open.stage = Stage::kWaiting;
    if (had_none) SetDeadline(msgid, open);
  }
}

void Outbox::GiveUp(const biz::ResultCode& why) {
  hopeless_ = true;
  std::vector<std::int64_t> hopeless;
  for (const auto& [msgid, open] : open_) {
    if (open.stage != Stage::kTaken) hopeless.push_back(msgid);
  }
  for (const std::int64_t msgid : hopeless) {
    Answered(msgid, {biz::kEngineNoLink, why.code, why.text});
  }
}

void Outbox::Close() {
  open_.clear();
  turns_.clear();
  ready_.clear();
  in_work_ = bytes_in_work_ = 0;
  deadlines_.clear();
}

void Outbox::HandOver(const biz::IMMessage& message) {
  AddOpen(message);
  if (state_->line->connected()) return Queue(message.cid, message.msgid);
  if (hopeless_) {
    Answered(message.msgid, {biz::kEngineNoLink, 0, L"the server is out of reach"});
  }
}

void Outbox::Delivered(std::int64_t msgid, const biz::ResultCode& result,
                       const link::Delivered& how) {
  if (result.code == biz::kEngineNoLink) return;  // waits for the next link
  const auto entry = open_.find(msgid);
  if (entry == open_.end()) return;
  if (!result.ok() || how.step == link::Step::kArchived) return Answered(msgid, result, how);
  entry->second.stage = Stage::kTaken;
  ++entry->second.taken;
  StopWork(entry->second);
  SetDeadline(msgid, entry->second);
  TakeTurns();
}

void Outbox::Answered(std::int64_t msgid, const biz::ResultCode& result,
                      const link::Delivered& how) {
  const auto entry = open_.find(msgid);
  if (entry == open_.end()) return;  // too late, or a second answer
  StopWork(entry->second);
  transfers_->UploadEnds(msgid, result, how.nodes);
  const biz::IMMessage message = std::move(entry->second.message);
  open_.erase(entry);
  const biz::IMMsgStatus status = result.ok() ? biz::kMsgSent : biz::kMsgFailed;
  state_->commit.Add(
      [this, cid = message.cid, msgid, status, how](sqlite::Database&) {
        state_->store.SetStatus(cid, msgid, status, how.svrtime, how.place);
      },
      // A status that could not be stored is found out again at the next login.
      [this, message, result, how](const biz::ResultCode&) {
        Settle(message, result, how.svrtime, true);
      });
  TakeTurns();
}

void Outbox::Archived(const biz::IMMessage& message, std::int64_t svrtime) {
  if (const auto entry = open_.find(message.msgid); entry != open_.end()) {
    StopWork(entry->second);
    open_.erase(entry);
    TakeTurns();
  } else {
    // It had been given up, or waits for the outcome of that to be stored.
    base::AutoLock hold(failed_lock_);
    if (failed_.erase(message.msgid) == 0) return;
    ++open_count_;
  }
  Settle(message, {}, svrtime, false);
}

void Outbox::Settle(const biz::IMMessage& message, const biz::ResultCode& result,
                    std::int64_t svrtime, bool again) {
  --open_count_;
  if (!result.ok() && again) {
    base::AutoLock hold(failed_lock_);
    failed_.emplace(message.msgid, message.cid);
  }
  state_->RaiseStatus(message, svrtime, result);
}

bool Outbox::IsStale(const std::pair<Deadline, std::int64_t>& entry) const {
  const auto open = open_.find(entry.second);
  return open == open_.end() || open->second.deadline != entry.first;
}

void Outbox::WaitForDeadline() {
  while (!deadlines_.empty() && IsStale(deadlines_.front())) deadlines_.pop_front();
  if (deadlines_.empty() || std::exchange(waiting_, true)) return;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadlines_.front().first -
                                                                          Clock::now());
  state_->runner->PostDelayedTask(
      FROM_HERE, base::BindWeak(weak_from_this(), &Outbox::CheckDeadlines),
      std::max(left, std::chrono::milliseconds{0}) + std::chrono::milliseconds{1});
}

void Outbox::CheckDeadlines() {
  waiting_ = false;
  const auto now = Clock::now();
  while (!deadlines_.empty() && deadlines_.front().first <= now) {
    const auto entry = deadlines_.front();
    deadlines_.pop_front();
    if (IsStale(entry)) continue;
    Open& open = open_.at(entry.second);
    if (open.stage != Stage::kTaken || open.taken >= kMostTakings) {
      const biz::IMConversationID cid = open.message.cid;
      Answered(entry.second, {biz::kEngineTimeout, 0, L"the server did not answer in time"});
      Ready(cid);  // whoever waited behind it
    } else if (state_->line->connected()) {
      Queue(biz::IMConversationID(open.message.cid), entry.second);
    } else {
      SetDeadline(entry.second, open);
    }
  }
  WaitForDeadline();
}

}  // namespace imsdk::account
