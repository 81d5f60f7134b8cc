#include "source/bridge/imbridgemgr.h"

#include <atomic>

#include "kexbase/json_reader.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"
#include "source/bridge/description.h"
#include "source/bridge/jsparams/corerecords.h"
#include "trace/traceproxy.h"
#include "trace/tracetarget.h"

namespace imsdk::bridge {
namespace {

constexpr wchar_t kVersion[] = L"3.2.17_IMSDK";

std::atomic<bool> g_started{false};

}  // namespace

std::int32_t CIMBridgeMgr::Init() {
  if (g_started.exchange(true)) return 0;
  ns_log::TraceTarget::Attach();
  ns_log::CTraceProxy(ns_log::kRoutine, {"CIMBridgeMgr::Init"}, L"Biz Init Begin.")
      .Item(ns_log::MakeTraceItem("version", kVersion));
  return 0;
}

void CIMBridgeMgr::Uninit() {
  if (!g_started.exchange(false)) return;
  ns_log::CTraceProxy(ns_log::kRoutine, {"CIMBridgeMgr::Uninit"}, L"Biz Uninit.");
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

std::int32_t CIMBridgeMgr::ReadCoreRecord(const char* text, std::size_t size,
                                          CoreRecord* record) try {
  if (!record) return E_POINTER;
  const auto json = base::JSONReader::Read(std::string_view(text, size));
  if (!json || !json->is_dict()) return E_INVALIDARG;
  std::visit([&](auto& one) { ReadValue<CoreForm>(*json, &one); }, *record);
  return 0;
} catch (...) {
  return E_OUTOFMEMORY;
}

std::int32_t CIMBridgeMgr::WriteCoreRecord(const CoreRecord& record, TextSink sink,
                                           void* context) try {
  if (!sink) return E_POINTER;
  const std::string text = base::WideToUTF8(
      std::visit([](const auto& one) { return RecordText<CoreForm>(one); }, record));
  sink(context, text.data(), text.size());
  return 0;
} catch (...) {
  return E_OUTOFMEMORY;
}

bool CIMBridgeMgr::Started() { return g_started; }

}  // namespace imsdk::bridge
