#include "faulty_link.h"

#include <utility>

namespace imsdk::test {

// Hears the server in place of the account.
class FaultyLink::Ear : public link::SessionListener {
 public:
  Ear(std::shared_ptr<FaultyLink> link, std::weak_ptr<link::SessionListener> account)
      : link_(std::move(link)), account_(std::move(account)) {}

  void OnBatch(link::Batch batch) override {
    if (link_->TakeLostBatch()) return;
    if (const auto account = account_.lock()) account->OnBatch(std::move(batch));
  }
  void OnSignal(const biz::IMUserID& from, std::int32_t status) override {
    if (const auto account = account_.lock()) account->OnSignal(from, status);
  }
  void OnEnded(const biz::ResultCode& why) override {
    if (const auto account = account_.lock()) account->OnEnded(why);
  }

 private:
  const std::shared_ptr<FaultyLink> link_;
  const std::weak_ptr<link::SessionListener> account_;
};

class FaultySession : public link::Session {
 public:
  FaultySession(std::shared_ptr<FaultyLink> link, std::shared_ptr<link::Session> real,
                std::shared_ptr<link::SessionListener> ear)
      : link_(std::move(link)), real_(std::move(real)), ear_(std::move(ear)) {}

  void Deliver(const link::Message& message, link::DeliverCallback done) override {
    Pass(Operation::kDeliver, std::move(done),
         [&](auto passed) { real_->Deliver(message, std::move(passed)); });
  }
  void Withdraw(const biz::IMUserID& peer, std::int64_t msgid, link::DoneCallback done) override {
    Pass(Operation::kWithdraw, std::move(done),
         [&](auto passed) { real_->Withdraw(peer, msgid, std::move(passed)); });
  }
  void ReportRead(const biz::IMUserID& peer, const std::vector<std::int64_t>& msgids,
                  link::DoneCallback done) override {
    Pass(Operation::kReportRead, std::move(done),
         [&](auto passed) { real_->ReportRead(peer, msgids, std::move(passed)); });
  }
  void MarkRead(const biz::IMUserID& peer, const biz::IMMsgPosition& upto,
                link::DoneCallback done) override {
    Pass(Operation::kMarkRead, std::move(done),
         [&](auto passed) { real_->MarkRead(peer, upto, std::move(passed)); });
  }
  void Signal(const biz::IMUserID& peer, std::int32_t status) override {
    real_->Signal(peer, status);
  }
  void GetHistory(const link::HistoryRequest& request, link::HistoryCallback done) override {
    Pass(Operation::kGetHistory, std::move(done),
         [&](auto passed) { real_->GetHistory(request, std::move(passed)); });
  }
  void GetRoaming(link::RoamingCallback done) override {
    Pass(Operation::kGetRoaming, std::move(done),
         [&](auto passed) { real_->GetRoaming(std::move(passed)); });
  }
  void SetRoaming(std::int32_t status, link::DoneCallback done) override {
    Pass(Operation::kSetRoaming, std::move(done),
         [&](auto passed) { real_->SetRoaming(status, std::move(passed)); });
  }
  void Acknowledge(std::int64_t upto) override {
    if (!link_->Hold(real_, upto)) real_->Acknowledge(upto);
  }
  void Close(link::DoneCallback done) override { real_->Close(std::move(done)); }

 private:
  template <class Done, class Call>
  void Pass(Operation operation, Done done, Call call) {
    const std::optional<Fault> fault = link_->Take(operation);
    if (!fault) return call(std::move(done));
    if (*fault == Fault::kDropRequest) return;
    const bool breaks = *fault == Fault::kBreak;
    call([ear = ear_, breaks](const auto&...) {
      if (breaks) ear->OnEnded({biz::kEngineNoLink, 0, L"the link broke"});
    });
  }

  const std::shared_ptr<FaultyLink> link_;
  const std::shared_ptr<link::Session> real_;
  const std::shared_ptr<link::SessionListener> ear_;
};

void FaultyLink::LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                                 link::GrantCallback done) {
  std::unique_lock hold(lock_);
  if (shut_) return;
  hold.unlock();
  real_->LoginByPassword(user, password, std::move(done));
}

void FaultyLink::LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                              link::GrantCallback done) {
  real_->LoginByToken(user, token, std::move(done));
}

void FaultyLink::Connect(const biz::IMUserID& user, const std::wstring& token,
                         const std::string& device, std::weak_ptr<link::SessionListener> listener,
                         link::ConnectCallback done) {
  std::unique_lock hold(lock_);
  if (shut_) {
    hold.unlock();
    return done({shut_code_, 0, L"shut"}, nullptr, 0);
  }
  listeners_.push_back(listener);
  hold.unlock();
  auto ear = std::make_shared<Ear>(shared_from_this(), std::move(listener));
  real_->Connect(user, token, device, ear,
                 [self = shared_from_this(), ear, done = std::move(done)](
                     const auto& result, auto session, auto position) {
                   if (session) {
                     session = std::make_shared<FaultySession>(self, std::move(session), ear);
                   }
                   done(result, std::move(session), position);
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
  std::lock_guard guard(lock_);
  holding_ = hold;
  if (const auto session = std::exchange(held_session_, nullptr)) session->Acknowledge(held_);
}

bool FaultyLink::Hold(const std::shared_ptr<link::Session>& session, std::int64_t upto) {
  std::lock_guard guard(lock_);
  if (!holding_) return false;
  held_session_ = session;
  held_ = upto;
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
