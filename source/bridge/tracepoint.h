// Trace points: lines by which a log collector follows one message through the system.
#pragma once

#include <cstdint>
#include <string>

#include "trace/traceproxy.h"

namespace imsdk::bridge {

struct TracePoint {
  const char* node_name;
  std::wstring unique_id;  // of the operation or the message
  std::int32_t result_code = 0;
  std::wstring session_id;  // the conversation
  std::int64_t imsdk_msgid = 0;
  std::int64_t imsdk_msgtime = 0;  // milliseconds since the Unix epoch, or 0
};

// Makes `line` this point.
inline void Mark(ns_log::CTraceProxy& line, const TracePoint& point) {
  using ns_log::MakeTraceItem;
  line.Item(MakeTraceItem("node_name", point.node_name))
      .Item(MakeTraceItem("unique_id", point.unique_id))
      .Item(MakeTraceItem("result_code", point.result_code))
      .Item(MakeTraceItem("session_id", point.session_id))
      .Item(MakeTraceItem("imsdk_msgid", point.imsdk_msgid));
  if (point.imsdk_msgtime != 0) line.Item(MakeTraceItem("imsdk_msgtime", point.imsdk_msgtime));
}

}  // namespace imsdk::bridge
