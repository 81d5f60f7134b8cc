#include "stub_backend.h"

#include <cstdlib>
#include <thread>
#include <utility>

namespace imsdk::host {
namespace {

struct ToText {
  std::wstring operator()(std::monostate) const { return L"null"; }
  std::wstring operator()(bool value) const { return value ? L"true" : L"false"; }
  std::wstring operator()(std::int64_t value) const { return std::to_wstring(value); }
  std::wstring operator()(double value) const { return L"d" + std::to_wstring(value); }
  std::wstring operator()(const std::wstring& value) const { return value; }
};

std::wstring Text(const bridge::SdkParam& call, std::size_t index) {
  return index < call.args.size() ? std::visit(ToText(), call.args[index]) : std::wstring();
}

}  // namespace

class StubBackend::Bridge final : public bridge::IIMSDKBridge {
 public:
  explicit Bridge(StubBackend& backend) : backend_(backend) { ++backend_.bridges_; }

  void AddRef() override { count_.Add(); }
  void Release() override {
    if (count_.Release() == 0) delete this;
  }

  std::int32_t BindPage(const bridge::PageBinding& binding) override {
    binding_ = binding;
    handler_ = RefPtr<bridge::IPageHandler>(binding.handler);
    ++backend_.bound_;
    return 0;
  }

  void JsInvoke(const bridge::SdkParam& call) override {
    if (!binding_.runner->RunsTasksOnCurrentThread()) std::abort();
    if (call.method == L"echo") {
      std::wstring all = call.browserId == binding_.browserId ? L"own" : call.browserId;
      for (std::size_t i = 0; i < call.args.size(); ++i) all += L"|" + Text(call, i);
      handler_->DeliverAnswer(binding_.browserId, Text(call, 0), false, all);
    } else if (call.method == L"keep") {
      const std::lock_guard hold(backend_.lock_);
      backend_.kept_.push_back({binding_.runner, [self = RefPtr<Bridge>(this),
                                                  seq = Text(call, 0)] { self->Answer(seq); }});
    } else if (call.method == L"notify") {
      handler_->Notify(Text(call, 1), Text(call, 2));
    } else if (call.method == L"flood") {
      const std::wstring payload(std::stoul(Text(call, 1)), L'x');
      for (auto i = std::stoul(Text(call, 0)); i > 0; --i) handler_->Notify(L"flood", payload);
    } else if (call.method == L"block") {
      ++backend_.blocked_;
      backend_.open_.wait(false);
      handler_->DeliverAnswer(binding_.browserId, Text(call, 0), false, L"");
    }
  }

  const wchar_t* NotifyingPath() const override { return L"im.stub"; }

  void UnbindPage() override {
    if (!handler_) return;
    handler_ = nullptr;
    --backend_.bound_;
  }

 private:
  ~Bridge() { --backend_.bridges_; }

  void Answer(const std::wstring& seq) {
    if (!binding_.runner->RunsTasksOnCurrentThread() && handler_) std::abort();
    if (handler_) handler_->DeliverAnswer(binding_.browserId, seq, false, L"late");
  }

  StubBackend& backend_;
  ThreadSafeRefPolicy count_;
  bridge::PageBinding binding_;
  RefPtr<bridge::IPageHandler> handler_;
};

RefPtr<bridge::IIMSDKBridge> StubBackend::NewBridge() {
  return RefPtr<bridge::IIMSDKBridge>(new Bridge(*this));
}

void StubBackend::LogIn(const std::string& nick, std::function<void(LoginOutcome)> done) {
  if (nick == "harbor") return done({200, {}, {L"cnbazaro", L"harbor"}});
  if (nick != "slow") return done({404, "unknown account", {}});
  const std::lock_guard hold(lock_);
  slow_.push_back(std::move(done));
}

void StubBackend::Fetch(const std::string& path, std::function<void()> done) {
  const std::lock_guard hold(lock_);
  fetches_.emplace_back(path, std::move(done));
}

std::vector<std::pair<std::string, std::function<void()>>> StubBackend::TakeFetches() {
  const std::lock_guard hold(lock_);
  return std::exchange(fetches_, {});
}

std::size_t StubBackend::KeptCount() {
  const std::lock_guard hold(lock_);
  return kept_.size();
}

std::shared_ptr<base::TaskRunner> StubBackend::KeptRunner() {
  const std::lock_guard hold(lock_);
  return kept_.front().runner;
}

void StubBackend::Unblock() {
  open_ = true;
  open_.notify_all();
}

std::size_t StubBackend::SlowLogins() {
  const std::lock_guard hold(lock_);
  return slow_.size();
}

void StubBackend::DropSlowLogins() {
  const std::lock_guard hold(lock_);
  slow_.clear();
}

void StubBackend::AnswerKept() {
  std::vector<Kept> kept;
  {
    const std::lock_guard hold(lock_);
    kept = std::exchange(kept_, {});
  }
  std::thread([&kept] {
    for (Kept& call : kept) call.runner->PostTask(FROM_HERE, std::move(call.answer));
  }).join();
}

}  // namespace imsdk::host
