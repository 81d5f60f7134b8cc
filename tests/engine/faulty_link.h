// A link to put between accounts and server: it loses, holds back and breaks what passes.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "link/server_link.h"

namespace imsdk::test {

class FaultySession;

// What a session is asked for.
enum class Operation {
  kDeliver,
  kWithdraw,
  kReportRead,
  kMarkRead,
  kGetHistory,
  kGetRoaming,
  kSetRoaming,
  kUpload,
  kDownload,
  kOther,
};

// What happens to it.
enum class Fault {
  kDropRequest,  // the server never sees it, the client gets no answer
  kDropAnswer,   // the server does it, the client gets no answer
  kRefuse,       // the server wants nothing now (`kEngineNoLink`), the session stays
  kBreak,        // the server does it, then the session ends with `kEngineNoLink`
};

class FaultyLink : public link::ServerLink, public std::enable_shared_from_this<FaultyLink> {
 public:
  explicit FaultyLink(std::shared_ptr<link::ServerLink> real) : real_(std::move(real)) {}

  void Login(const link::LoginRequest& request, link::LoginCallback done) override;
  void Connect(const link::ConnectRequest& request, link::ConnectCallback done) override;

  // The next operation of this kind, after those named before; `after` of them pass first.
  void FailNext(Operation operation, Fault fault, int after = 0);
  // From now on everything passes.
  void Heal();
  // How often this was asked for so far.
  int Asked(Operation operation);
  // The next batch with a message.
  void LoseNextBatch();
  // Keeps acknowledgements back; the last one goes on when that ends. For one session at a time.
  void HoldAcknowledgements(bool hold);
  // From now on nobody gets in: logins by password get no answer, connecting fails with `code`.
  void Shut(bool shut, biz::EngineCode code = biz::kEngineNoLink);
  // Ends all sessions as a server does that wants them gone.
  void EndAll(biz::EngineCode why);

 private:
  friend class FaultySession;
  class Ear;

  std::optional<Fault> Take(Operation operation);
  bool TakeLostBatch();
  // Whether the acknowledgement stays here.
  bool Hold(const std::shared_ptr<link::Session>& session, const std::string& position);

  const std::shared_ptr<link::ServerLink> real_;
  std::mutex lock_;
  std::map<Operation, std::deque<std::optional<Fault>>> faults_;
  std::map<Operation, int> asked_;
  std::size_t lost_batches_ = 0;
  bool holding_ = false;
  std::shared_ptr<link::Session> held_session_;
  std::string held_;
  bool shut_ = false;
  biz::EngineCode shut_code_ = biz::kEngineNoLink;
  std::vector<std::weak_ptr<link::SessionListener>> listeners_;
};

}  // namespace imsdk::test
