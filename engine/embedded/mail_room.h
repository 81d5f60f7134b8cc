// The sessions of the embedded server, and the one way of everything that is asked of it: from a
// session or from the administration to a desk, by a shared commit, and on to those who hear of it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "embedded/desks.h"
#include "embedded/feeds.h"
#include "embedded/file_room.h"
#include "embedded/outcome.h"
#include "embedded/presence.h"
#include "embedded/server_store.h"
#include "kexbase/task_runner.h"
#include "link/server_link.h"
#include "sqlite/group_commit.h"

namespace imsdk::embedded {

// Lives on the server's store thread: every function is called there, callbacks and listeners are
// called there too.
class MailRoom : public std::enable_shared_from_this<MailRoom> {
 public:
  MailRoom(ServerStore& store, Desks& desks, Presence& presence, sqlite::GroupCommit& commit,
           FileRoom& files, std::shared_ptr<base::TaskRunner> here);

  // Begins a session behind a position and returns its number. Its first batch comes with a later
  // task. May throw `sqlite::Error`.
  std::int64_t Open(const Caller& caller, const Start& start,
                    std::weak_ptr<link::SessionListener> listener);
  void Ask(std::int64_t session, link::Request request);
  void Acknowledge(std::int64_t session, const std::string& position);
  // Ends a session by its client's wish. False when there is none.
  bool Close(std::int64_t session);
  // Ends every session because the server stops.
  void CloseAll();

  // Has a desk answer nobody's session. `done` takes the result and the reply.
  template <class Request, class Done>
  void Administer(Request request, Done done) {
    if (const auto why = link::CheckBounds(request); !why.ok()) return done(why, {});
    Carry(0, {}, std::make_shared<const Request>(std::move(request)), std::move(done));
  }
  // The account has everything up to a position, on one of its devices.
  void NoteAcknowledged(std::int64_t account, Position position);
  // Puts acknowledgements that are known but not yet stored into the store's queue.
  void StoreAcknowledged();

 private:
  template <class Request, class Done>
  void Carry(std::int64_t session, const Caller& caller, std::shared_ptr<const Request> request,
             Done done) {
    using Answered = decltype(desks_.Answer(caller, *request));
    const auto outcome = std::make_shared<Answered>();
    commit_.Add(
        [this, caller, request, outcome](sqlite::Database&) {
          *outcome = desks_.Answer(caller, *request);
          outcome->effects.upto = store_.mail().newest();
        },
        [this, session, caller, outcome, done = std::move(done)](const biz::ResultCode& stored) {
          if (!stored.ok()) *outcome = Answered(stored);
          const Effects& effects = outcome->effects;
          auto answer = [outcome, done] { done(outcome->result, outcome->reply); };
          // Who has changed a tribe or a list hears of that first, and is answered when it is
          // known.
          constexpr bool kTold = link::kOfTribes<Request> || link::kOfContacts<Request>;
          const bool waits = effects.after_news || (kTold && !effects.news.empty());
          if (!waits) answer();
          Note(session, caller, effects);
          if (waits) feeds_.AfterNews(session, answer);
        });
  }

  // What is on the disk now, for those who are to hear of it.
  void Note(std::int64_t session, const Caller& caller, const Effects& effects);
  template <class Operation>
  void Serve(std::int64_t session, link::Asked<Operation> asked);
  void Serve(std::int64_t session, link::Asked<link::Upload> asked);
  void Serve(std::int64_t session, link::Asked<link::Download> asked);
  void Serve(std::int64_t session, link::Asked<link::Logout> asked);
  // Has the session's desk answer; `kEngineNotLoggedIn` when the session is over.
  template <class Operation, class Done>
  void CarryFor(std::int64_t session, std::shared_ptr<const Operation> operation, Done done);

  ServerStore& store_;
  Desks& desks_;
  Presence& presence_;
  sqlite::GroupCommit& commit_;
  FileRoom& files_;
  const std::shared_ptr<base::TaskRunner> here_;
  Feeds feeds_;
  std::int64_t last_session_ = 0;
  std::map<std::int64_t, Caller> sessions_;
  std::map<std::int64_t, Position> acknowledged_;  // not yet stored, by account
};

}  // namespace imsdk::embedded
