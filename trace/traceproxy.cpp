#include "trace/traceproxy.h"

#include <algorithm>

#include "kexbase/trace_record.h"
#include "trace/tracetarget.h"

namespace ns_log {
namespace {

constexpr std::string_view kBriefStart = "_brief_,";

// How traces name a file of the project: from the room that it lies in, without its ending.
std::string SourceName(std::string_view file) {
  std::string name(file.substr(0, file.rfind('.')));
  std::replace(name.begin(), name.end(), '/', '\\');
  const std::size_t room = name.rfind("source\\");
  return name.substr(room != std::string::npos ? room : name.rfind('\\') + 1);
}

}  // namespace

CTraceProxy::CTraceProxy(int level, const TraceSite& site, std::wstring_view text, const char* file,
                         int line)
    : logger_(TraceTarget::Logger()),
      level_(level),
      site_(site),
      text_(text),
      file_(file),
      line_(line) {
  if (logger_ && !logger_->IsEnabled(level)) logger_ = nullptr;
}

CTraceProxy::~CTraceProxy() {
  if (!logger_) return;
  try {
    logger_->Write(*this);
  } catch (...) {  // a logger in trouble must not take the page's call with it
  }
}

CTraceProxy& CTraceProxy::Item(TraceItem item) {
  if (logger_) items_.push_back(std::move(item));
  return *this;
}

std::string_view CTraceProxy::Function() const {
  if (!site_.inner) return site_.function;
  if (function_.empty()) function_ = std::string(site_.function) + "::" + site_.inner;
  return function_;
}

std::string_view CTraceProxy::Source() const {
  if (source_.empty()) source_ = SourceName(file_);
  return source_;
}

std::string_view CTraceProxy::NextName(std::size_t* position) const {
  if (*position == 0) *position = kBriefStart.size();
  const std::size_t end = std::min(brief_.find(',', *position), brief_.size());
  std::string_view name = brief_.substr(*position, end - *position);
  name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
  *position = std::min(end + 1, brief_.size());
  return name;
}

TraceItemView CTraceProxy::Item(std::size_t index) const {
  if (index < items_.size()) return {items_[index].name, items_[index].value};
  const Value& value = briefs_[index - items_.size()];
  return {value.name, value.owned.empty() ? value.text : std::wstring_view(value.owned)};
}

std::wstring CTraceProxy::Record() const {
  base::TraceRecord record;
  for (const TraceItem& item : items_) record.AddItem(item.name, item.value);
  for (std::size_t i = items_.size(); i < ItemCount(); ++i) {
    const TraceItemView brief = Item(i);
    record.AddBrief(brief.name, brief.value);
  }
  return record.Text();
}

}  // namespace ns_log
