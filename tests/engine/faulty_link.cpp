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
    const std::optional<Fault> fault = link_->TakeDeliveryFault();
    if (!fault) return real_->Deliver(message, std::move(done));
    if (*fault == Fault::kDropRequest) return;
    const bool breaks = *fault == Fault::kBreak;
    real_->Deliver(message, [ear = ear_, breaks](const auto&, auto) {
      if (breaks) ear->OnEnded({biz::kEngineNoLink, 0, L"the link broke"});
    });
  }
  void Acknowledge(std::int64_t upto) override { real_->Acknowledge(upto); }
  void Close(link::DoneCallback done) override { real_->Close(std::move(done)); }

 private:
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
                         std::weak_ptr<link::SessionListener> listener,
                         link::ConnectCallback done) {
  std::unique_lock hold(lock_);
  if (shut_) {
    hold.unlock();
    return done({shut_code_, 0, L"shut"}, nullptr, 0);
  }
  listeners_.push_back(listener);
  hold.unlock();
  auto ear = std::make_shared<Ear>(shared_from_this(), std::move(listener));
  real_->Connect(user, token, ear,
                 [self = shared_from_this(), ear, done = std::move(done)](
                     const auto& result, auto session, auto position) {
                   if (session) {
                     session = std::make_shared<FaultySession>(self, std::move(session), ear);
                   }
                   done(result, std::move(session), position);
                 });
}

void FaultyLink::FailNextDelivery(Fault fault) {
  std::lock_guard hold(lock_);
  delivery_faults_.push_back(fault);
}

void FaultyLink::LoseNextBatch() {
  std::lock_guard hold(lock_);
  ++lost_batches_;
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

std::optional<Fault> FaultyLink::TakeDeliveryFault() {
  std::lock_guard hold(lock_);
  if (delivery_faults_.empty()) return std::nullopt;
  const Fault fault = delivery_faults_.front();
  delivery_faults_.erase(delivery_faults_.begin());
  return fault;
}

bool FaultyLink::TakeLostBatch() {
  std::lock_guard hold(lock_);
  if (lost_batches_ == 0) return false;
  --lost_batches_;
  return true;
}

}  // namespace imsdk::test
