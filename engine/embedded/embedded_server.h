// A messaging server inside the process: accounts, tokens, delivery, history.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "embedded/credentials.h"
#include "embedded/mail_room.h"
#include "embedded/post_desk.h"
#include "embedded/server_store.h"
#include "kexbase/thread.h"
#include "link/server_link.h"
#include "sqlite/group_commit.h"

namespace imsdk::embedded {

struct ServerOptions {
  std::filesystem::path file;  // its folder is there
  std::int64_t token_life_ms = 0;
  HashCost hash_cost;
  std::chrono::milliseconds withdraw_limit{120'000};  // a message that is older stays
};

// Two threads: one owns the store and everything that happens to messages, the other hashes
// passwords, so that a login does not hold up a message.
class EmbeddedServer final : public link::ServerLink {
 public:
  // Opens or makes the store and starts. Throws `sqlite::Error` or `std::runtime_error`.
  explicit EmbeddedServer(const ServerOptions& options);
  ~EmbeddedServer() override;

  // Ends every session, stores what was taken, ends the threads and lets the store go. Not for the
  // server's own threads. What is asked for later is forgotten.
  void Stop();

  void LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                       link::GrantCallback done) override;
  void LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                    link::GrantCallback done) override;
  void Connect(const biz::IMUserID& user, const std::wstring& token, const std::string& device,
               std::weak_ptr<link::SessionListener> listener, link::ConnectCallback done) override;

  // Administration. These wait for the store; not for the server's own threads.

  bool HasAccounts();
  // False when the account exists or the store fails.
  bool CreateAccount(const biz::IMUserID& user, const std::wstring& password);
  // Empty for an unknown account, and when the store fails.
  std::wstring IssueToken(const biz::IMUserID& user);
  // Has a virtual user, made when it is new, send a message. False when the sender is another kind
  // of user, the receiver is none, the text is too large or the store fails.
  bool Publish(const link::Message& message);
  // Makes accounts with one password, and messages of the past between them, with their server
  // times, as delivered; senders of other channels are virtual users. All or nothing; false for
  // nothing.
  bool Seed(const std::vector<biz::IMUserID>& users, const std::wstring& password,
            const std::vector<link::Message>& messages);

 private:
  void Verify(const biz::IMUserID& user, const StoredAccount& account, std::string password,
              link::GrantCallback done);
  void Give(const biz::IMUserID& user, std::int64_t account, link::GrantCallback done);
  // The account that the token stands for, or a failure.
  biz::ResultCode CheckToken(const biz::IMUserID& user, const std::wstring& token,
                             StoredAccount* account);
  bool OnStore(const std::function<void()>& task);
  // Runs `work`, which may throw, on the store's thread and waits. Tells whether it was done.
  bool DoOnStore(const std::function<void()>& work);

  const ServerOptions options_;
  std::unique_ptr<ServerStore> store_;
  PostDesk desk_;
  base::Thread store_thread_;
  base::Thread hash_thread_;
  sqlite::GroupCommit commit_;
  std::shared_ptr<MailRoom> room_;
  std::atomic<int> hashes_waiting_{0};
};

}  // namespace imsdk::embedded
