#include "kexbase/strings.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace {

constexpr bool kUtf16 = sizeof(wchar_t) == 2;

std::wstring Wide(char32_t code) {
  if (!kUtf16 || code < 0x10000) return {static_cast<wchar_t>(code)};
  return {static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10)),
          static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF))};
}

TEST(Strings, EveryCodePointGoesToWideAndBack) {
  std::wstring all;
  for (char32_t code = 0; code <= 0x10FFFF; ++code) {
    if (code < 0xD800 || code > 0xDFFF) all += Wide(code);
  }
  const std::string utf8 = base::WideToUTF8(all);
  EXPECT_EQ(utf8.size(), 0x80u + 2 * 0x780 + 3 * (0xF800 - 0x800) + 4 * 0x100000);
  EXPECT_TRUE(base::IsValidUTF8(utf8));
  EXPECT_TRUE(base::UTF8ToWide(utf8) == all);
  EXPECT_EQ(base::Utf16Length(all), 0xF800u + 2 * 0x100000);
}

TEST(Strings, BlocksAndPiecesMeetAnywhere) {
  for (size_t before = 0; before < 2100; before += before < 40 || before > 1000 ? 1 : 37) {
    for (const size_t after : {0u, 1u, 15u, 16u, 17u, 40u}) {
      const std::string utf8 =
          std::string(before, 'a') + "\u00e9\u4e2d\U0001F600\xFF" + std::string(after, 'b');
      const std::wstring wide = std::wstring(before, L'a') + Wide(0xE9) + Wide(0x4E2D) +
                                Wide(0x1F600) + Wide(0xFFFD) + std::wstring(after, L'b');
      ASSERT_TRUE(base::UTF8ToWide(utf8) == wide) << before << " " << after;
      std::string back = "kept";
      base::AppendUTF8(wide, &back);
      ASSERT_EQ(back, "kept" + std::string(before, 'a') + "\u00e9\u4e2d\U0001F600\uFFFD" +
                          std::string(after, 'b'));
      ASSERT_FALSE(base::IsValidUTF8(utf8));
    }
  }
}

TEST(Strings, IllFormedUTF8BecomesOneReplacementForEachMaximalSubpart) {
  const struct {
    const char* utf8;
    const wchar_t* wide;
  } kCases[] = {
      {"a\x80z", L"a\xFFFDz"},
      {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
       L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41"},
      {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",
       L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41"},
      {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42",
       L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41\xFFFD\xFFFD\x42"},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", L"\xFFFD\xFFFD\xFFFD\xFFFD\x41"},
      {"\xF0\x90\x80", L"\xFFFD"},
      {"\xEF\xBF\xBD\xEF\xBF\xBE", L"\xFFFD\xFFFE"},
  };
  for (const auto& c : kCases) EXPECT_TRUE(base::SysUTF8ToWide(c.utf8) == c.wide) << c.utf8;
}

TEST(Strings, IllFormedWideTextBecomesReplacements) {
  const std::wstring high(1, static_cast<wchar_t>(0xD83D));
  const std::wstring low(1, static_cast<wchar_t>(0xDE00));
  EXPECT_EQ(base::WideToUTF8(L"a" + high), "a\uFFFD");
  EXPECT_EQ(base::WideToUTF8(low + L"a" + high + L"b"), "\uFFFDa\uFFFDb");
  EXPECT_EQ(base::WideToUTF8(high + high), "\uFFFD\uFFFD");
  EXPECT_EQ(base::SysWideToUTF8(high + low), kUtf16 ? "\U0001F600" : "\uFFFD\uFFFD");
  if constexpr (!kUtf16) {
    for (const uint32_t value : {0x110000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
      const std::wstring wide(1, static_cast<wchar_t>(value));
      EXPECT_EQ(base::WideToUTF8(wide), "\uFFFD");
      EXPECT_EQ(base::Utf16Length(wide), 1u);
    }
  }
}

TEST(Strings, GBK) {
  EXPECT_EQ(base::WideToGBK(L"a\x4E2D\x6587\x20AC\xFF01"), "a\xD6\xD0\xCE\xC4\x80\xA3\xA1");
  EXPECT_EQ(base::WideToGBK(L"\xE000|" + Wide(0x1F600) + L"|\x0E01|" + Wide(0xD800)), "?|?|?|?");
  EXPECT_TRUE(base::GBKToWide("a\xD6\xD0\x80") == L"a\x4E2D\x20AC");
  // Foreign bytes, a cut pair, a trail byte that cannot be one, a pair without a character.
  EXPECT_TRUE(base::GBKToWide("\xFF\xFF") == L"\xFFFD\xFFFD");
  EXPECT_TRUE(base::GBKToWide("\xD6") == L"\xFFFD");
  EXPECT_TRUE(base::GBKToWide("\xD6\x31z") == L"\xFFFD\x31z");
  EXPECT_TRUE(base::GBKToWide("\xFE\xFE\xA8\xBFz") == L"\xFFFD\xFFFDz");
}

// The whole table against a fingerprint (FNV-1a over the characters in the order of their bytes)
// that was computed with another implementation of code page 936: every platform has the same one.
TEST(Strings, GBKTableIsTheSameEverywhere) {
  uint64_t fingerprint = 0xcbf29ce484222325u;
  int characters = 0;
  for (int lead = 0x81; lead <= 0xFE; ++lead) {
    for (int trail = 0x40; trail <= 0xFE; ++trail) {
      const std::string pair = {static_cast<char>(lead), static_cast<char>(trail)};
      const std::wstring wide = base::GBKToWide(pair);
      const bool known = wide.size() == 1 && wide[0] != 0xFFFD;
      fingerprint =
          (fingerprint ^ (known ? static_cast<uint64_t>(wide[0]) : 0xFFFDu)) * 0x100000001b3u;
      if (!known) continue;
      ++characters;
      ASSERT_EQ(base::WideToGBK(wide), pair);
    }
  }
  EXPECT_EQ(characters, 21791);
  EXPECT_EQ(fingerprint, 0x2523e6a335dc091eu);
}

// `Parse` is called with narrow and with wide text.
template <class Int, class Parse>
void ExpectNumber(const std::string& text, bool is_number, Int expected, Parse parse) {
  Int narrow = 77;
  Int wide = 77;
  EXPECT_EQ(parse(std::string_view(text), &narrow), is_number) << text;
  EXPECT_EQ(parse(std::wstring_view(base::UTF8ToWide(text)), &wide), is_number) << text;
  EXPECT_EQ(narrow, is_number ? expected : 0) << text;
  EXPECT_EQ(wide, narrow) << text;
}

TEST(Strings, NumbersFromText) {
  const auto to_int = [](auto text, int* out) { return base::StringToInt(text, out); };
  const auto to_uint = [](auto text, unsigned* out) { return base::StringToUint(text, out); };
  const auto to_int64 = [](auto text, int64_t* out) { return base::StringToInt64(text, out); };
  const auto to_uint64 = [](auto text, uint64_t* out) { return base::StringToUint64(text, out); };
  for (const char* text : {"", "-", "+1", " 1", "1 ", "1\n", "1a", "0x1", "1.0", "--1", "\u0661"}) {
    ExpectNumber(text, false, 0, to_int);
    ExpectNumber(text, false, 0u, to_uint);
    ExpectNumber(text, false, int64_t{0}, to_int64);
    ExpectNumber(text, false, uint64_t{0}, to_uint64);
  }
  ExpectNumber("2147483647", true, INT_MAX, to_int);
  ExpectNumber("-2147483648", true, INT_MIN, to_int);
  ExpectNumber("2147483648", false, 0, to_int);
  ExpectNumber("-2147483649", false, 0, to_int);
  ExpectNumber("000000000000000000000000000012", true, 12, to_int);
  ExpectNumber("4294967295", true, UINT_MAX, to_uint);
  ExpectNumber("4294967296", false, 0u, to_uint);
  ExpectNumber("4294967300", false, 0u, to_uint);
  ExpectNumber("-1", false, 0u, to_uint);
  ExpectNumber("9223372036854775807", true, INT64_MAX, to_int64);
  ExpectNumber("-9223372036854775808", true, INT64_MIN, to_int64);
  ExpectNumber("9223372036854775808", false, int64_t{0}, to_int64);
  ExpectNumber("18446744073709551615", true, UINT64_MAX, to_uint64);
  ExpectNumber("18446744073709551616", false, uint64_t{0}, to_uint64);
  ExpectNumber("18446744073709551620", false, uint64_t{0}, to_uint64);
}

TEST(Strings, NumbersToText) {
  EXPECT_EQ(base::NumberToString(INT64_MIN), "-9223372036854775808");
  EXPECT_EQ(base::NumberToString(UINT64_MAX), "18446744073709551615");
  EXPECT_EQ(base::NumberToString(-1), "-1");
  EXPECT_EQ(base::NumberToString(UINT32_MAX), "4294967295");
  EXPECT_EQ(base::NumberToString(1UL), "1");
  EXPECT_TRUE(base::NumberToWide(INT64_MIN) == L"-9223372036854775808");
  EXPECT_TRUE(base::NumberToWide(UINT64_MAX) == L"18446744073709551615");
}

TEST(Strings, Printf) {
  EXPECT_EQ(base::StringPrintf("%d|%lld|%s", -5, 1234567890123LL, "x"), "-5|1234567890123|x");
  for (const size_t size : {0u, 255u, 256u, 100'000u}) {
    const std::string text(size, 'x');
    EXPECT_EQ(base::StringPrintf("%s", text.c_str()), text);
  }
}

}  // namespace
