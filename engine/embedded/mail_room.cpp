#include "embedded/mail_room.h"

#include <algorithm>
#include <chrono>
#include <variant>

#include "kexbase/callback.h"

namespace imsdk::embedded {

namespace {

// An acknowledgement that is lost costs a message sent twice, which clients recognise. So it need
// not have a commit of its own.
constexpr std::chrono::milliseconds kAcknowledgeDelay{100};
// Who comes and goes in a tribe is told together.
constexpr std::chrono::milliseconds kPresenceDelay{1000};

biz::ResultCode SessionOver() { return Failure(biz::kEngineNotLoggedIn, L"the session is over"); }

// The operation inside of what was asked, without a copy.
template <class Operation>
std::shared_ptr<const Operation> Inside(std::shared_ptr<link::Asked<Operation>> asked) {
  return {asked, &asked->operation};
}

template <class Operation>
auto DoneOf(std::shared_ptr<link::Asked<Operation>> asked) {
  return [asked = std::move(asked)](const biz::ResultCode& result,
                                    const typename Operation::Reply& reply) {
    if (asked->done) asked->done(result, reply);
  };
}

}  // namespace

MailRoom::MailRoom(ServerStore& store, Desks& desks, Presence& presence,
                   sqlite::GroupCommit& commit, FileRoom& files,
                   std::shared_ptr<base::TaskRunner> here)
    : store_(store),
      desks_(desks),
      presence_(presence),
      commit_(commit),
      files_(files),
      here_(std::move(here)),
      feeds_(store, [this] {
        here_->PostTask(FROM_HERE, base::BindWeak(weak_from_this(),
                                                  [](MailRoom& room) { room.feeds_.Push(); }));
      }) {
  presence_.Use(
      {[this] {
         here_->PostDelayedTask(
             FROM_HERE,
             base::BindWeak(weak_from_this(), [](MailRoom& room) { room.presence_.Tell(); }),
             kPresenceDelay);
       },
       [this](std::int64_t session, const link::TribePresence& told) {
         feeds_.Tell(session, told);
       },
       [this](std::int64_t account, const link::ContactPresence& told) {
         feeds_.Tell(account, told);
       }});
}

void MailRoom::Note(std::int64_t session, const Caller& caller, const Effects& effects) {
  feeds_.Note(effects);
  if (effects.typing) feeds_.Signal(*effects.typing, session);
  for (const StayChange& change : effects.stays) presence_.NoteStay(change);
  for (const Glance& glance : effects.glances) presence_.NoteGlance(glance);
  // The session may have ended while the store was busy.
  if (effects.watch && sessions_.contains(session)) {
    presence_.Change(session, caller.account, *effects.watch);
  }
}

std::int64_t MailRoom::Open(const Caller& caller, const Start& start,
                            std::weak_ptr<link::SessionListener> listener) {
  const std::int64_t session = ++last_session_;
  feeds_.Open(session, caller, start, std::move(listener));
  sessions_[session] = caller;
  presence_.Opened(caller.account);
  return session;
}

template <class Operation, class Done>
void MailRoom::CarryFor(std::int64_t session, std::shared_ptr<const Operation> operation,
                        Done done) {
  const auto caller = sessions_.find(session);
  if (caller == sessions_.end()) return done(SessionOver(), {});
  Carry(session, caller->second, std::move(operation), std::move(done));
}

template <class Operation>
void MailRoom::Serve(std::int64_t session, link::Asked<Operation> asked) {
  const auto held = std::make_shared<link::Asked<Operation>>(std::move(asked));
  if constexpr (requires { desks_.Answer(Caller{}, held->operation); }) {
    CarryFor(session, Inside(held), DoneOf(held));
  } else {
    DoneOf(held)({biz::kEngineUnsupported, 0, L"the server does not know how"}, {});
  }
}

// The desk lets it come; the content crosses; then the desk knows whose it is.
void MailRoom::Serve(std::int64_t session, link::Asked<link::Upload> asked) {
  const auto held = std::make_shared<link::Asked<link::Upload>>(std::move(asked));
  if (!sessions_.contains(session)) return DoneOf(held)(SessionOver(), {});
  const auto crossed = base::BindWeak(
      weak_from_this(), [session, held](MailRoom& room, const biz::ResultCode& result) {
        if (!result.ok()) return DoneOf(held)(result, {});
        room.CarryFor(session, Inside(held), DoneOf(held));
      });
  const std::int64_t account = sessions_.at(session).account;
  const auto start = std::make_shared<const UploadStart>(UploadStart{held->operation.file});
  CarryFor(session, start,
           [this, account, held, crossed](const biz::ResultCode& allowed, const link::Nothing&) {
             if (!allowed.ok()) return DoneOf(held)(allowed, {});
             files_.Receive(
                 held->operation, account,
                 [here = here_, crossed, held](const biz::ResultCode& result) {
                   if (!here->PostTask(FROM_HERE, [crossed, result] { crossed(result); })) {
                     DoneOf(held)(ServerStops(), {});
                   }
                 });
           });
}

// The desk allows it first; then the content crosses.
void MailRoom::Serve(std::int64_t session, link::Asked<link::Download> asked) {
  const auto held = std::make_shared<link::Asked<link::Download>>(std::move(asked));
  CarryFor(session, Inside(held),
           [this, held](const biz::ResultCode& allowed, const link::Nothing&) {
             if (!allowed.ok()) return DoneOf(held)(allowed, {});
             files_.Send(held->operation,
                         [held](const biz::ResultCode& result) { DoneOf(held)(result, {}); });
           });
}

void MailRoom::Serve(std::int64_t session, link::Asked<link::Logout> asked) {
  const biz::ResultCode result = Close(session) ? biz::ResultCode{} : SessionOver();
  if (asked.done) asked.done(result, {});
}

void MailRoom::Ask(std::int64_t session, link::Request request) {
  std::visit([&](auto& asked) { Serve(session, std::move(asked)); }, request);
}

void MailRoom::Acknowledge(std::int64_t session, const std::string& text) {
  const auto caller = sessions_.find(session);
  const auto position = store_.KnownPosition(text);
  if (caller == sessions_.end() || !position) return;
  NoteAcknowledged(caller->second.account, feeds_.Acknowledge(session, *position));
}

void MailRoom::NoteAcknowledged(std::int64_t account, Position position) {
  if (acknowledged_.empty()) {
    here_->PostDelayedTask(FROM_HERE,
                           base::BindWeak(weak_from_this(), &MailRoom::StoreAcknowledged),
                           kAcknowledgeDelay);
  }
  Position& known = acknowledged_[account];
  known = std::max(known, position);
}

void MailRoom::StoreAcknowledged() {
  for (const auto& [account, position] : std::exchange(acknowledged_, {})) {
    // When the disk refuses it, the messages are sent again one day and recognised.
    commit_.Add([this, account = account, position = position](
                    sqlite::Database&) { store_.accounts().SetAcknowledged(account, position); },
                [](const biz::ResultCode&) {});
  }
}

bool MailRoom::Close(std::int64_t session) {
  const auto caller = sessions_.find(session);
  if (caller == sessions_.end()) return false;
  const std::int64_t account = caller->second.account;
  sessions_.erase(caller);
  feeds_.Close(session);
  presence_.Closed(session, account);
  return true;
}

void MailRoom::CloseAll() {
  StoreAcknowledged();
  for (const auto& [session, caller] : std::exchange(sessions_, {})) {
    feeds_.End(session, ServerStops());
  }
}

}  // namespace imsdk::embedded
