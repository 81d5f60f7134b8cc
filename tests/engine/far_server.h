// A server in memory with the habits of one that is far away and was not made for this client.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "imsdk/embedded_server.h"
#include "link/server_link.h"

namespace imsdk::test {

// What such a server does that the embedded one does not. All of it may be changed while it runs,
// through `FarServer::Change`.
struct Habits {
  bool repeats = false;     // entries that were sent come again, in batches that overlap
  bool shuffles = false;    // the entries of a batch come in odd order
  bool same_place = false;  // positions stand for two batches at a time
  bool takes = false;  // a delivery is only taken at first, and archived when that is asked for
  bool late_times = false;        // time and place come later than the outcome
  bool forgets_messages = false;  // a message that comes twice is delivered twice
  bool shows_past = false;        // who joins a tribe sees what was before
  link::Capabilities capabilities{.contacts = false, .mentions = false};
};

class FarSession;

// Any thread. Its functions do not wait; its answers come before the operation returns.
class FarServer final : public EmbeddedServer {
 public:
  explicit FarServer(const Habits& habits = {}, std::int64_t token_life_ms = 1'000'000);
  ~FarServer() override;

  std::shared_ptr<link::ServerLink> Link() override;
  bool HasAccounts() override;
  bool CreateAccount(const biz::IMUserID& user, const std::wstring& password) override;
  biz::ResultCode IssueToken(const biz::IMUserID& user, std::wstring* token) override;
  bool Publish(VirtualKind kind, const biz::IMUserID& from, const biz::IMUserID& to,
               const std::wstring& body) override;
  biz::IMTribeID CreateTribe(const NewTribe& tribe) override;

  void Join(const biz::IMTribeID& tribe, const biz::IMUserID& user);
  void Leave(const biz::IMTribeID& tribe, const biz::IMUserID& user);

  // What only tests want of it.
  void Change(const Habits& habits);
  // Puts messages into the archive as if they had been sent long ago; each in the view of its
  // sender. `tell` sends them out besides.
  void Seed(const std::vector<link::Message>& messages, bool tell = false);
  // Messages that are archived from now on are not sent to this account by themselves.
  void SetDeaf(const biz::IMUserID& user, bool deaf);
  // Sends this account what was kept back while it was deaf, the oldest last.
  void TellLate(const biz::IMUserID& user);
  // No position that was given out so far is known any more.
  void ForgetPositions();
  // What was only taken so far is archived, or lost.
  void ArchiveTaken();
  void LoseTaken();
  // Gives time and place of what was archived without.
  void TellTimes();
  // From now on other contents stand under the addresses of files.
  void SpoilFiles();
  // The archive between two users, each message in the view of its sender.
  std::vector<link::Message> Archived(const biz::IMUserID& one, const biz::IMUserID& other);
  // How often the archive was asked for history.
  int HistoryAsked();

 private:
  friend class FarSession;
  class Door;
  struct State;
  const std::shared_ptr<State> state_;
};

}  // namespace imsdk::test
