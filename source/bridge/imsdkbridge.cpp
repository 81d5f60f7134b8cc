#include "source/bridge/imsdkbridge.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "kexbase/json_reader.h"
#include "kexbase/location.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"
#include "kexcom/result.h"
#include "source/bridge/imbridgemgr.h"
#include "source/bridge/scriptarg.h"
#include "trace/traceproxy.h"

namespace imsdk::bridge {
namespace {

using ns_log::CTraceProxy;

constexpr std::wstring_view kRegisteredPrefix = L"workbench.im.";
constexpr std::wstring_view kHostPrefix = L"workbench.";
constexpr std::wstring_view kInvokeSuffix = L".invoke";
constexpr std::size_t kJsonLimit = 4096;  // UTF-16 code units; only traced
constexpr std::int64_t kSlowMs = 500;

constexpr ns_log::TraceSite kInvokeSite{"CIMSDKBridge::JsInvoke"};
constexpr ns_log::TraceSite kResponseSite{"CIMSDKBridge::JSResponse"};

struct EventsRequest {
  std::vector<std::wstring> events;

  static constexpr auto kFields =
      FieldList(Field("events", &EventsRequest::events, "Names of notifications."));
};

// The routing path of a module call; nothing when the method is something else.
std::optional<std::wstring> RoutingPath(const std::wstring& method) {
  if (!method.ends_with(kInvokeSuffix)) return std::nullopt;
  const std::wstring_view path = std::wstring_view(method).substr(kHostPrefix.size());
  return std::wstring(path.substr(0, path.size() - kInvokeSuffix.size()));
}

}  // namespace

struct CIMSDKBridge::Invocation {
  const std::wstring& strSeqID;
  const std::wstring& bizmethod;
  const std::wstring& jsonparam;
};

CIMSDKBridge::~CIMSDKBridge() {
  if (!view_) return;
  const std::shared_ptr<base::TaskRunner> runner = view_->channel().runner();
  if (runner->RunsTasksOnCurrentThread()) {
    view_->Close();
    return;
  }
  try {
    // A runner that takes no tasks any more lets go of the view with this one.
    runner->PostTask(FROM_HERE, [view = std::move(view_)] { view->Close(); });
  } catch (...) {  // out of memory: the same
  }
}

std::int32_t CIMSDKBridge::BindPage(const PageBinding& binding) try {
  if (!binding.handler || !binding.runner) return E_POINTER;
  if (view_ || !CIMBridgeMgr::Started()) return E_UNEXPECTED;
  view_ = std::make_shared<BoundView>(binding);
  view_->Open([this](const ModuleContext& context) { return MakeModules(context); },
              binding.account);
  return 0;
} catch (...) {
  UnbindPage();
  return E_OUTOFMEMORY;
}

void CIMSDKBridge::UnbindPage() {
  if (view_) view_->Close();
}

void CIMSDKBridge::JsInvoke(const SdkParam& sdkParam) {
  if (!view_) return;
  // The page handler may close the view from inside a delivery.
  const RefPtr<CIMSDKBridge> self(this);
  try {
    Dispatch(sdkParam);
  } catch (...) {
    // The call's answer callback answers for itself when it is dropped.
    CTraceProxy(ns_log::kError, kInvokeSite, L"exception!!!")
        .Brief("_brief_,sdkParam.method", sdkParam.method);
  }
}

void CIMSDKBridge::Dispatch(const SdkParam& sdkParam) {
  if (!sdkParam.method.starts_with(kRegisteredPrefix)) {
    const std::wstring text = L"NOT Register! method " + sdkParam.method;
    CTraceProxy(ns_log::kError, kInvokeSite, text).Brief("_brief_,method", sdkParam.method);
    return;
  }
  std::array<std::wstring, 3> made;
  const std::wstring& strSeqID = ArgText(sdkParam, 0, &made[0]);
  const std::wstring& strParam2 = ArgText(sdkParam, 1, &made[1]);
  const std::wstring& strParam3 = ArgText(sdkParam, 2, &made[2]);

  if (sdkParam.browserId != view_->browser_id()) {
    // No record of this call is stored yet, so the answer goes nowhere unless an older call waits
    // under the same identifier.
    JSResponse(strSeqID, {E_NOTIMPL, {}});
    CTraceProxy(ns_log::kError, kInvokeSite, L"browserId NOT match!!!")
        .Brief("_brief_,sdkParam.browserId,sdkParam.method,strSeqID,strParam2,strParam3",
               sdkParam.browserId, sdkParam.method, strSeqID, strParam2,
               SecretFree(strParam3, SecretsFor(RoutingPath(sdkParam.method))));
    return;
  }
  if (!strSeqID.empty()) {
    pending_.Add(strSeqID, {sdkParam.method, strParam3, NowMs()});
    DropOverdue();
  }

  const Invocation call{strSeqID, strParam2, strParam3};
  if (const auto path = RoutingPath(sdkParam.method)) {
    CallModule(*path, call);
  } else if (sdkParam.method == L"workbench.im.event_notify") {
    EventNotify(call);
  } else if (sdkParam.method == L"workbench.im.event_register") {
    EventRegister(call);
  }
}

void CIMSDKBridge::CallModule(const std::wstring& scRoutingPath, const Invocation& call) {
  const auto& [strSeqID, bizmethod, jsonparam] = call;
  const auto found = view_->modules().find(scRoutingPath);
  if (found == view_->modules().end()) return;
  if (strSeqID.empty()) CTraceProxy(ns_log::kWarning, kInvokeSite, L"invalid seqid");
  if (base::Utf16Length(jsonparam) > kJsonLimit) {
    CTraceProxy(ns_log::kError, kInvokeSite, L"unexpected json!!! too large.")
        .Brief("_brief_,scRoutingPath,bizmethod,jsonparam", scRoutingPath, bizmethod,
               SecretFree(jsonparam, SecretsFor(scRoutingPath)));
  }
  const std::shared_ptr<CBridgeBase> module = found->second;
  if (!module) {
    CTraceProxy(ns_log::kError, kInvokeSite, L"null pointer!!! path,method")
        .Brief("_brief_,scRoutingPath,bizmethod", scRoutingPath, bizmethod);
    return;
  }
  if (!module->JsInvoke(bizmethod, jsonparam, MakeAnswer(strSeqID))) {
    CTraceProxy(ns_log::kError, kInvokeSite, L"Invalid js invoke!!! path,method")
        .Brief("_brief_,scRoutingPath,bizmethod", scRoutingPath, bizmethod);
  }
}

// What goes to nobody known may hold secrets.
Secrets CIMSDKBridge::SecretsFor(const std::optional<std::wstring>& path) const {
  const auto found = path ? view_->modules().find(*path) : view_->modules().end();
  if (found == view_->modules().end() || !found->second) return {true, {}};
  return SecretsOf(found->second->Methods());
}

void CIMSDKBridge::EventNotify(const Invocation& call) {
  const std::wstring& eventname = call.bizmethod;
  view_->channel().Raise(eventname, call.jsonparam, L"");
  CTraceProxy(ns_log::kRoutine, kInvokeSite, L"im.event_notify!!!")
      .Brief("_brief_,eventname", eventname);
  AnswerEvent(call.strSeqID, {});
}

void CIMSDKBridge::EventRegister(const Invocation& call) {
  if (call.bizmethod == L"register_all") {
    RegisterAll(true);
    CTraceProxy(ns_log::kRoutine, kInvokeSite, L"im.event_register(event_register)!!!");
    return AnswerEvent(call.strSeqID, {});
  }
  CTraceProxy(ns_log::kRoutine, kInvokeSite, L"im.event_register!!!")
      .Brief("_brief_,bizmethod,jsonparam", call.bizmethod,
             SecretFree(call.jsonparam, Secrets{true, {}}));
  AnswerEvent(call.strSeqID, ChangeRegistration(call));
}

biz::ResultCode CIMSDKBridge::ChangeRegistration(const Invocation& call) {
  if (call.bizmethod == L"unregister_all") {
    RegisterAll(false);
    return {};
  }
  const bool add = call.bizmethod == L"register";
  if (!add && call.bizmethod != L"unregister") return {E_NOTIMPL, 0, L"unknown method"};
  const auto json = base::JSONReader::Read(base::WideToUTF8(call.jsonparam));
  if (!json) return {E_INVALIDARG, 0, L"invalid!"};
  EventsRequest request;
  ReadValue<PlainForm>(*json, &request);
  for (const std::wstring& name : request.events) {
    if (!KnowsNotification(name)) return {E_INVALIDARG, 0, L"unknown event: " + name};
  }
  for (const auto& [path, module] : view_->modules()) {
    if (!module) continue;
    for (const std::wstring& name : request.events) module->listener().Register(name, add);
  }
  return {};
}

void CIMSDKBridge::RegisterAll(bool wanted) {
  for (const auto& [path, module] : view_->modules()) {
    if (module) module->listener().RegisterAll(wanted);
  }
}

bool CIMSDKBridge::KnowsNotification(std::wstring_view name) const {
  for (const auto& [path, module] : view_->modules()) {
    if (!module) continue;
    for (const NotifyInfo* known : module->listener().rows()) {
      if (known->name == name) return true;
    }
  }
  return false;
}

void CIMSDKBridge::AnswerEvent(const std::wstring& strSeqID, const biz::ResultCode& result) {
  if (!strSeqID.empty()) JSResponse(strSeqID, {result.code, AnswerText(result)});
}

AnswerCallback CIMSDKBridge::MakeAnswer(const std::wstring& strSeqID) {
  return {RefPtr<CIMSDKBridge>(this), view_->channel().runner(), strSeqID};
}

void CIMSDKBridge::DropOverdue() {
  while (const auto oldest = pending_.Overdue()) {
    CTraceProxy(ns_log::kError, kInvokeSite, L"pending calls full!!!")
        .Brief("_brief_,strSeqID", *oldest);
    JSResponse(*oldest, {E_UNEXPECTED, {}});
    pending_.Take(*oldest);  // still there when no page is attached
  }
}

void CIMSDKBridge::JSResponse(const std::wstring& strSeqID, const AnswerResult& result) {
  const RefPtr<IPageHandler> handler = view_->channel().handler();
  if (!handler || strSeqID.empty()) {
    CTraceProxy(ns_log::kError, kResponseSite, L"ERROR!!!").Brief("_brief_,strSeqID", strSeqID);
    return;
  }
  const auto call = pending_.Take(strSeqID);
  if (!call) {
    CTraceProxy(ns_log::kRoutine, kResponseSite, L"already done!!!")
        .Brief("_brief_,strSeqID", strSeqID);
    return;
  }
  const std::int64_t timeDiff = NowMs() - call->start;
  if (timeDiff >= kSlowMs) {
    CTraceProxy(ns_log::kWarning, kResponseSite, L"js invoke take too much time!")
        .Brief("_brief_,strSeqID, timeDiff, method, params", strSeqID, timeDiff, call->method,
               SecretFree(call->params, SecretsFor(RoutingPath(call->method))));
  } else {
    CTraceProxy(ns_log::kRoutine, kResponseSite, L"js invoke!")
        .Brief("_brief_,strSeqID, timeDiff, method", strSeqID, timeDiff, call->method);
  }
  try {
    handler->DeliverAnswer(view_->browser_id(), strSeqID, result.code != 0, result.payload);
  } catch (...) {  // the page side's trouble ends here
  }
}

std::int64_t CIMSDKBridge::NowMs() const { return base::TimeTicks::Now().ToMilliseconds(); }

ModuleTable CIMSDKBridge::MakeModules(const ModuleContext& context) const {
  return MakeBridgeModules(context);
}

}  // namespace imsdk::bridge
