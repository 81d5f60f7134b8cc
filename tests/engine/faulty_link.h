// A link to put between accounts and server: it loses, holds back and breaks what passes.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "link/server_link.h"

namespace imsdk::test {

class FaultySession;

// What happens to a delivery.
enum class Fault {
  kDropRequest,  // the server never sees it, the client gets no answer
  kDropAnswer,   // the server does it, the client gets no answer
  kBreak,        // the server does it, then the session ends with `kEngineNoLink`
};

class FaultyLink : public link::ServerLink, public std::enable_shared_from_this<FaultyLink> {
 public:
  explicit FaultyLink(std::shared_ptr<link::ServerLink> real) : real_(std::move(real)) {}

  void LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                       link::GrantCallback done) override;
  void LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                    link::GrantCallback done) override;
  void Connect(const biz::IMUserID& user, const std::wstring& token,
               std::weak_ptr<link::SessionListener> listener, link::ConnectCallback done) override;

  void FailNextDelivery(Fault fault);
  void LoseNextBatch();
  // From now on nobody gets in: logins get no answer, connecting fails with `code`.
  void Shut(bool shut, biz::EngineCode code = biz::kEngineNoLink);
  // Ends all sessions as a server does that wants them gone.
  void EndAll(biz::EngineCode why);

 private:
  friend class FaultySession;
  class Ear;

  std::optional<Fault> TakeDeliveryFault();
  bool TakeLostBatch();

  const std::shared_ptr<link::ServerLink> real_;
  std::mutex lock_;
  std::vector<Fault> delivery_faults_;
  std::size_t lost_batches_ = 0;
  bool shut_ = false;
  biz::EngineCode shut_code_ = biz::kEngineNoLink;
  std::vector<std::weak_ptr<link::SessionListener>> listeners_;
};

}  // namespace imsdk::test
