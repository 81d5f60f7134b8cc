#include "page/frames.h"

#include <utility>

#include "kexbase/json_reader.h"
#include "kexbase/json_string.h"
#include "kexbase/json_writer.h"
#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

// Measured with frames of 8 to 64 MiB: of text alone, and of lists of the shortest values.
constexpr std::size_t kCostOfByte = 12;
constexpr std::size_t kCostOfValue = 160;

// Uses up a text: it would lie beside its wide form until the frame is read.
bridge::ScriptArg ToScriptArg(base::Value& value) {
  if (std::string* text = value.GetIfString()) {
    const std::string utf8 = std::move(*text);
    return base::UTF8ToWide(utf8);
  }
  if (const auto truth = value.GetIfBool()) return *truth;
  if (const auto integer = value.GetIfInt64()) return *integer;
  if (const auto number = value.GetIfDouble()) return *number;
  if (value.is_null()) return std::monostate{};
  std::string json;
  base::JSONWriter::Write(value, &json);
  return base::UTF8ToWide(json);
}

std::string Members(std::string_view start, std::wstring_view text) {
  std::string frame(start);
  base::AppendJSONString(text, &frame);
  return frame;
}

}  // namespace

std::optional<bridge::SdkParam> ReadInvoke(std::string utf8, const std::wstring& own_browser_id,
                                           std::string* reason) {
  const auto refuse = [reason](std::string why) {
    *reason = std::move(why);
    return std::nullopt;
  };
  base::JSONError error;
  std::optional<base::Value> value = base::JSONReader::ReadInPlace(std::move(utf8), &error);
  if (!value) {
    return refuse("not JSON: " + error.message + " at byte " + base::NumberToString(error.offset));
  }
  base::DictionaryValue* frame = value->GetIfDict();
  if (!frame) return refuse("not an object");
  const base::Value* kind = frame->Find("kind");
  if (!kind || *kind != base::Value("invoke")) return refuse("kind is not \"invoke\"");
  const base::Value* method = frame->Find("method");
  if (!method || !method->is_string()) return refuse("method is not a text");
  const base::Value* browser_id = frame->Find("browserId");
  if (browser_id && !browser_id->is_string()) return refuse("browserId is not a text");
  base::Value* args = frame->Find("args");
  if (!args || !args->is_list()) return refuse("args is not a list");

  bridge::SdkParam call;
  call.browserId = browser_id ? base::UTF8ToWide(*browser_id->GetIfString()) : own_browser_id;
  call.method = base::UTF8ToWide(*method->GetIfString());
  base::ListValue& list = *args->GetIfList();
  call.args.reserve(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) call.args.push_back(ToScriptArg(list[i]));
  return call;
}

std::size_t CostOf(std::string_view utf8) {
  // A value follows a comma or is the first in a list or record.
  std::size_t values = 1;
  for (std::size_t i = 0; i + 1 < utf8.size(); ++i) {
    const char next = utf8[i + 1];
    values += utf8[i] == ',' || (utf8[i] == '[' && next != ']') || (utf8[i] == '{' && next != '}');
  }
  return utf8.size() * kCostOfByte + values * kCostOfValue;
}

std::string HelloFrame(std::wstring_view browser_id) {
  return Members(R"({"kind":"hello","browserId":)", browser_id) + '}';
}

std::string AnswerFrame(std::wstring_view browser_id, std::wstring_view seq, bool failed,
                        std::wstring_view payload) {
  std::string frame = Members(R"({"kind":"answer","browserId":)", browser_id);
  frame += R"(,"seq":)";
  base::AppendJSONString(seq, &frame);
  frame += failed ? R"(,"failed":true,"payload":)" : R"(,"failed":false,"payload":)";
  base::AppendJSONString(payload, &frame);
  frame += '}';
  return frame;
}

std::string NotifyFrame(std::wstring_view event, std::wstring_view payload,
                        std::wstring_view path) {
  std::string frame = Members(R"({"kind":"notify","event":)", event);
  frame += R"(,"payload":)";
  base::AppendJSONString(payload, &frame);
  if (!path.empty()) {
    frame += R"(,"path":)";
    base::AppendJSONString(path, &frame);
  }
  frame += '}';
  return frame;
}

std::string RefusedFrame(std::string_view reason) {
  return Members(R"({"kind":"refused","reason":)", base::UTF8ToWide(reason)) + '}';
}

}  // namespace imsdk::host
