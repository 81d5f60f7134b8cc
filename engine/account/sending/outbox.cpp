#include "account/sending/outbox.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "account/files/file_tokens.h"
#include "kexbase/callback.h"

namespace imsdk::account {

namespace {

// How often a server may take a message and lose it before the account gives up.
constexpr int kMostTakings = 5;

// What is stored in one go.
constexpr std::size_t kBytesInSlice = 2 * 1024 * 1024;
constexpr std::size_t kMessagesInSlice = 256;

biz::ResultCode Refused(biz::EngineCode code, const wchar_t* text) { return {code, 0, text}; }

const std::vector<biz::IMBodyItem>& ItemsOf(const biz::IMSendRequest& request) {
  static const std::vector<biz::IMBodyItem> kNothing;
  return request.body ? *request.body : kNothing;
}

biz::IMMessage WithBody(biz::IMMessage message, const ComposedBody& body) {
  message.msgbody = body.body;
  message.extinfo.others = body.others;
  return message;
}

}  // namespace

void Outbox::Send(const biz::IMConversationID& cid, const biz::IMSendRequest& request,
                  biz::IMCallback<> done) {
  link::Held holds;
  if (const auto why = link::CheckBounds(request, &holds); !why.ok()) return done(why);
  const std::vector<biz::IMBodyItem>& items = ItemsOf(request);
  if (HasInputStatus(items)) return done(SendInputStatus(cid, items));
  std::size_t content = 0;
  const auto refused = CheckBody(items, &content);
  if (refused == biz::kEngineTooLarge) {
    return done(Refused(refused, L"the items of \"msgbody\" are too large together"));
  }
  if (refused != biz::kEngineOk && request.forward_msgid == 0) {
    return done(Refused(refused, L"there is nothing to send"));
  }
  if (const auto why = Take(cid, request, holds, done); !why.ok()) done(why);
}

biz::ResultCode Outbox::Take(const biz::IMConversationID& cid, const biz::IMSendRequest& request,
                             const link::Held& holds, const biz::IMCallback<>& done) {
  biz::IMMessage message;
  message.cid = cid;
  message.fromid = state_->self;
  message.toid = cid.user;
  message.extinfo.autochatmsg = request.autoreply ? 1 : 0;
  if (request.tribeat.atmsgtype != biz::kAtNobody) {
    const bool members = request.tribeat.atmsgtype == biz::kAtMembers;
    message.tribeat = {biz::kMsgUnread, request.tribeat.atmsgtype, biz::kAtRelationSender,
                       members ? request.tribeat.atmembers : std::vector<biz::IMUserID>{}};
  }
  base::AutoLock hold(queue_lock_);
  if (state_->closed) return NotLoggedIn();
  if (open_count_ >= kMostOpenMessages || !bodies_.Hold(request.body, holds)) {
    return Refused(biz::kEngineBusy, L"too many messages are being sent");
  }
  ++open_count_;
  message.msgtime = state_->environment->ids->Now();
  message.msgid = state_->environment->ids->Next();
  queue_.push_back({std::move(message), request, done});
  if (std::exchange(preparing_, true)) return {};
  state_->runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), &Outbox::PrepareInTurns));
  return {};
}

void Outbox::PrepareInTurns() {
  if (!PrepareSome()) return;
  state_->runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), &Outbox::PrepareInTurns));
}

bool Outbox::PrepareSome() {
  std::size_t bytes = 0;
  std::size_t messages = 0;
  bool more = true;
  while (more && bytes < kBytesInSlice && messages < kMessagesInSlice) {
    Waiting next;
    {
      base::AutoLock hold(queue_lock_);
      more = preparing_ = !queue_.empty();
      if (!more) break;
      next = std::move(queue_.front());
      queue_.pop_front();
    }
    ++messages;
    bytes += Prepare(std::move(next));
  }
  state_->commit.Flush();
  return more;
}

void Outbox::Finish() {
  while (PrepareSome()) {
  }
}

biz::ResultCode Outbox::SendInputStatus(const biz::IMConversationID& cid,
                                        const std::vector<biz::IMBodyItem>& items) {
  const auto status = InputStatusOf(items);
  if (!status) return Refused(biz::kEngineRefused, L"there is no such typing state");
  if (state_->closed) return NotLoggedIn();
  if (const auto why = Allows(cid.type, Ability::kType); !why.ok()) return why;
  if (const auto why = state_->line->Can<link::SendTyping>(); !why.ok()) return why;
  // Nobody learns what became of it.
  state_->runner->PostTask(
      FROM_HERE, base::BindWeak(weak_from_this(), [cid, status = *status](Outbox& outbox) {
        outbox.state_->line->Ask(link::SendTyping{cid, status}, [](const auto&, const auto&) {});
      }));
  return {};
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

std::size_t Outbox::Prepare(Waiting waiting) {
  const biz::IMSendRequest& request = waiting.request;
  std::size_t content = 0;
  const bool forwards =
      request.forward_msgid != 0 && CheckBody(ItemsOf(request), &content) == biz::kEngineEmpty;
  const auto body = forwards
                        ? std::make_shared<const ComposedBody>(Forwarded(request.forward_msgid))
                        : bodies_.Compose(request.body, state_->files);
  bodies_.Release(request.body);
  biz::IMMessage& message = waiting.message;
  // A store that cannot be read refuses the message below.
  sqlite::Guarded(
      [&] { message.msgtime = state_->store.TimeToSend(message.cid, message.msgtime); });
  const bool named = !forwards && request.forward_msgid != 0;
  message.msgtype = named ? request.forward_msgtype : body->msgtype;
  message.msgstatus = body->result.ok() ? biz::kMsgSending : biz::kMsgFailed;
  state_->commit.Add(
      [this, message, body](sqlite::Database&) {
        state_->store.AddOutgoing(WithBody(message, *body), body->result.ok());
      },
      [this, message, body, done = waiting.done](const biz::ResultCode& stored) {
        if (!stored.ok()) --open_count_;
        done(stored);
        if (stored.ok()) Announce(message, *body);
      });
  return body->body.size() + body->others.size();
}

void Outbox::Announce(const biz::IMMessage& message, const ComposedBody& body) {
  state_->chat.AddSeen(message);
  state_->RaiseSent(WithBody(message, body));
  if (!body.result.ok()) {
    Settle(message, body.result, 0, true);
  } else {
    HandOver(message);
  }
}

biz::ResultCode Outbox::Resend(const biz::IMConversationID& cid,
                               const biz::IMResendRequest& request) {
  const std::int64_t msgid = request.msgid;
  base::AutoLock hold_queue(queue_lock_);
  if (state_->closed) return NotLoggedIn();
  {
    base::AutoLock hold(failed_lock_);
    const auto entry = failed_.find(msgid);
    if (entry == failed_.end() || entry->second != cid) {
      return Refused(biz::kEngineNotFound, L"no such message has failed");
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
