#include "options.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace imsdk::host {
namespace {

TEST(OptionsTest, ReadsEveryFlag) {
  HostOptions options;
  std::string error;
  ASSERT_TRUE(ReadOptions({"--port", "0", "--data", "d", "--token", "t-1", "--trace", "f"},
                          &options, &error))
      << error;
  EXPECT_EQ(options.port, 0);
  EXPECT_EQ(options.data, "d");
  EXPECT_EQ(options.token, "t-1");
  EXPECT_EQ(options.trace_file, "f");
  EXPECT_FALSE(options.demo);
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
      {"--port"},         {"--port", "65536"}, {"--port", "-1"}, {"--port", "80x"},  {"--data", ""},
      {"--token", "a b"}, {"--token", "a&b"},  {"--verbose"},    {"--describe-all"}, {"stray"},
  };
  for (const auto& arguments : cases) {
    HostOptions options;
    std::string error;
    EXPECT_FALSE(ReadOptions(arguments, &options, &error)) << arguments[0];
    EXPECT_FALSE(error.empty()) << arguments[0];
  }
}

}  // namespace
}  // namespace imsdk::host
