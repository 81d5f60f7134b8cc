#include "source/bridge/imbridgemgr.h"

#include <atomic>

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

bool CIMBridgeMgr::Started() { return g_started; }

}  // namespace imsdk::bridge
