#include "kexbase/trace_record.h"

#include "kexbase/json_writer.h"
#include "kexbase/strings.h"

namespace base {

namespace {

bool IsKeyItem(std::string_view name) {
  return name == "node_name" || name == "unique_id" || name == "result_code";
}

std::wstring GroupText(const DictionaryValue& group) {
  std::string utf8;
  JSONWriter::Write(Value(group), &utf8);
  return UTF8ToWide(utf8);
}

}  // namespace

void TraceRecord::AddItem(std::string_view name, std::wstring_view value) {
  (IsKeyItem(name) ? keys_ : others_).Set(name, Value(WideToUTF8(value)));
}

void TraceRecord::AddBrief(std::string_view name, std::wstring_view value) {
  briefs_ += briefs_.empty() ? L' ' : L',';
  AppendWide(name, &briefs_);
  briefs_ += L'=';
  briefs_ += value;
}

std::wstring TraceRecord::Text() const {
  const std::wstring keys = GroupText(keys_);
  const std::wstring others = GroupText(others_);
  return NumberToWide(keys.size()) + L'|' + NumberToWide(others.size()) + L'|' +
         NumberToWide(briefs_.size()) + keys + others + briefs_;
}

}  // namespace base
