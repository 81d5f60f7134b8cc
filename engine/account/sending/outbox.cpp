#include "account/sending/outbox.h"

#include <optional>
#include <utility>

#include "kexbase/callback.h"

namespace imsdk::account {

namespace {

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
    if (!WaitsForCopy(next)) bytes += Prepare(std::move(next));
  }
  state_->commit.Flush();
  return more;
}

void Outbox::Finish() {
  while (PrepareSome()) {
  }
  RefuseCopying();
}

bool Outbox::WaitsForCopy(Waiting& waiting) {
  const biz::IMBody body = waiting.request.body;
  if (const auto copying = copying_.find(body); copying != copying_.end()) {
    copying->second.push_back(std::move(waiting));
    return true;
  }
  if (!body || bodies_.IsComposed(body) || !NamesLargeFile(*body, state_->files)) return false;
  copying_[body].push_back(std::move(waiting));
  const auto copied = base::BindWeak(weak_from_this(), &Outbox::Copied);
  state_->aside->PostTask(FROM_HERE, [runner = state_->runner, files = state_->files,
                                      ending = state_->Ending(), body, copied] {
    auto composed = std::make_shared<const ComposedBody>(ComposeBody(*body, files, ending));
    runner->PostTask(FROM_HERE, [copied, body, composed] { copied(body, composed); });
  });
  return true;
}

void Outbox::Copied(const biz::IMBody& body, const std::shared_ptr<const ComposedBody>& composed) {
  // A copy that the end of the account broke off is none; `Finish` refuses its messages.
  if (state_->closed && !composed->result.ok()) return;
  auto copied = copying_.extract(body);
  if (copied.empty()) return;
  bodies_.SetComposed(body, composed);
  for (Waiting& waiting : copied.mapped()) Prepare(std::move(waiting));
  state_->commit.Flush();
}

void Outbox::RefuseCopying() {
  for (auto& [body, waiting] : std::exchange(copying_, {})) {
    for (const Waiting& one : waiting) {
      bodies_.Release(body);
      --open_count_;
      one.done(NotLoggedIn());
    }
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
}  // namespace imsdk::account
