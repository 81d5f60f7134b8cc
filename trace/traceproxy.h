// Puts trace lines together and hands them to the host's logger.
//
//   CTraceProxy(ns_log::kError, site, L"unexpected json!!! too large.")
//       .Brief("_brief_,scRoutingPath,bizmethod", path, method);
//
// The line is written at the end of the statement. With no logger, or one that does not want the
// level, nothing is put together.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "kexcore/logger.h"
#include "trace/safelexicalcast.h"

namespace ns_log {

// Who writes a trace line. Both texts are static.
struct TraceSite {
  const char* function = "";    // qualified name, for instance "CIMSDKBridge::JsInvoke"
  const char* inner = nullptr;  // the function inside it that traces, if it is not itself
};

struct TraceItem {
  std::string name;
  std::wstring value;
};

// A named value for `CTraceProxy::Item`.
template <class V>
TraceItem MakeTraceItem(std::string_view name, V&& value) {
  return {std::string(name), ns_smart_format::SafeLexicalCast(std::forward<V>(value))};
}

// One trace line in the making. Lives within one statement, on one thread.
class CTraceProxy final : private ITraceLine {
 public:
  // `text` must live until the end of the statement. The place in the source is found by itself.
  CTraceProxy(int level, const TraceSite& site, std::wstring_view text,
              const char* file = __builtin_FILE(), int line = __builtin_LINE());
  ~CTraceProxy();
  CTraceProxy(const CTraceProxy&) = delete;
  CTraceProxy& operator=(const CTraceProxy&) = delete;

  // The brief list and its values, one for each name behind "_brief_," in order. Named wide texts
  // are referred to, so they must live until the end of the statement. Temporaries die before the
  // line is written and are copied; everything else is converted. A value that costs something is
  // called for its text, with a place to make it in, only when somebody wants the line.
  template <class... V>
  CTraceProxy& Brief(const char* list, V&&... values) {
    brief_ = list;
    if (logger_) {
      std::size_t position = 0;
      (AddBrief(NextName(&position), std::forward<V>(values)), ...);
    }
    return *this;
  }
  CTraceProxy& Item(TraceItem item);

 private:
  struct Value {
    std::string_view name;  // into the brief list
    std::wstring owned;     // used when `text` views nothing
    std::wstring_view text;
  };

  template <class V>
  void AddBrief(std::string_view name, V&& value) {
    if constexpr (std::is_invocable_r_v<std::wstring_view, V, std::wstring*>) {
      std::wstring made;
      const std::wstring_view text = value(&made);
      const bool own = text.data() == made.data();
      briefs_.push_back({name, std::move(made), own ? std::wstring_view() : text});
    } else if constexpr (!std::is_convertible_v<V, std::wstring_view>) {
      briefs_.push_back({name, ns_smart_format::SafeLexicalCast(value), {}});
    } else if constexpr (std::is_lvalue_reference_v<V>) {
      briefs_.push_back({name, {}, value});
    } else {
      briefs_.push_back({name, std::wstring(std::wstring_view(value)), {}});
    }
  }
  std::string_view NextName(std::size_t* position) const;

  int Level() const override { return level_; }
  std::wstring_view Text() const override { return text_; }
  std::string_view Function() const override;
  std::string_view Source() const override;
  int Line() const override { return line_; }
  std::string_view Brief() const override { return brief_; }
  std::size_t ItemCount() const override { return items_.size() + briefs_.size(); }
  TraceItemView Item(std::size_t index) const override;
  std::wstring Record() const override;

  RefPtr<ILogger> logger_;  // null when nobody wants the line
  int level_;
  TraceSite site_;
  std::wstring_view text_;
  const char* file_;
  int line_;
  // Made when they are asked for.
  mutable std::string function_;
  mutable std::string source_;
  std::string_view brief_ = "_brief_,";
  std::vector<TraceItem> items_;
  std::vector<Value> briefs_;
};

}  // namespace ns_log
