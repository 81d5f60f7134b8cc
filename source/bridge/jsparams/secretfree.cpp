#include "source/bridge/jsparams/secretfree.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"
#include "kexbase/strings.h"

namespace imsdk::bridge {
namespace {

using base::Value;

constexpr std::string_view kSecretKeys[] = {"password", "token"};
constexpr std::string_view kMask = "***";

// A secret key stands in a text as it is, or with letters in the form of "\u0061".
bool MayHoldSecrets(std::wstring_view json) {
  return json.find(L"\\u") != json.npos || json.find(L"password") != json.npos ||
         json.find(L"token") != json.npos;
}

// Whether a text may be JSON with keys in it, or the JSON text of such a text.
bool MayBeJson(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != text.npos && std::string_view("{[\"").find(text[first]) != std::string_view::npos;
}

using Keys = std::vector<std::string_view>;

Value Masked(const Value& value, const Keys& keys, bool* any);

std::string MaskedText(const std::string& text, const Keys& keys, bool* any) {
  if (!MayBeJson(text)) return text;
  const std::optional<Value> inside = base::JSONReader::Read(text);
  if (!inside) return text;
  bool here = false;
  const Value masked = Masked(*inside, keys, &here);
  if (!here) return text;
  *any = true;
  std::string json;
  base::JSONWriter::Write(masked, &json);
  return json;
}

// Sets `*any` when something was masked.
Value Masked(const Value& value, const Keys& keys, bool* any) {
  if (const auto* dict = value.GetIfDict()) {
    base::DictionaryValue masked;
    masked.Reserve(dict->size());
    for (const auto& [key, member] : *dict) {
      const bool secret =
          IsSecretKey(key) || std::find(keys.begin(), keys.end(), key) != keys.end();
      *any |= secret;
      masked.Append(key, secret ? Value(kMask) : Masked(member, keys, any));
    }
    return masked;
  }
  if (const auto* list = value.GetIfList()) {
    base::ListValue masked;
    masked.Reserve(list->size());
    for (const Value& item : *list) masked.Append(Masked(item, keys, any));
    return masked;
  }
  if (const auto* text = value.GetIfString()) return MaskedText(*text, keys, any);
  return value;
}

}  // namespace

bool IsSecretKey(std::string_view key) {
  return std::find(std::begin(kSecretKeys), std::end(kSecretKeys), key) != std::end(kSecretKeys);
}

std::wstring_view SecretFree::operator()(std::wstring* made) const {
  if (!secrets_.taken && !MayHoldSecrets(json_)) return json_;
  const std::optional<Value> read = base::JSONReader::Read(base::WideToUTF8(json_));
  if (!read) {
    *made = base::NumberToWide(static_cast<std::int64_t>(json_.size())) +
            L" characters that are no JSON";
    return *made;
  }
  bool any = false;
  const Value masked = Masked(*read, secrets_.keys, &any);
  if (!any) return json_;
  std::string json;
  base::JSONWriter::Write(masked, &json);
  *made = base::UTF8ToWide(json);
  return *made;
}

}  // namespace imsdk::bridge
