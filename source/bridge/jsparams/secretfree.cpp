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

// What a key that means a secret has in it, in whatever case and with whatever around it.
constexpr std::string_view kSecretWords[] = {"password", "passwd", "pwd", "token", "secret"};
constexpr std::string_view kMask = "***";

template <class Char>
bool HasSecretWord(std::basic_string_view<Char> text) {
  const auto same = [](Char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; };
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (const std::string_view word : kSecretWords) {
      const auto rest = text.substr(at, word.size());
      if (same(rest[0], word[0]) && rest.size() == word.size() &&
          std::equal(rest.begin(), rest.end(), word.begin(), same)) {
        return true;
      }
    }
  }
  return false;
}

// A secret key stands in a text as it is, or with letters in the form of "\u0061".
bool MayHoldSecrets(std::wstring_view json) {
  return json.find(L"\\u") != json.npos || HasSecretWord(json);
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

bool IsSecretKey(std::string_view key) { return HasSecretWord(key); }

std::wstring_view SecretFree::operator()(std::wstring* made) const {
  if (!secrets_.taken && !MayHoldSecrets(json_)) return json_;
  const std::optional<Value> read = base::JSONReader::Read(base::WideToUTF8(json_));
  // A secret is found by its key; what has no keys may be nothing but the secret.
  const bool bare = secrets_.taken && read && !read->is_dict();
  if (!read || bare) {
    *made = base::NumberToWide(static_cast<std::int64_t>(json_.size())) +
            L" characters that are no JSON object";
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
