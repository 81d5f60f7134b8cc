#include "source/bridge/imbridgemgr.h"

#include <atomic>

#include "kexbase/strings.h"
#include "kexcom/result.h"
#include "source/bridge/description.h"
#include "trace/traceproxy.h"
#include "trace/tracetarget.h"

namespace imsdk::bridge {
namespace {

constexpr wchar_t kVersion[] = L"3.2.17_IMSDK";
constexpr char kSource[] = "source\\bridge\\imbridgemgr";

std::atomic<bool> g_started{false};

}  // namespace

std::int32_t CIMBridgeMgr::Init() {
  if (g_started.exchange(true)) return 0;
  ns_log::TraceTarget::Attach();
  ns_log::CTraceProxy(ns_log::kRoutine, {"CIMBridgeMgr::Init", kSource}, L"Biz Init Begin.")
      .Item(ns_log::MakeTraceItem("version", kVersion));
  return 0;
}

void CIMBridgeMgr::Uninit() {
  if (!g_started.exchange(false)) return;
  ns_log::CTraceProxy(ns_log::kRoutine, {"CIMBridgeMgr::Uninit", kSource}, L"Biz Uninit.");
  ns_log::TraceTarget::Detach();
}

std::int32_t CIMBridgeMgr::Describe(TextSink sink, void* context) try {
  if (!sink) return E_POINTER;
  const std::string text = base::WideToUTF8(ProtocolDescription(
      MakeBridgeModules({std::make_shared<PageChannel>(nullptr, nullptr), nullptr, nullptr}),
      kVersion));
  sink(context, text.data(), text.size());
  return 0;
} catch (...) {
  return E_OUTOFMEMORY;
}

bool CIMBridgeMgr::Started() { return g_started; }

}  // namespace imsdk::bridge
