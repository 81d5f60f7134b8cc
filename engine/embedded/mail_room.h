// The sessions of the embedded server: what they ask for, and what is pushed to them.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "embedded/post_desk.h"
#include "embedded/server_store.h"
#include "kexbase/task_runner.h"
#include "link/server_link.h"
#include "sqlite/group_commit.h"

namespace imsdk::embedded {

// Lives on the server's store thread: every function is called there, callbacks and listeners are
// called there too.
class MailRoom : public std::enable_shared_from_this<MailRoom> {
 public:
  // Asks the desk for something, inside a transaction.
  using Work = std::function<Outcome(PostDesk&, const Caller&)>;
  using Done = std::function<void(const biz::ResultCode&, const Outcome&)>;

  MailRoom(ServerStore& store, PostDesk& desk, sqlite::GroupCommit& commit,
           std::shared_ptr<base::TaskRunner> here);

  // Begins a session and returns its number. Its first batch comes with a later task. May throw
  // `sqlite::Error`.
  std::int64_t Open(const Caller& caller, std::int64_t acknowledged,
                    std::weak_ptr<link::SessionListener> listener);
  // Has `work` done for a session with the next commit and tells the sessions concerned.
  void Change(std::int64_t session, Work work, Done done);
  // The same for nobody's session.
  void Change(const Caller& caller, Work work, Done done);
  void Signal(std::int64_t session, const biz::IMUserID& peer, std::int32_t status);
  void GetHistory(std::int64_t session, const link::HistoryRequest& request,
                  link::HistoryCallback done);
  void GetRoaming(std::int64_t session, const link::RoamingCallback& done);
  void Acknowledge(std::int64_t session, std::int64_t upto);
  // Ends a session by its client's wish. False when there is none.
  bool Close(std::int64_t session);
  // Ends every session because the server stops.
  void CloseAll();
  // Puts acknowledgements that are known but not yet stored into the store's queue.
  void StoreAcknowledged();

 private:
  struct Client {
    Caller who;
    std::weak_ptr<link::SessionListener> listener;
    std::int64_t began = 0;   // newest position when the session began: up to it all is offline
    std::int64_t pushed = 0;  // position up to which entries were pushed
    std::deque<std::int64_t> open;  // ends of the batches that wait for their acknowledgement
    // Requests for history that wait until everything was pushed, so that a message comes as new
    // before it comes as history.
    std::deque<std::pair<link::HistoryRequest, link::HistoryCallback>> asked;
  };

  // Pushes to the account's sessions soon; what is taken meanwhile goes along.
  void PushSoon(std::int64_t account);
  void Push(std::int64_t account);
  void PushTo(Client& client);
  void AnswerAsked(Client& client);

  ServerStore& store_;
  PostDesk& desk_;
  sqlite::GroupCommit& commit_;
  const std::shared_ptr<base::TaskRunner> here_;
  std::int64_t last_session_ = 0;
  std::map<std::int64_t, Client> clients_;                      // by session
  std::set<std::pair<std::int64_t, std::int64_t>> by_account_;  // account, session
  std::set<std::int64_t> push_soon_;
  std::map<std::int64_t, std::int64_t> acknowledged_;  // not yet stored, by device
};

}  // namespace imsdk::embedded
