#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "kexbase/json_reader.h"
#include "kexbase/json_string.h"
#include "kexbase/json_writer.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace {

using base::JSONReader;
using base::JSONWriter;
using base::Value;

std::string Written(const Value& value, int options = 0) {
  std::string text = "left over";
  EXPECT_TRUE(JSONWriter::WriteWithOptions(value, options, &text));
  return text;
}

// What a text becomes when it is read and written again, or "refused".
std::string Again(std::string_view text) {
  const std::optional<Value> value = JSONReader::Read(text);
  return value ? Written(*value) : "refused";
}

TEST(JSON, WhatIsReadIsWrittenAgain) {
  const struct {
    std::string text;
    const char* written;
  } kCases[] = {
      {" \t\r\n null ", "null"},
      {R"({"b":[true,false,{}],"a":[],"":""})", R"({"b":[true,false,{}],"a":[],"":""})"},
      // Numbers: both 64-bit ranges are exact, beyond them and with a point they are doubles.
      {"[0,-0,-1,9223372036854775807]", "[0,0,-1,9223372036854775807]"},
      {"-9223372036854775808", "-9223372036854775808"},
      {"[9223372036854775808,18446744073709551615]", "[9223372036854775808,18446744073709551615]"},
      {"[1.0,1e2,-0.0]", "[1.0,100.0,-0.0]"},
      {"[0.1,3.141592653589793,5e-324]", "[0.1,3.141592653589793,5e-324]"},
      {"1.7976931348623157e308", "1.7976931348623157e308"},
      {"[0.0,0e3,0.0e-9]", "[0.0,0.0,0.0]"},
      {"[1e-400,-2e-324,3e-324,1e-99999999999999999999]", "[0.0,-0.0,5e-324,0.0]"},
      {"[0.1e-323,0.00001e313,1" + std::string(300, '0') + "e-700]", "[0.0,1e308,0.0]"},
      {"[0." + std::string(400, '0') + "1,0." + std::string(30, '0') + "1e31]", "[0.0,1.0]"},
      {"2.2250738585072011e-308", "2.225073858507201e-308"},
      // Strings.
      {R"("\"\\\/\b\f\n\r\t")", R"("\"\\/\b\f\n\r\t")"},
      {R"("\u0000\u001F\u007f")", "\"\\u0000\\u001f\x7f\""},
      {R"("\u00e9\u4e2d\uD83D\uDE00")", "\"\u00e9\u4e2d\U0001F600\""},
      {"\"\u00e9\u2028\U0010FFFF<\"", "\"\u00e9\u2028\U0010FFFF<\""},
      // A surrogate without its partner, and a backslash that only looks like the start of one.
      {R"("a\ud83d")", "\"a\uFFFD\""},
      {R"("\ude00\ud83d\ud83d\ude00\ud83dx\uD83D\n")",
       "\"\uFFFD\uFFFD\U0001F600\uFFFDx\uFFFD\\n\""},
      {R"("\\ud83d\\\ud83d")", "\"\\\\ud83d\\\\\uFFFD\""},
      // The last value of a repeated key, in the first one's place.
      {R"({"a":1,"b":2,"a":{"c":3},"\u0061":4})", R"({"a":4,"b":2})"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Again(c.text), c.written) << c.text;
}

TEST(JSON, RefusesWhatIsNotJSON) {
  const std::string_view kTexts[] = {
      "",
      " ",
      "nul",
      "nullx",
      "True",
      "NaN",
      "Infinity",
      "-Infinity",
      "[1] 2",
      "{}{}",
      "1,",
      "[1,]",
      "[,1]",
      "[1 2]",
      "[",
      "]",
      "[1}",
      "{\"a\":1,}",
      "{\"a\"}",
      "{\"a\":}",
      "{a:1}",
      "{'a':1}",
      "{1:2}",
      "{\"a\":1 \"b\":2}",
      "{",
      "// x\n1",
      "/* x */1",
      "\xEF\xBB\xBF\x31",
      // Numbers.
      "01",
      "-01",
      "+1",
      ".5",
      "1.",
      "1.e3",
      "1e",
      "1e+",
      "-",
      "--1",
      "0x10",
      "1e400",
      "1.8e308",
      "-0.9e309",
      // Strings.
      "\"",
      "\"a",
      "\"\\\"",
      "\"\\x41\"",
      "\"\\u12\"",
      "\"\\u12g4\"",
      "\"\\ud83d\\u12\"",
      "\"\t\"",
      "\"\n\"",
      "\"\x01\"",
      "'a'",
      "\"\\",
      // Ill-formed UTF-8: a lone tail, a cut sequence, overlong, a surrogate, over 0x10FFFF.
      "\"\x80\"",
      "\"\xE4\xB8\"",
      "\"\xC0\xAF\"",
      "\"\xED\xA0\x80\"",
      "\"\xF4\x90\x80\x80\"",
      // Zero bytes.
      std::string_view("1\0", 2),
      std::string_view("\"a\0b\"", 5),
      std::string_view("\0", 1),
  };
  for (const std::string_view text : kTexts) {
    base::JSONError error;
    EXPECT_FALSE(JSONReader::Read(text, &error)) << text;
    EXPECT_LE(error.offset, text.size()) << text;
    EXPECT_FALSE(error.message.empty()) << text;
  }
  base::JSONError error;
  EXPECT_FALSE(JSONReader::Read("{\"key\": tru}", &error));
  EXPECT_EQ(error.offset, 11u);
}

TEST(JSON, BoundsNesting) {
  const auto nested = [](const std::string& open, const std::string& close, int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += open;
    text += "1";
    for (int i = 0; i < depth; ++i) text += close;
    return text;
  };
  constexpr int kMax = JSONReader::kMaxDepth;
  for (const auto& [open, close] : {std::pair{"[", "]"}, std::pair{"{\"a\":", "}"}}) {
    EXPECT_EQ(Again(nested(open, close, kMax)), nested(open, close, kMax));
    EXPECT_EQ(Again(nested(open, close, kMax + 1)), "refused");
    EXPECT_EQ(Again(nested(open, close, 100'000)), "refused");
  }
  // Depth is given back: many shallow arrays are not a deep one.
  EXPECT_NE(Again(nested("[[],", "]", kMax - 1)), "refused");
}

TEST(JSON, LastOfManyRepeatedKeysCounts) {
  std::string text = "{";
  for (int i = 0; i < 1000; ++i) {
    text += "\"" + std::to_string(i % 20) + "\":" + std::to_string(i) + ",";
  }
  text.back() = '}';
  const std::optional<Value> value = JSONReader::Read(text);
  ASSERT_TRUE(value);
  ASSERT_EQ(value->GetIfDict()->size(), 20u);
  int expected = 980;
  for (const auto& [key, last] : *value->GetIfDict()) EXPECT_EQ(last, Value(expected++)) << key;
}

TEST(JSON, ManyKeysTakeNoQuadraticTime) {
  std::string text = "{";
  for (int i = 0; i < 100'000; ++i)
    text += "\"some key of an object " + std::to_string(i) + "\":1,";
  text += "\"some key of an object 7\":2}";
  const base::TimeTicks start = base::TimeTicks::Now();
  const std::optional<Value> value = JSONReader::Read(text);
  const int64_t elapsed = base::TimeTicks::Now().ToMilliseconds() - start.ToMilliseconds();
  ASSERT_TRUE(value);
  EXPECT_EQ(value->GetIfDict()->size(), 100'000u);
  EXPECT_EQ(value->GetIfDict()->begin()[7].value, Value(2));
  EXPECT_LT(elapsed, 5000);  // comparing each with each takes minutes
}

TEST(JSON, WriterRefusesNumbersThatAreNotFinite) {
  using Limits = std::numeric_limits<double>;
  for (const double number : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
    base::DictionaryValue object;
    object.Set("number", number);
    std::string text = "left over";
    EXPECT_FALSE(JSONWriter::Write(std::move(object), &text));
    EXPECT_EQ(text, "");
  }
}

TEST(JSON, WriterReplacesIllFormedText) {
  base::DictionaryValue object;
  object.Set("k\xFF", "a\xE4\xB8");
  EXPECT_EQ(Written(std::move(object)), "{\"k\uFFFD\":\"a\uFFFD\"}");
}

// Wide and narrow texts give the same string, at every place of the pieces in which long ones are
// written; a wide writer's escapes are the same again.
TEST(JSON, StringsOfWideAndNarrowTextAreTheSame) {
  std::string text = "\"\\/\x7f \u00e9\u4e2d\U0001F600";
  for (char c = 0; c < 0x20; ++c) text += c;
  const std::string escaped =
      "\\\"\\\\/\x7f \u00e9\u4e2d\U0001F600"
      R"(\u0000\u0001\u0002\u0003\u0004\u0005\u0006\u0007\b\t\n\u000b\f\r\u000e\u000f)"
      R"(\u0010\u0011\u0012\u0013\u0014\u0015\u0016\u0017\u0018\u0019\u001a\u001b\u001c\u001d)"
      R"(\u001e\u001f)";
  for (size_t before = 980; before < 1030; ++before) {
    const std::string plain(before, 'x');
    std::string narrow = "<";
    base::AppendJSONString(plain + text, &narrow);
    EXPECT_EQ(narrow, "<\"" + plain + escaped + "\"");
    std::string wide = "<";
    base::AppendJSONString(base::UTF8ToWide(plain + text), &wide);
    EXPECT_EQ(wide, narrow);
  }
  std::wstring by_unit;
  for (const wchar_t c : base::UTF8ToWide(text)) {
    wchar_t escape[base::kLongestJSONEscape];
    if (base::IsPlainInJSON(c)) {
      by_unit += c;
    } else {
      by_unit.append(escape, base::PutJSONEscape(c, escape));
    }
  }
  EXPECT_EQ(base::WideToUTF8(by_unit), escaped);
  std::string broken;
  base::AppendJSONString(std::wstring{L'a', wchar_t(0xD83D), L'b'}, &broken);
  base::AppendJSONString(std::string_view("\xE4\xB8"
                                          "c"),
                         &broken);
  EXPECT_EQ(broken, "\"a\uFFFDb\"\"\uFFFDc\"");
}

TEST(JSON, PrettyPrint) {
  const std::optional<Value> value = JSONReader::Read(R"({"a":[1],"b":{}})");
  EXPECT_EQ(Written(*value, JSONWriter::OPTIONS_PRETTY_PRINT),
            "{\n    \"a\": [\n        1\n    ],\n    \"b\": {}\n}");
  EXPECT_EQ(Written(*value, 1), R"({"a":[1],"b":{}})");
}

}  // namespace
