#include "trace/traceproxy.h"

#include "kexbase/json_writer.h"
#include "kexbase/values.h"
#include "trace/tracetarget.h"

namespace ns_log {
namespace {

constexpr std::string_view kBriefStart = "_brief_,";

bool IsKeyItem(std::string_view name) {
  return name == "node_name" || name == "unique_id" || name == "result_code";
}

std::wstring GroupText(const base::DictionaryValue& group) {
  std::string utf8;
  base::JSONWriter::Write(base::Value(group), &utf8);
  return base::UTF8ToWide(utf8);
}

}  // namespace

CTraceProxy::CTraceProxy(int level, const TraceSite& site, std::wstring_view text, int line)
    : logger_(TraceTarget::Logger()), level_(level), site_(site), text_(text), line_(line) {
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
  base::DictionaryValue key_group;
  base::DictionaryValue others;
  for (const TraceItem& item : items_) {
    (IsKeyItem(item.name) ? key_group : others)
        .Set(item.name, base::Value(base::WideToUTF8(item.value)));
  }
  std::wstring briefs;
  for (std::size_t i = items_.size(); i < ItemCount(); ++i) {
    const TraceItemView item = Item(i);
    briefs += briefs.empty() ? L' ' : L',';
    briefs += base::UTF8ToWide(item.name);
    briefs += L'=';
    briefs += item.value;
  }
  const std::wstring keys = GroupText(key_group);
  const std::wstring rest = GroupText(others);
  return base::NumberToWide(static_cast<std::int64_t>(keys.size())) + L'|' +
         base::NumberToWide(static_cast<std::int64_t>(rest.size())) + L'|' +
         base::NumberToWide(static_cast<std::int64_t>(briefs.size())) + keys + rest + briefs;
}

}  // namespace ns_log
