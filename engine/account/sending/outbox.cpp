#include "account/sending/outbox.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "account/files/file_tokens.h"
#include "kexbase/callback.h"
#include "kexbase/time.h"

namespace imsdk::account {

namespace {

// How often a server may take a message and lose it before the account gives up.
constexpr int kMostTakings = 5;

biz::ResultCode Refused(biz::EngineCode code, const wchar_t* text) { return {code, 0, text}; }

}  // namespace

biz::ResultCode Outbox::Send(const biz::IMConversationID& cid, const biz::IMSendRequest& request) {
  static const std::vector<biz::IMBodyItem> kNothing;
  const std::vector<biz::IMBodyItem>& items = request.body ? *request.body : kNothing;
  if (HasInputStatus(items)) return SendInputStatus(cid, items);
  std::size_t content = 0;
  const auto refused = CheckBody(items, &content);
  const bool forwards = refused == biz::kEngineEmpty && request.forward_msgid != 0;
  if (refused == biz::kEngineTooLarge) return Refused(refused, L"the message is too large");
  if (refused != biz::kEngineOk && !forwards) return Refused(refused, L"there is nothing to send");
  if (open_count_ >= kMostOpenMessages || open_content_ + content > kMostOpenContent) {
    return Refused(biz::kEngineBusy, L"too many messages are being sent");
  }

  biz::IMMessage message;
  message.cid = cid;
  message.fromid = state_->self;
  message.toid = cid.user;
  message.extinfo.autochatmsg = request.autoreply ? 1 : 0;
  base::AutoLock hold(queue_lock_);
  if (state_->closed) return NotLoggedIn();
  ++open_count_;
  open_content_ += content;
  message.msgtime = base::Time::Now().ToMilliseconds();
  message.msgid = state_->environment->ids->Next();
  auto prepare = [message = std::move(message), request, content](Outbox& outbox) {
    outbox.Prepare(message, request);
    outbox.open_content_ -= content;
  };
  state_->runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), std::move(prepare)));
  return {};
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

void Outbox::Prepare(biz::IMMessage message, const biz::IMSendRequest& request) {
  static const std::vector<biz::IMBodyItem> kNothing;
  const std::vector<biz::IMBodyItem>& items = request.body ? *request.body : kNothing;
  std::size_t content = 0;
  const bool forwards =
      request.forward_msgid != 0 && CheckBody(items, &content) == biz::kEngineEmpty;
  ComposedBody composed =
      forwards ? Forwarded(request.forward_msgid) : ComposeBody(items, state_->files);
  if (!forwards && request.forward_msgid != 0) composed.msgtype = request.forward_msgtype;
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
  if (stored.ok()) state_->chat.AddSeen(message);
  state_->RaiseSent(announced);
  if (!stored.ok()) {
    Settle(message, stored, 0, false);
  } else if (!problem.ok()) {
    Settle(message, problem, 0, true);
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
  ++link_;
  for (auto& [msgid, open] : open_) {
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
  deadlines_.clear();
}

void Outbox::HandOver(const biz::IMMessage& message) {
  AddOpen(message);
  if (state_->line->connected()) return Queue(message.cid, message.msgid);
  if (hopeless_) {
    Answered(message.msgid, {biz::kEngineNoLink, 0, L"the server is out of reach"});
  }
}

void Outbox::Queue(const biz::IMConversationID& cid, std::int64_t msgid) {
  std::deque<std::int64_t>& turns = turns_[cid];
  turns.push_back(msgid);
  if (turns.size() == 1) return TakeTurns(cid);
  open_.at(msgid).deadline = Deadline::max();  // it begins when its turn comes
}

void Outbox::TakeTurns(const biz::IMConversationID& cid) {
  for (auto turns = turns_.find(cid); turns != turns_.end(); turns = turns_.find(cid)) {
    if (turns->second.empty()) {
      turns_.erase(turns);
      return;
    }
    const std::int64_t msgid = turns->second.front();
    const auto entry = open_.find(msgid);
    if (entry == open_.end()) {
      turns->second.pop_front();
      continue;
    }
    Open& open = entry->second;
    if (open.stage == Stage::kPreparing) return;
    const auto parcel = std::make_shared<Parcel>(
        Parcel{cid, msgid, link_, FileNamesIn(open.message.msgbody, state_->files_in_tokens)});
    if (!parcel->names.empty()) {
      open.stage = Stage::kPreparing;
      open.deadline = Deadline::max();
      return FetchFiles(parcel);
    }
    turns->second.pop_front();
    Deliver(*parcel);
  }
}

void Outbox::FetchFiles(const std::shared_ptr<Parcel>& parcel) {
  if (parcel->files.size() == parcel->names.size()) return Prepared(parcel, {});
  const std::string& name = parcel->names[parcel->files.size()];
  courier_->Provide(
      name, base::BindWeak(weak_from_this(), [parcel](Outbox& outbox, const biz::ResultCode& result,
                                                      const link::File& file) {
        // From a task of its own: thousands of files that are known at once must not pile up on
        // the stack.
        outbox.state_->runner->PostTask(
            FROM_HERE,
            base::BindWeak(outbox.weak_from_this(), [parcel, result, file](Outbox& here) {
              here.Provided(parcel, result, file);
            }));
      }));
}

void Outbox::Provided(const std::shared_ptr<Parcel>& parcel, const biz::ResultCode& result,
                      const link::File& file) {
  if (parcel->link != link_) return;
  if (result.code == biz::kEngineNotFound) {
    // Its token goes on as it is.
    parcel->names.erase(parcel->names.begin() + std::ssize(parcel->files));
  } else if (!result.ok()) {
    return Prepared(parcel, result);
  } else {
    parcel->files.push_back(file);
  }
  FetchFiles(parcel);
}

void Outbox::Prepared(const std::shared_ptr<Parcel>& parcel, const biz::ResultCode& result) {
  const auto turns = turns_.find(parcel->cid);
  if (turns == turns_.end() || turns->second.front() != parcel->msgid) return;  // closed
  const auto entry = open_.find(parcel->msgid);
  if (entry != open_.end() && result.code == biz::kEngineNoLink) {
    // A server that wants nothing now and keeps the link: time runs out for the message.
    entry->second.stage = Stage::kWaiting;
    SetDeadline(parcel->msgid, entry->second);
    return WaitForDeadline();
  }
  turns->second.pop_front();
  if (entry != open_.end()) {
    if (result.ok()) {
      Deliver(*parcel);
    } else {
      Answered(parcel->msgid, result);
    }
  }
  TakeTurns(parcel->cid);
}

void Outbox::Deliver(const Parcel& parcel) {
  Open& open = open_.at(parcel.msgid);
  open.stage = Stage::kHanded;
  SetDeadline(parcel.msgid, open);
  const biz::IMMessage& message = open.message;
  link::Message outgoing;
  outgoing.cid = message.cid;
  outgoing.from = message.fromid;
  outgoing.msgid = message.msgid;
  outgoing.msgtime = message.msgtime;
  outgoing.msgtype = message.msgtype;
  outgoing.body = parcel.names.empty()
                      ? message.msgbody
                      : WithoutFolder(message.msgbody, state_->files_in_tokens, parcel.names);
  outgoing.ext = message.extinfo;
  outgoing.files = parcel.files;
  // Whoever receives it without the one before it only has a hole less to notice.
  sqlite::Guarded([&] { outgoing.previous = state_->store.OwnBefore(message.cid, message.msgid); });
  state_->line->Ask(
      link::Deliver{std::move(outgoing)},
      base::BindWeak(weak_from_this(),
                     [msgid = parcel.msgid](Outbox& outbox, const biz::ResultCode& result,
                                            const link::Delivered& how) {
                       outbox.Delivered(msgid, result, how);
                     }));
}

void Outbox::Delivered(std::int64_t msgid, const biz::ResultCode& result,
                       const link::Delivered& how) {
  if (result.code == biz::kEngineNoLink) return;  // waits for the next link
  const auto entry = open_.find(msgid);
  if (entry == open_.end()) return;
  if (!result.ok() || how.step == link::Step::kArchived) return Answered(msgid, result, how);
  entry->second.stage = Stage::kTaken;
  ++entry->second.taken;
  SetDeadline(msgid, entry->second);
}

void Outbox::Answered(std::int64_t msgid, const biz::ResultCode& result,
                      const link::Delivered& how) {
  const auto entry = open_.find(msgid);
  if (entry == open_.end()) return;  // too late, or a second answer
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
}

void Outbox::Archived(const biz::IMMessage& message, std::int64_t svrtime) {
  if (const auto entry = open_.find(message.msgid); entry != open_.end()) {
    open_.erase(entry);
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
      TakeTurns(cid);  // whoever waited behind it
    } else if (state_->line->connected()) {
      Queue(biz::IMConversationID(open.message.cid), entry.second);
    } else {
      SetDeadline(entry.second, open);
    }
  }
  WaitForDeadline();
}

}  // namespace imsdk::account
