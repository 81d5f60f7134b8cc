#include "page/open_calls.h"

#include <charconv>
#include <variant>

#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

// Of the tables that know a call, the bridge's and this one.
constexpr std::size_t kOverhead = 512;

std::size_t BytesOf(const bridge::SdkParam& call) {
  std::size_t characters = call.method.size();
  for (const bridge::ScriptArg& arg : call.args) {
    if (const auto* text = std::get_if<std::wstring>(&arg)) characters += text->size();
  }
  return kOverhead + characters * sizeof(wchar_t);
}

struct ToText {
  std::wstring operator()(std::monostate) const { return {}; }
  std::wstring operator()(bool value) const { return value ? L"true" : L"false"; }
  std::wstring operator()(std::int64_t value) const { return base::NumberToWide(value); }
  std::wstring operator()(double value) const {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
  }
  std::wstring operator()(const std::wstring& text) const { return text; }
};

}  // namespace

std::wstring TextOf(const bridge::SdkParam& call, std::size_t index) {
  return index < call.args.size() ? std::visit(ToText(), call.args[index]) : std::wstring();
}

std::wstring SequenceOf(const bridge::SdkParam& call) { return TextOf(call, 0); }

bool OpenCalls::Open(const std::wstring& seq, const bridge::SdkParam& call) {
  if (seq.empty()) return true;
  const std::size_t bytes = BytesOf(call);
  if (!memory_->Take(bytes)) return false;
  Close(seq);
  bytes_.emplace(seq, bytes);
  return true;
}

void OpenCalls::Close(const std::wstring& seq) {
  const auto found = bytes_.find(seq);
  if (found == bytes_.end()) return;
  memory_->Give(found->second);
  bytes_.erase(found);
}

void OpenCalls::Clear() {
  for (const auto& [seq, bytes] : bytes_) memory_->Give(bytes);
  bytes_.clear();
}

}  // namespace imsdk::host
