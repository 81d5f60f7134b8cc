#include "account/sending/outbox.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "kexbase/callback.h"
#include "kexbase/time.h"

namespace imsdk::account {

std::int32_t Outbox::Send(const biz::IMUserID& cid, std::vector<biz::IMBodyItem> items,
                          const biz::IMSendOptions& options) {
  if (HasInputStatus(items)) return SendInputStatus(cid, items);
  std::size_t content = 0;
  const auto refused = CheckBody(items, &content);
  const bool forwards = refused == biz::kEngineEmpty && options.forward_msgid != 0;
  if (refused != biz::kEngineOk && !forwards) return refused;
  if (open_count_ >= kMostOpenMessages || open_content_ + content > kMostOpenContent) {
    return biz::kEngineBusy;
  }

  biz::IMMessage message;
  message.cid = cid;
  message.fromid = state_->self;
  message.toid = cid;
  message.extinfo.autochatmsg = options.autoreply ? 1 : 0;
  base::AutoLock hold(queue_lock_);
  if (state_->closed) return biz::kEngineNotLoggedIn;
  ++open_count_;
  open_content_ += content;
  message.msgtime = base::Time::Now().ToMilliseconds();
  message.msgid = state_->environment->ids->Next();
  auto prepare = [message = std::move(message), items = std::move(items), options,
                  content](Outbox& outbox) {
    outbox.Prepare(message, items, options);
    outbox.open_content_ -= content;
  };
  state_->runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), std::move(prepare)));
  return biz::kEngineOk;
}

std::int32_t Outbox::SendInputStatus(const biz::IMUserID& cid,
                                     const std::vector<biz::IMBodyItem>& items) {
  const auto status = InputStatusOf(items);
  if (!status) return biz::kEngineRefused;
  if (state_->closed) return biz::kEngineNotLoggedIn;
  state_->runner->PostTask(
      FROM_HERE, base::BindWeak(weak_from_this(), [cid, status = *status](Outbox& outbox) {
        if (outbox.session_) outbox.session_->Signal(cid, status);
      }));
  return biz::kEngineOk;
}

bool Outbox::StopTaking() {
  base::AutoLock hold(queue_lock_);
  return !state_->closed.exchange(true);
}

ComposedBody Outbox::Forwarded(std::int64_t msgid) {
  state_->commit.Flush();
  ComposedBody body;
  std::optional<biz::IMMessage> found;
  body.result = sqlite::Guarded([&] { found = state_->store.FindAnywhere(msgid); });
  if (!found || found->msgstatus == biz::kMsgWithdrawn) {
    if (body.result.ok()) {
      body.result = {biz::kEngineNotFound, 0, L"the message to forward was not found"};
    }
    return body;
  }
  body.msgtype = found->msgtype;
  body.body = std::move(found->msgbody);
  body.others = std::move(found->extinfo.others);
  return body;
}

void Outbox::Prepare(biz::IMMessage message, const std::vector<biz::IMBodyItem>& items,
                     const biz::IMSendOptions& options) {
  std::size_t content = 0;
  const bool forwards =
      options.forward_msgid != 0 && CheckBody(items, &content) == biz::kEngineEmpty;
  ComposedBody composed =
      forwards ? Forwarded(options.forward_msgid) : ComposeBody(items, state_->files);
  if (!forwards && options.forward_msgid != 0) composed.msgtype = options.forward_msgtype;
  message.msgtype = composed.msgtype;
  message.msgbody = std::move(composed.body);
  message.extinfo.others = std::move(composed.others);
  const bool complete = composed.result.ok();
  message.msgstatus = complete ? biz::kMsgSending : biz::kMsgFailed;
  state_->commit.Add([this, message, complete](
                         sqlite::Database&) { state_->store.AddOutgoing(message, complete); },
                     [this, message, problem = composed.result](const biz::ResultCode& stored) {
                       Announce(message, problem, stored);
                     });
}

void Outbox::Announce(const biz::IMMessage& message, const biz::ResultCode& problem,
                      const biz::ResultCode& stored) {
  biz::IMMessage announced = message;
  if (!stored.ok()) announced.msgstatus = biz::kMsgFailed;
  if (stored.ok()) state_->chat.AddOutgoing(message);
  state_->events.on_send_new_msg({message.cid}, {announced});
  if (!stored.ok()) {
    Settle(message, stored, 0, false);
  } else if (!problem.ok()) {
    Settle(message, problem, 0, true);
  } else {
    HandOver(message);
  }
}

std::int32_t Outbox::Resend(const biz::IMUserID& cid, std::int64_t msgid, bool at_once) {
  base::AutoLock hold_queue(queue_lock_);
  if (state_->closed) return biz::kEngineNotLoggedIn;
  {
    base::AutoLock hold(failed_lock_);
    const auto entry = failed_.find(msgid);
    if (entry == failed_.end() || entry->second != cid) return biz::kEngineNotFound;
    failed_.erase(entry);
  }
  ++open_count_;
  auto try_again = [cid, msgid, at_once](Outbox& outbox) {
    if (at_once && !outbox.session_) {
      outbox.hopeless_ = false;  // until the attempt that is asked for now has failed
      outbox.want_link_();
    }
    outbox.TryAgain(cid, msgid);
  };
  state_->runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), std::move(try_again)));
  return biz::kEngineOk;
}

void Outbox::TryAgain(const biz::IMUserID& cid, std::int64_t msgid) {
  state_->commit.Flush();
  std::optional<Unsent> found;
  biz::ResultCode read = sqlite::Guarded([&] { found = state_->store.FindUnsent(cid, msgid); });
  biz::IMMessage message;
  message.cid = cid;
  message.msgid = msgid;
  if (found) message = std::move(found->message);
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
  const std::int64_t msgid = message.msgid;
  const Deadline deadline = std::chrono::steady_clock::now() + state_->environment->timeouts.send;
  open_[msgid] = {std::move(message), deadline};
  deadlines_.emplace_back(deadline, msgid);
}

void Outbox::Connect(std::shared_ptr<link::Session> session) {
  session_ = std::move(session);
  hopeless_ = false;
  for (const auto& [msgid, open] : open_) Deliver(open.message);
  WaitForDeadline();
}

void Outbox::GiveUp(const biz::ResultCode& why) {
  session_.reset();
  hopeless_ = true;
  while (!open_.empty()) {
    Answered(open_.begin()->first, {biz::kEngineNoLink, why.code, why.text}, 0);
  }
}

void Outbox::Close() {
  session_.reset();
  open_.clear();
  deadlines_.clear();
}

void Outbox::HandOver(const biz::IMMessage& message) {
  AddOpen(message);
  WaitForDeadline();
  if (session_) return Deliver(message);
  if (hopeless_) Answered(message.msgid, {biz::kEngineNoLink, 0, L"the server is out of reach"}, 0);
}

void Outbox::Deliver(const biz::IMMessage& message) {
  link::Message outgoing;
  outgoing.msgid = message.msgid;
  outgoing.msgtime = message.msgtime;
  outgoing.from = message.fromid;
  outgoing.to = message.toid;
  outgoing.msgtype = message.msgtype;
  outgoing.body = message.msgbody;
  outgoing.ext = message.extinfo;
  session_->Deliver(
      outgoing, [runner = state_->runner, weak = weak_from_this(), msgid = message.msgid](
                    const biz::ResultCode& result, std::int64_t svrtime) {
        runner->PostTask(FROM_HERE, base::BindWeak(weak, [msgid, result, svrtime](Outbox& outbox) {
                           outbox.Answered(msgid, result, svrtime);
                         }));
      });
}

void Outbox::Answered(std::int64_t msgid, const biz::ResultCode& result, std::int64_t svrtime) {
  const auto entry = open_.find(msgid);
  if (entry == open_.end()) return;  // too late, or a second answer
  const biz::IMMessage message = std::move(entry->second.message);
  open_.erase(entry);
  const biz::IMMsgStatus status = result.ok() ? biz::kMsgSent : biz::kMsgFailed;
  state_->commit.Add(
      [this, cid = message.cid, msgid, status, svrtime](sqlite::Database&) {
        state_->store.SetStatus(cid, msgid, status, svrtime);
      },
      // A status that could not be stored is found out again at the next login.
      [this, message, result, svrtime](const biz::ResultCode&) {
        Settle(message, result, svrtime, true);
      });
}

void Outbox::Settle(const biz::IMMessage& message, const biz::ResultCode& result,
                    std::int64_t svrtime, bool again) {
  --open_count_;
  if (!result.ok() && again) {
    base::AutoLock hold(failed_lock_);
    failed_.emplace(message.msgid, message.cid);
  }
  state_->events.on_send_msg_status(message.cid, static_cast<biz::IMMsgType>(message.msgtype),
                                    message.msgid, svrtime, result);
}

bool Outbox::IsStale(const std::pair<Deadline, std::int64_t>& entry) const {
  const auto open = open_.find(entry.second);
  return open == open_.end() || open->second.deadline != entry.first;
}

void Outbox::WaitForDeadline() {
  while (!deadlines_.empty() && IsStale(deadlines_.front())) deadlines_.pop_front();
  if (deadlines_.empty() || std::exchange(waiting_, true)) return;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadlines_.front().first - std::chrono::steady_clock::now());
  state_->runner->PostDelayedTask(
      FROM_HERE, base::BindWeak(weak_from_this(), &Outbox::CheckDeadlines),
      std::max(left, std::chrono::milliseconds{0}) + std::chrono::milliseconds{1});
}

void Outbox::CheckDeadlines() {
  waiting_ = false;
  const auto now = std::chrono::steady_clock::now();
  while (!deadlines_.empty() && deadlines_.front().first <= now) {
    const auto entry = deadlines_.front();
    deadlines_.pop_front();
    if (IsStale(entry)) continue;
    Answered(entry.second, {biz::kEngineTimeout, 0, L"the server did not answer in time"}, 0);
  }
  WaitForDeadline();
}

}  // namespace imsdk::account
