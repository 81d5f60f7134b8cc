// The messaging server inside the process, with what only its own room, tests and the demo set ask
// of it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "embedded/credentials.h"
#include "embedded/desks.h"
#include "embedded/file_room.h"
#include "embedded/gate.h"
#include "embedded/mail_room.h"
#include "embedded/presence.h"
#include "embedded/seeding.h"
#include "embedded/server_store.h"
#include "imsdk/embedded_server.h"
#include "kexbase/thread.h"
#include "sqlite/group_commit.h"

namespace imsdk::embedded {

// Three threads: one owns the store and everything that happens to messages, one hashes passwords,
// one moves the contents of files.
class Server final : public EmbeddedServer {
 public:
  // Opens or makes the store and starts. Throws `sqlite::Error`, `std::runtime_error` or
  // `std::filesystem::filesystem_error`.
  explicit Server(const EmbeddedServerOptions& options, const HashCost& hash_cost = {});
  // Ends every session, stores what was taken, ends the threads.
  ~Server() override;

  std::shared_ptr<link::ServerLink> Link() override;
  bool HasAccounts() override;
  bool CreateAccount(const biz::IMUserID& user, const std::wstring& password) override;
  biz::ResultCode IssueToken(const biz::IMUserID& user, std::wstring* token) override;
  bool Publish(VirtualKind kind, const biz::IMUserID& from, const biz::IMUserID& to,
               const std::wstring& body) override;
  biz::IMTribeID CreateTribe(const NewTribe& tribe) override;

  // These wait for the store too, and say whether it was done.
  bool Change(const SetMember& change);
  bool Change(const SetOpenHistory& change);
  // Whether its store has lost something at some time.
  bool HasLost() const { return store_.HasLost(); }
  // Fills a server without accounts. `before_commit` gets the messages with what the server adds,
  // and may throw to have nothing of it done. All or nothing; false for nothing.
  bool Seed(const Seeding& seeding,
            const std::function<void(const std::vector<link::Message>&)>& before_commit);

 private:
  bool OnStore(const std::function<void()>& task);
  // Runs `work`, which may throw, on the store's thread and waits. Tells whether it was done.
  biz::ResultCode DoOnStore(const std::function<void()>& work);
  // The same in a transaction.
  biz::ResultCode WriteOnStore(const std::function<void()>& work);
  // Has a desk answer and waits; a reply is empty unless all is good.
  template <class Reply, class Request>
  Reply Administer(const Request& request, bool* good);

  const HashCost hash_cost_;
  const std::filesystem::path folder_;
  ServerStore store_;
  Presence presence_;
  Desks desks_;
  FileRoom files_;
  base::Thread store_thread_;
  sqlite::GroupCommit commit_;
  std::shared_ptr<MailRoom> room_;
  std::shared_ptr<Gate> gate_;
};

}  // namespace imsdk::embedded
