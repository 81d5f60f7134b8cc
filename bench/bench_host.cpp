#include "bench/bench_host.h"

#include <cstdio>
#include <cstdlib>

#include "kexbase/native_library.h"
#include "kexcom/factory.h"
#include "kexcore/kexcom.h"

namespace imsdk::bench {
namespace {

class NothingKept final : public RefPtrCounted<ns_log::ILogger> {
 public:
  bool IsEnabled(int) override { return true; }
  void Write(const ns_log::ITraceLine&) override {}
};

class LogService final : public RefPtrCounted<ns_log::ILogService> {
 public:
  ns_log::ILogger* GetLogger(const char*) override {
    auto* logger = new NothingKept;
    logger->AddRef();
    return logger;
  }
};

IKexCOMFactory& Factory() {
  std::string error;
  const auto library = base::NativeLibrary::Open(base::FilePath::FromUTF8(BRIDGE_FILE), &error);
  const auto get = library.Function<IKexCOMFactory*()>("GetKexCOMFactory");
  if (!get) {
    std::fprintf(stderr, "no bridge library: %s\n", error.c_str());
    std::exit(1);
  }
  return *get();
}

template <class I>
RefPtr<I> Create(const char* name, const char* iid) {
  void* object = nullptr;
  if (const std::int32_t result = Factory().CreateInstance(name, iid, &object); result != 0) {
    std::fprintf(stderr, "%s cannot be made: %d\n", name, result);
    std::exit(1);
  }
  return RefPtr<I>::Adopt(static_cast<I*>(object));
}

}  // namespace

BenchHost::BenchHost(int views) {
  const RefPtr<LogService> log(new LogService);
  GetKexCOM()->RegisterService(ns_log::ILogService::kServiceId, log.get());
  manager_ = Create<bridge::IIMBridgeMgr>(kClassIMBridgeMgr, kIID_IIMBridgeMgr);
  manager_->Init();
  for (int i = 0; i < views; ++i) {
    bridges_.push_back(Create<bridge::IIMSDKBridge>(kClassIMSDKBridge, kIID_IIMSDKBridge));
    bridges_.back()->BindPage({L"view", &page, loop_.task_runner(), test::kHarbor});
  }
}

BenchHost::~BenchHost() {
  for (const auto& bridge : bridges_) bridge->UnbindPage();
  manager_->Uninit();
  GetKexCOM()->UnregisterService(ns_log::ILogService::kServiceId);
}

void BenchHost::Invoke(const std::wstring& method, const std::wstring& seq,
                       const std::wstring& bizmethod, const std::wstring& json) {
  bridges_.front()->JsInvoke({L"view", method, {seq, bizmethod, json}});
}

void BenchHost::RegisterAll() {
  for (const auto& bridge : bridges_) {
    bridge->JsInvoke({L"view", L"workbench.im.event_register", {L"r", L"register_all", L"{}"}});
  }
}

}  // namespace imsdk::bench
