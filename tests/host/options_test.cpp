#include "options.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "server/origin.h"

namespace imsdk::host {
namespace {

TEST(OptionsTest, ReadsEveryFlag) {
  HostOptions options;
  std::string error;
  ASSERT_TRUE(ReadOptions({"--port", "0", "--data", "d", "--token", "t-1", "--trace", "f",
                           "--pages", "p", "--origin", "HTTP://LocalHost:5173/"},
                          &options, &error))
      << error;
  EXPECT_EQ(options.port, 0);
  EXPECT_EQ(options.data, "d");
  EXPECT_EQ(options.token, "t-1");
  EXPECT_EQ(options.trace_file, "f");
  EXPECT_EQ(options.pages, "p");
  EXPECT_EQ(options.origin, "http://localhost:5173");
  EXPECT_FALSE(options.demo);
  EXPECT_FALSE(options.check);
  ASSERT_TRUE(ReadOptions({"--check", "--data", "d"}, &options, &error));
  EXPECT_TRUE(options.check);
}

TEST(OptionsTest, WithoutAFolderTheDemoSetLiesInTheUsersDataHome) {
  ::setenv("XDG_DATA_HOME", "/somewhere", 1);
  HostOptions options;
  std::string error;
  ASSERT_TRUE(ReadOptions({}, &options, &error)) << error;
  EXPECT_EQ(options.port, 8787);
  EXPECT_EQ(options.data, "/somewhere/imsdkbridge");
  EXPECT_TRUE(options.demo);
}

TEST(OptionsTest, RefusesWhatMakesNoSense) {
  const std::vector<std::vector<std::string>> cases = {
      {"--port"},         {"--port", "65536"}, {"--port", "-1"},   {"--port", "80x"},
      {"--data", ""},     {"--token", "a b"},  {"--token", "a&b"}, {"--verbose"},
      {"--describe-all"}, {"stray"},           {"--pages"},        {"--origin", "null"},
  };
  for (const auto& arguments : cases) {
    HostOptions options;
    std::string error;
    EXPECT_FALSE(ReadOptions(arguments, &options, &error)) << arguments[0];
    EXPECT_FALSE(error.empty()) << arguments[0];
  }
}

TEST(OptionsTest, OriginsAreWrittenAsBrowsersWriteThem) {
  const struct {
    const char* url;
    const char* origin;  // empty: none
  } cases[] = {{"http://localhost:5173", "http://localhost:5173"},
               {"https://Chat.Example:443/", "https://chat.example"},
               {"http://chat.example:80", "http://chat.example"},
               {"http://chat.example:443", "http://chat.example:443"},
               {"http://[::1]:5173", "http://[::1]:5173"},
               {"http://[::1]", "http://[::1]"},
               {"localhost:5173", ""},
               {"ws://localhost:5173", ""},
               {"http://", ""},
               {"http://localhost:5173/app", ""},
               {"http://localhost:5173?x", ""},
               {"http://user@localhost", ""},
               {"http://localhost:", ""},
               {"http://localhost:65536", ""},
               {"http://localhost:0", ""},
               {"http://[::1", ""},
               {"http://a]b", ""},
               {"http://a b", ""},
               {"*", ""}};
  for (const auto& c : cases) EXPECT_EQ(OriginOf(c.url).value_or(""), c.origin) << c.url;
}

}  // namespace
}  // namespace imsdk::host
