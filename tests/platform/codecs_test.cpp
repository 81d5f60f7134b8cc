#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "kexbase/base64.h"
#include "kexbase/guid.h"
#include "kexbase/md5.h"
#include "kexbase/time.h"
#include "kexnet/escape.h"

namespace {

TEST(Codecs, MD5) {
  EXPECT_EQ(base::MD5String(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(base::MD5String("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(base::MD5String(std::string("a\0b", 3)), "70350f6027bce3713f6b76473084309b");
}

TEST(Codecs, Base64) {
  const struct {
    std::string data;
    const char* text;
  } kCases[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foobar", "Zm9vYmFy"},
      {std::string("\0\xFF\xFE\0", 4), "AP/+AA=="},
      {"fooba", "Zm9vYmE="},
      {"\xFB\xEF\xBE", "++++"},
  };
  for (const auto& c : kCases) {
    std::string data = "left over";
    EXPECT_TRUE(base::Base64Decode(c.text, &data)) << c.text;
    EXPECT_EQ(data, c.data);
  }
  for (const char* text : {"Zg", "Zg=", "Zg==Zg==", "Z===", "====", "=", "Zm9v=", "Zm9 v", "Zm9v\n",
                           "Zm9v\n\n\n\n", "Zm-_", "Zh==", "Zm9=", "Zg=a", "Zm9vZ", "Zm\xC3\xA9"}) {
    std::string data = "left over";
    EXPECT_FALSE(base::Base64Decode(text, &data)) << text;
    EXPECT_EQ(data, "") << text;
  }
}

TEST(Codecs, GUIDs) {
  const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    const std::string guid = base::GenerateGUID();
    EXPECT_TRUE(std::regex_match(guid, form)) << guid;
    EXPECT_TRUE(seen.insert(guid).second) << guid;
  }
}

TEST(Codecs, EscapeQueryParamValue) {
  EXPECT_EQ(net::EscapeQueryParamValue("AZaz09-_.!~*'()", false), "AZaz09-_.!~*'()");
  EXPECT_EQ(net::EscapeQueryParamValue("a b+c", true), "a+b%2Bc");
  EXPECT_EQ(net::EscapeQueryParamValue("a b+c", false), "a%20b%2Bc");
  EXPECT_EQ(net::EscapeQueryParamValue("C:\\x/\u4e2d?&=#%\"<>", false),
            "C%3A%5Cx%2F%E4%B8%AD%3F%26%3D%23%25%22%3C%3E");
  EXPECT_EQ(net::EscapeQueryParamValue(std::string("\0\x7F\xFF", 3), true), "%00%7F%FF");
}

TEST(Codecs, Clocks) {
  const base::TimeTicks before = base::TimeTicks::Now();
  const base::TimeTicks after = base::TimeTicks::Now();
  EXPECT_LE(before, after);
  // Between 2020 and 2100: the right epoch in the right unit.
  EXPECT_GT(base::Time::Now().ToMilliseconds(), 1'577'836'800'000);
  EXPECT_LT(base::Time::Now().ToMilliseconds(), 4'102'444'800'000);
}

}  // namespace
