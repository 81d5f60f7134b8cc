#include "faulty_link.h"

#include <algorithm>
#include <utility>

namespace imsdk::test {

// Hears the server in place of the account.
class FaultyLink::Ear : public link::SessionListener {
 public:
  Ear(std::shared_ptr<FaultyLink> link, std::weak_ptr<link::SessionListener> account)
      : link_(std::move(link)), account_(std::move(account)) {}

  void OnBatch(link::Batch batch) override {
    const bool brings = std::any_of(
        batch.entries.begin(), batch.entries.end(),
        [](const link::Entry& entry) { return std::holds_alternative<link::Message>(entry); });
    if (brings && link_->TakeLostBatch()) return;
    if (const auto account = account_.lock()) account->OnBatch(std::move(batch));
  }
  void OnTyping(const biz::IMConversationID& cid, std::int32_t status) override {
    if (const auto account = account_.lock()) account->OnTyping(cid, status);
  }
  void OnContactPresence(const link::ContactPresence& presence) override {
    if (const auto account = account_.lock()) account->OnContactPresence(presence);
  }
  void OnTribePresence(const link::TribePresence& presence) override {
    if (const auto account = account_.lock()) account->OnTribePresence(presence);
  }
  void OnEnded(const biz::ResultCode& why) override {
    if (const auto account = account_.lock()) account->OnEnded(why);
  }

 private:
  const std::shared_ptr<FaultyLink> link_;
  const std::weak_ptr<link::SessionListener> account_;
};

namespace {

struct Kinds {
  Operation operator()(const link::Asked<link::Deliver>&) { return Operation::kDeliver; }
  Operation operator()(const link::Asked<link::Withdraw>&) { return Operation::kWithdraw; }
  Operation operator()(const link::Asked<link::ReportRead>&) { return Operation::kReportRead; }
  Operation operator()(const link::Asked<link::MarkRead>&) { return Operation::kMarkRead; }
  Operation operator()(const link::Asked<link::GetHistory>&) { return Operation::kGetHistory; }
  Operation operator()(const link::Asked<link::GetRoaming>&) { return Operation::kGetRoaming; }
  Operation operator()(const link::Asked<link::SetRoaming>&) { return Operation::kSetRoaming; }
  Operation operator()(const link::Asked<link::Upload>&) { return Operation::kUpload; }
  Operation operator()(const link::Asked<link::Download>&) { return Operation::kDownload; }
  template <class Asked>
  Operation operator()(const Asked&) {
    return Operation::kOther;
  }
};

Operation KindOf(const link::Request& request) { return std::visit(Kinds{}, request); }

}  // namespace

class FaultySession : public link::Session {
 public:
  FaultySession(std::shared_ptr<FaultyLink> link, std::shared_ptr<link::Session> real,
                std::shared_ptr<link::SessionListener> ear)
      : link_(std::move(link)), real_(std::move(real)), ear_(std::move(ear)) {}

  void Ask(link::Request request) override {
    const std::optional<Fault> fault = link_->Take(KindOf(request));
    if (fault == Fault::kDropRequest) return;
    if (fault == Fault::kRefuse) {
      return std::visit(
          [](auto& asked) {
            asked.done({biz::kEngineNoLink, 0, L"not now"}, {});
          },
          request);
    }
    if (fault) {
      std::visit(
          [ear = ear_, breaks = *fault == Fault::kBreak](auto& asked) {
            asked.done = [ear, breaks](const auto&...) {
              if (breaks) ear->OnEnded({biz::kEngineNoLink, 0, L"the link broke"});
            };
          },
          request);
    }
    real_->Ask(std::move(request));
  }

  void Acknowledge(const std::string& position) override {
    if (!link_->Hold(real_, position)) real_->Acknowledge(position);
  }

 private:
  const std::shared_ptr<FaultyLink> link_;
  const std::shared_ptr<link::Session> real_;
  const std::shared_ptr<link::SessionListener> ear_;
};

void FaultyLink::Login(const link::LoginRequest& request, link::LoginCallback done) {
  std::unique_lock hold(lock_);
  if (shut_ && std::holds_alternative<link::Password>(request.proof)) return;
  hold.unlock();
  real_->Login(request, std::move(done));
}

void FaultyLink::Connect(const link::ConnectRequest& request, link::ConnectCallback done) {
  std::unique_lock hold(lock_);
  if (shut_) {
    hold.unlock();
    return done({shut_code_, 0, L"shut"}, {});
  }
  listeners_.push_back(request.listener);
  hold.unlock();
  auto ear = std::make_shared<Ear>(shared_from_this(), request.listener);
  link::ConnectRequest heard = request;
  heard.listener = ear;
  real_->Connect(heard, [self = shared_from_this(), ear, done = std::move(done)](
                            const biz::ResultCode& result, const link::Connected& connected) {
    link::Connected faulty = connected;
    if (faulty.session) {
      faulty.session = std::make_shared<FaultySession>(self, connected.session, ear);
    }
    done(result, faulty);
  });
}

void FaultyLink::FailNext(Operation operation, Fault fault, int after) {
  std::lock_guard hold(lock_);
  auto& faults = faults_[operation];
  faults.insert(faults.end(), static_cast<std::size_t>(after), std::nullopt);
  faults.emplace_back(fault);
}

void FaultyLink::Heal() {
  std::lock_guard hold(lock_);
  faults_.clear();
}

int FaultyLink::Asked(Operation operation) {
  std::lock_guard hold(lock_);
  return asked_[operation];
}

void FaultyLink::LoseNextBatch() {
  std::lock_guard hold(lock_);
  ++lost_batches_;
}

void FaultyLink::HoldAcknowledgements(bool hold) {
  std::unique_lock guard(lock_);
  holding_ = hold;
  const auto session = std::exchange(held_session_, nullptr);
  const std::string position = held_;
  guard.unlock();  // the server may answer with the next batch at once
  if (session) session->Acknowledge(position);
}

bool FaultyLink::Hold(const std::shared_ptr<link::Session>& session, const std::string& position) {
  std::lock_guard guard(lock_);
  if (!holding_) return false;
  held_session_ = session;
  held_ = position;
  return true;
}

void FaultyLink::Shut(bool shut, biz::EngineCode code) {
  std::lock_guard hold(lock_);
  shut_ = shut;
  shut_code_ = code;
}

void FaultyLink::EndAll(biz::EngineCode why) {
  std::unique_lock hold(lock_);
  const auto listeners = std::exchange(listeners_, {});
  hold.unlock();
  for (const auto& weak : listeners) {
    if (const auto listener = weak.lock()) listener->OnEnded({why, 0, L"ended"});
  }
}

std::optional<Fault> FaultyLink::Take(Operation operation) {
  std::lock_guard hold(lock_);
  ++asked_[operation];
  auto& faults = faults_[operation];
  if (faults.empty()) return std::nullopt;
  const std::optional<Fault> fault = faults.front();
  faults.pop_front();
  return fault;
}

bool FaultyLink::TakeLostBatch() {
  std::lock_guard hold(lock_);
  if (lost_batches_ == 0) return false;
  --lost_batches_;
  return true;
}

}  // namespace imsdk::test
