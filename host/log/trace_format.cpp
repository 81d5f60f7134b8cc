#include <algorithm>
#include <type_traits>

#include "kexbase/json_string.h"
#include "kexbase/strings.h"
#include "log/trace_log.h"

namespace imsdk::host {
namespace {

constexpr std::size_t kReadableLength = 2000;

// Appends texts as JSON strings, as long as there is room for them.
class Cutter {
 public:
  Cutter(std::size_t room, std::string* out) : room_(room), out_(*out) {}

  // At most `longest` characters of `text`. One that is cut ends with "...".
  void Append(std::wstring_view text, std::size_t longest = kLongestTraceText) {
    const std::wstring_view shown = text.substr(0, std::min(longest, room_));
    room_ -= shown.size();
    if (shown.size() == text.size()) return base::AppendJSONString(text, &out_);
    base::AppendJSONString(std::wstring(shown) + L"...", &out_);
  }

 private:
  std::size_t room_;  // characters
  std::string& out_;
};

template <class Text>
void AppendMember(std::string_view name, Text text, std::string* out) {
  *out += ",\"";
  *out += name;
  *out += "\":";
  if constexpr (std::is_same_v<Text, std::wstring_view>) {
    Cutter(kLongestTraceText, out).Append(text);
  } else {
    base::AppendJSONString(text, out);
  }
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
  Cutter items(kLongestTraceText, &out);
  for (std::size_t i = 0; i < line.ItemCount(); ++i) {
    const ns_log::TraceItemView item = line.Item(i);
    if (i > 0) out += ',';
    base::AppendJSONString(item.name, &out);
    out += ':';
    items.Append(item.value);
  }
  out += '}';
  AppendMember("record", std::wstring_view(line.Record()), &out);
  out += '}';
  return out;
}

std::string ReadableTraceLine(const ns_log::ITraceLine& line) {
  std::string out(line.Function());
  out += ": ";
  base::AppendUTF8(line.Text().substr(0, kReadableLength), &out);
  if (line.Text().size() > kReadableLength) out += "...";
  // A text may carry what a page wrote; the log has one line for each trace line.
  std::replace_if(
      out.begin(), out.end(), [](unsigned char c) { return c < 0x20; }, ' ');
  Cutter items(4 * kReadableLength, &out);
  for (std::size_t i = 0; i < line.ItemCount(); ++i) {
    const ns_log::TraceItemView item = line.Item(i);
    out += ' ';
    out += item.name;
    out += '=';
    items.Append(item.value, kReadableLength);
  }
  out += " (";
  out += line.Source();
  out += ':' + base::NumberToString(line.Line()) + ')';
  return out;
}

}  // namespace imsdk::host
