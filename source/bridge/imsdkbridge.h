// The bridge object: entry of every script call, routing, answers and notifications of one view.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "bridge/imsdkbridge.h"
#include "kexcom/factory.h"
#include "source/bridge/answercallback.h"
#include "source/bridge/boundview.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/pendingcalls.h"

namespace imsdk::bridge {

// The pending-call table has no lock: everything but the counts and the end runs on the view's
// thread.
class CIMSDKBridge : public IIMSDKBridge {
 public:
  using Interface = IIMSDKBridge;
  static constexpr const char* kClassName = kClassIMSDKBridge;
  static constexpr const char* kClassId = kCLSID_IMSDKBridge;
  static constexpr const char* kInterfaceId = kIID_IIMSDKBridge;

  std::int32_t BindPage(const PageBinding& binding) override;
  void JsInvoke(const SdkParam& sdkParam) override;
  void UnbindPage() override;
  const wchar_t* NotifyingPath() const override { return view_ ? view_->channel().path() : L""; }

  // Answers one call. View's thread; called through `AnswerCallback`.
  void JSResponse(const std::wstring& strSeqID, const AnswerResult& result);

 protected:
  CIMSDKBridge() = default;
  virtual ~CIMSDKBridge();
  // Milliseconds of the monotonic clock.
  virtual std::int64_t NowMs() const;
  // The modules by routing path; an entry may be empty.
  virtual ModuleTable MakeModules(const ModuleContext& context) const;

 private:
  struct Invocation;

  void Dispatch(const SdkParam& sdkParam);
  void CallModule(const std::wstring& scRoutingPath, const Invocation& call);
  // What a request to the module of this path may hold.
  Secrets SecretsFor(const std::optional<std::wstring>& path) const;
  void EventNotify(const Invocation& call);
  void EventRegister(const Invocation& call);
  biz::ResultCode ChangeRegistration(const Invocation& call);
  void RegisterAll(bool wanted);
  bool KnowsNotification(std::wstring_view name) const;
  void AnswerEvent(const std::wstring& strSeqID, const biz::ResultCode& result);
  AnswerCallback MakeAnswer(const std::wstring& strSeqID);
  void DropOverdue();

  std::shared_ptr<BoundView> view_;  // null until bound
  PendingCalls pending_;
};

}  // namespace imsdk::bridge
