#include "source/bridge/imsdkbridge.h"

#include <array>
#include <utility>
#include <vector>

#include "kexbase/json_reader.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"
#include "kexcom/result.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/imbridgemgr.h"
#include "source/bridge/jsparams/secretfree.h"
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

constexpr char kSource[] = "source\\bridge\\imsdkbridge";
constexpr ns_log::TraceSite kInvokeSite{"CIMSDKBridge::JsInvoke", kSource};
constexpr ns_log::TraceSite kResponseSite{"CIMSDKBridge::JSResponse", kSource};

struct EventsRequest {
  std::vector<std::wstring> events;

  static constexpr auto kFields =
      FieldList(Field("events", &EventsRequest::events, "Names of notifications."));
};

}  // namespace

struct CIMSDKBridge::Invocation {
  const std::wstring& strSeqID;
  const std::wstring& bizmethod;
  const std::wstring& jsonparam;
};

CIMSDKBridge::~CIMSDKBridge() { UnbindPage(); }

std::int32_t CIMSDKBridge::BindPage(const PageBinding& binding) try {
  if (!binding.handler || !binding.runner) return E_POINTER;
  if (channel_ || !CIMBridgeMgr::Started()) return E_UNEXPECTED;
  browser_id_ = binding.browserId;
  channel_ = std::make_shared<PageChannel>(binding.handler, binding.runner);
  self_ = std::make_shared<CIMSDKBridge*>(this);
  // Filled once the modules are there; a login that uses it comes later.
  const auto sources = std::make_shared<std::vector<FeedSource>>();
  const auto attach = [sources](const biz::IMUserID& account) {
    const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
    return std::make_shared<const Attachment>(accounts ? accounts->GetAccount(account) : nullptr,
                                              *sources);
  };
  modules_ =
      MakeModules({channel_, attach,
                   [weak = std::weak_ptr(self_)](const biz::IMUserID& account,
                                                 std::shared_ptr<const Attachment> attached) {
                     const auto self = weak.lock();
                     if (self) (*self)->SetAccount(account, std::move(attached));
                   }});
  for (const auto& [path, module] : modules_) {
    if (!module) continue;
    module->listener().SetPath(path);
    sources->push_back(module->source());
    module->OwnerPreConstruct();
  }
  if (binding.account.valid()) SetAccount(binding.account, attach(binding.account));
  return 0;
} catch (...) {
  UnbindPage();
  return E_OUTOFMEMORY;
}

void CIMSDKBridge::UnbindPage() {
  self_.reset();
  if (channel_) channel_->Close();
  // Out of the bridge first: a module's end may come back here through the host.
  const auto attached = std::exchange(attached_, nullptr);
  const auto modules = std::exchange(modules_, {});
}

void CIMSDKBridge::JsInvoke(const SdkParam& sdkParam) {
  if (!channel_) return;
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

  if (sdkParam.browserId != browser_id_) {
    // No record of this call is stored yet, so the answer goes nowhere unless an older call waits
    // under the same identifier.
    JSResponse(strSeqID, {E_NOTIMPL, {}});
    CTraceProxy(ns_log::kError, kInvokeSite, L"browserId NOT match!!!")
        .Brief("_brief_,sdkParam.browserId,sdkParam.method,strSeqID,strParam2,strParam3",
               sdkParam.browserId, sdkParam.method, strSeqID, strParam2, SecretFree(strParam3));
    return;
  }
  if (!strSeqID.empty()) {
    pending_.Add(strSeqID, {sdkParam.method, strParam3, NowMs()});
    DropOverdue();
  }

  const std::wstring_view method = std::wstring_view(sdkParam.method).substr(kHostPrefix.size());
  const Invocation call{strSeqID, strParam2, strParam3};
  if (method.ends_with(kInvokeSuffix)) {
    CallModule(std::wstring(method.substr(0, method.size() - kInvokeSuffix.size())), call);
  } else if (method == L"im.event_notify") {
    EventNotify(call);
  } else if (method == L"im.event_register") {
    EventRegister(call);
  }
}

void CIMSDKBridge::CallModule(const std::wstring& scRoutingPath, const Invocation& call) {
  const auto& [strSeqID, bizmethod, jsonparam] = call;
  const auto found = modules_.find(scRoutingPath);
  if (found == modules_.end()) return;
  if (strSeqID.empty()) CTraceProxy(ns_log::kWarning, kInvokeSite, L"invalid seqid");
  if (base::Utf16Length(jsonparam) > kJsonLimit) {
    CTraceProxy(ns_log::kError, kInvokeSite, L"unexpected json!!! too large.")
        .Brief("_brief_,scRoutingPath,bizmethod,jsonparam", scRoutingPath, bizmethod,
               SecretFree(jsonparam));
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

void CIMSDKBridge::EventNotify(const Invocation& call) {
  const std::wstring& eventname = call.bizmethod;
  channel_->Raise(eventname, call.jsonparam, L"");
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
      .Brief("_brief_,bizmethod,jsonparam", call.bizmethod, call.jsonparam);
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
  for (const auto& [path, module] : modules_) {
    if (!module) continue;
    for (const std::wstring& name : request.events) module->listener().Register(name, add);
  }
  return {};
}

void CIMSDKBridge::RegisterAll(bool wanted) {
  for (const auto& [path, module] : modules_) {
    if (module) module->listener().RegisterAll(wanted);
  }
}

bool CIMSDKBridge::KnowsNotification(std::wstring_view name) const {
  for (const auto& [path, module] : modules_) {
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
  return {RefPtr<CIMSDKBridge>(this), channel_->runner(), strSeqID};
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
  const RefPtr<IPageHandler> handler = channel_->handler();
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
               SecretFree(call->params));
  } else {
    CTraceProxy(ns_log::kRoutine, kResponseSite, L"js invoke!")
        .Brief("_brief_,strSeqID, timeDiff, method", strSeqID, timeDiff, call->method);
  }
  try {
    handler->DeliverAnswer(browser_id_, strSeqID, result.code != 0, result.payload);
  } catch (...) {  // the page side's trouble ends here
  }
}

void CIMSDKBridge::SetAccount(const biz::IMUserID& account,
                              std::shared_ptr<const Attachment> attached) {
  for (const auto& [path, module] : modules_) {
    if (module) module->SetAccount(account, attached ? attached->engine() : nullptr);
  }
  attached_ = std::move(attached);
}

std::int64_t CIMSDKBridge::NowMs() const { return base::TimeTicks::Now().ToMilliseconds(); }

ModuleTable CIMSDKBridge::MakeModules(const ModuleContext& context) const {
  return MakeBridgeModules(context);
}

}  // namespace imsdk::bridge
