#include "kexbase/json_reader.h"

#include "kexbase/rapidjson_config.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

#include "kexbase/utf.h"
#include "kexbase/value_builder.h"

namespace base {

namespace {

namespace rapidjson = internal::rapidjson;

// The parser reads ahead of the end in blocks of this size.
constexpr size_t kReadAhead = 16;

constexpr size_t kEscapeLength = 6;  // \uXXXX

bool IsHigh(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLow(uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// The unit of the \uXXXX at `at`, 0 if there is none.
uint32_t EscapedUnit(std::string_view text, size_t at) {
  if (text.size() - at < kEscapeLength || text[at] != '\\' || text[at + 1] != 'u') return 0;
  const char* const digits = text.data() + at + 2;
  uint32_t unit = 0;
  const auto [end, error] = std::from_chars(digits, digits + 4, unit, 16);
  return error == std::errc() && end == digits + 4 ? unit : 0;
}

// Turns each escape of a surrogate without its partner ("\ud83d") into the escape of U+FFFD.
// Nothing else changes, nor does the length.
void ReplaceLoneSurrogates(std::string* text) {
  for (size_t at = text->find('\\'); at != std::string::npos; at = text->find('\\', at)) {
    const uint32_t unit = EscapedUnit(*text, at);
    if (!IsHigh(unit) && !IsLow(unit)) {
      at += 2;  // whatever is escaped, a backslash too
      continue;
    }
    const bool pair = IsHigh(unit) && at + kEscapeLength <= text->size() &&
                      IsLow(EscapedUnit(*text, at + kEscapeLength));
    if (!pair) text->replace(at, kEscapeLength, "\\ufffd");
    at += pair ? 2 * kEscapeLength : kEscapeLength;
  }
}

std::nullopt_t Fail(size_t offset, const char* message, JSONError* error) {
  if (error) *error = {offset, message};
  return std::nullopt;
}

}  // namespace

std::optional<Value> JSONReader::Read(std::string_view utf8, JSONError* error) {
  std::string text;
  text.reserve(utf8.size() + kReadAhead);
  return ReadInPlace(std::move(text.append(utf8)), error);
}

std::optional<Value> JSONReader::ReadInPlace(std::string text, JSONError* error) {
  // Lengths are 32-bit in the parser.
  if (text.size() >= std::numeric_limits<rapidjson::SizeType>::max()) {
    return Fail(0, "The text is too long.", error);
  }
  const size_t valid = internal::ValidUTF8Prefix(text);
  if (valid != text.size()) return Fail(valid, "Invalid UTF-8.", error);
  // The parser takes a zero byte for the end of the text.
  const size_t zero = text.find('\0');
  if (zero != std::string::npos) return Fail(zero, "Invalid character.", error);

  text.append(kReadAhead, '\0');
  ReplaceLoneSurrogates(&text);
  rapidjson::InsituStringStream stream(text.data());
  rapidjson::Reader reader;
  internal::ValueBuilder builder(kMaxDepth);
  // Numbers are made by the builder: the parser's exact way has undefined steps (of "0.0", too).
  constexpr unsigned kFlags = rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag |
                              rapidjson::kParseNumbersAsStringsFlag;
  const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, builder);
  if (result) return builder.TakeRoot();
  auto code = result.Code();
  if (builder.number_too_big()) code = rapidjson::kParseErrorNumberTooBig;
  const bool too_deep = code == rapidjson::kParseErrorTermination;
  return Fail(result.Offset(), too_deep ? "Nested too deep." : rapidjson::GetParseError_En(code),
              error);
}

}  // namespace base
