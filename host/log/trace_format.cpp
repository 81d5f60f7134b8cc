#include <algorithm>

#include "kexbase/json_string.h"
#include "kexbase/strings.h"
#include "log/trace_log.h"

namespace imsdk::host {
namespace {

constexpr std::size_t kReadableLength = 2000;

template <class Text>
void AppendMember(std::string_view name, Text text, std::string* out) {
  *out += ",\"";
  *out += name;
  *out += "\":";
  base::AppendJSONString(text, out);
}

}  // namespace

std::string JsonTraceLine(const ns_log::ITraceLine& line, std::int64_t time) {
  std::string out = "{\"time\":" + base::NumberToString(time);
  out += ",\"level\":" + base::NumberToString(line.Level());
  AppendMember("text", line.Text(), &out);
  AppendMember("function", line.Function(), &out);
  AppendMember("source", line.Source(), &out);
  out += ",\"line\":" + base::NumberToString(line.Line());
  AppendMember("brief", line.Brief(), &out);
  out += ",\"items\":{";
  for (std::size_t i = 0; i < line.ItemCount(); ++i) {
    const ns_log::TraceItemView item = line.Item(i);
    if (i > 0) out += ',';
    base::AppendJSONString(item.name, &out);
    out += ':';
    base::AppendJSONString(item.value, &out);
  }
  out += '}';
  AppendMember("record", std::wstring_view(line.Record()), &out);
  out += '}';
  return out;
}

std::string ReadableTraceLine(const ns_log::ITraceLine& line) {
  std::string out(line.Function());
  out += ": ";
  base::AppendUTF8(line.Text(), &out);
  // A text may carry what a page wrote; the log has one line for each trace line.
  std::replace_if(
      out.begin(), out.end(), [](unsigned char c) { return c < 0x20; }, ' ');
  for (std::size_t i = 0; i < line.ItemCount(); ++i) {
    const ns_log::TraceItemView item = line.Item(i);
    out += ' ';
    out += item.name;
    out += '=';
    base::AppendJSONString(item.value.substr(0, kReadableLength), &out);
    if (item.value.size() > kReadableLength) out += "...";
  }
  out += " (";
  out += line.Source();
  out += ':' + base::NumberToString(line.Line()) + ')';
  return out;
}

}  // namespace imsdk::host
