#include "log/host_trace.h"

#include <algorithm>
#include <cstddef>

#include "kexbase/strings.h"
#include "kexbase/trace_record.h"

namespace imsdk::host {
namespace {

constexpr std::string_view kBriefStart = "_brief_,";

class HostTraceLine final : public ns_log::ITraceLine {
 public:
  HostTraceLine(int level, const HostTraceSite& site, std::wstring_view text,
                std::string_view brief, const std::vector<std::string>& values, int line)
      : level_(level), site_(site), text_(text), brief_(brief), line_(line) {
    std::string_view names = brief.substr(std::min(kBriefStart.size(), brief.size()));
    for (const std::string& value : values) {
      const std::size_t end = std::min(names.find(','), names.size());
      items_.push_back({names.substr(0, end), base::UTF8ToWide(value)});
      names.remove_prefix(std::min(end + 1, names.size()));
    }
  }

  int Level() const override { return level_; }
  std::wstring_view Text() const override { return text_; }
  std::string_view Function() const override { return site_.function; }
  std::string_view Source() const override { return site_.source; }
  int Line() const override { return line_; }
  std::string_view Brief() const override { return brief_; }
  std::size_t ItemCount() const override { return items_.size(); }
  ns_log::TraceItemView Item(std::size_t index) const override {
    return {items_[index].name, items_[index].value};
  }

  // The host has no trace points: all its values are brief ones.
  std::wstring Record() const override {
    base::TraceRecord record;
    for (const Named& brief : items_) record.AddBrief(brief.name, brief.value);
    return record.Text();
  }

 private:
  struct Named {
    std::string_view name;
    std::wstring value;
  };

  int level_;
  HostTraceSite site_;
  std::wstring_view text_;
  std::string_view brief_;
  int line_;
  std::vector<Named> items_;
};

}  // namespace

void WriteTrace(ns_log::ILogger& log, int level, const HostTraceSite& site, std::wstring_view text,
                std::string_view brief, std::vector<std::string> values, int line) {
  try {
    if (log.IsEnabled(level)) log.Write(HostTraceLine(level, site, text, brief, values, line));
  } catch (...) {  // a logger in trouble must not end a view
  }
}

}  // namespace imsdk::host
