#include "source/bridge/scriptarg.h"

#include <charconv>

#include "kexbase/strings.h"

namespace imsdk::bridge {
namespace {

struct ToText {
  std::wstring operator()(std::monostate) const { return {}; }
  std::wstring operator()(bool value) const { return value ? L"true" : L"false"; }
  std::wstring operator()(std::int64_t value) const { return base::NumberToWide(value); }
  std::wstring operator()(double value) const {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return {digits, end};
  }
  std::wstring operator()(const std::wstring& text) const { return text; }
};

}  // namespace

const std::wstring& ArgText(const SdkParam& param, std::size_t index, std::wstring* made) {
  if (index >= param.args.size()) return *made;
  const ScriptArg& arg = param.args[index];
  if (const auto* text = std::get_if<std::wstring>(&arg)) return *text;
  *made = std::visit(ToText(), arg);
  return *made;
}

}  // namespace imsdk::bridge
