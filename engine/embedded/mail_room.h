// The messages of the embedded server on their way: taken from senders, kept, pushed to sessions.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "embedded/server_store.h"
#include "kexbase/task_runner.h"
#include "link/server_link.h"
#include "sqlite/group_commit.h"

namespace imsdk::embedded {

// Lives on the server's store thread: every function is called there, callbacks and listeners are
// called there too.
class MailRoom : public std::enable_shared_from_this<MailRoom> {
 public:
  MailRoom(ServerStore& store, sqlite::GroupCommit& commit, std::shared_ptr<base::TaskRunner> here);

  // Begins a session and returns its number. Its first batch comes with a later task. May throw
  // `sqlite::Error`.
  std::int64_t Open(const biz::IMUserID& user, const StoredAccount& account,
                    std::weak_ptr<link::SessionListener> listener);
  void Deliver(std::int64_t session, link::Message message, link::DeliverCallback done);
  void Acknowledge(std::int64_t session, std::int64_t upto);
  // Ends a session by its client's wish. False when there is none.
  bool Close(std::int64_t session);
  // Ends every session because the server stops.
  void CloseAll();
  // Puts acknowledgements that are known but not yet stored into the store's queue.
  void StoreAcknowledged();

 private:
  struct Client {
    biz::IMUserID user;
    std::int64_t account = 0;
    std::weak_ptr<link::SessionListener> listener;
    std::int64_t began = 0;   // newest position when the session began: up to it all is offline
    std::int64_t pushed = 0;  // position up to which messages were pushed
    std::deque<std::int64_t> open;  // ends of the batches that wait for their acknowledgement
  };

  // Pushes to the account's sessions soon; what is taken meanwhile goes along.
  void PushSoon(std::int64_t account);
  void Push(std::int64_t account);
  void PushTo(Client& client);

  ServerStore& store_;
  sqlite::GroupCommit& commit_;
  const std::shared_ptr<base::TaskRunner> here_;
  std::int64_t last_session_ = 0;
  std::int64_t last_time_;
  std::map<std::int64_t, Client> clients_;                      // by session
  std::set<std::pair<std::int64_t, std::int64_t>> by_account_;  // account, session
  std::set<std::int64_t> push_soon_;
  std::map<std::int64_t, std::int64_t> acknowledged_;  // not yet stored, by account
};

}  // namespace imsdk::embedded
