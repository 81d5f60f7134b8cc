#include "served_files.h"

#include <gtest/gtest.h>

#include "temp_folder.h"

namespace imsdk::host {
namespace {

TEST(ServedFilesTest, OnlyFilesUnderTheRootAreFound) {
  const TempFolder folder;
  const auto& data = folder.path();
  folder.Write("files/a.png", "a");
  folder.Write("files/deep/b c.txt", "b");
  folder.Write("server.db", "secret");
  folder.Write("files-not/c.png", "c");
  std::filesystem::create_symlink(data / "server.db", data / "files/link.png");
  std::filesystem::create_symlink(data / "nowhere", data / "files/dangling.png");
  std::filesystem::create_symlink("a.png", data / "files/inside.png");
  std::filesystem::create_directory_symlink(data, data / "files/up");

  struct Case {
    std::string asked;
    int status;
  };
  const Case cases[] = {
      {"files/a.png", 200},
      {"files/deep/b c.txt", 200},
      {(data / "files/a.png").string(), 200},
      {"files/inside.png", 200},
      {"files/./deep//b c.txt", 200},
      {"server.db", 403},
      {"files/../server.db", 403},
      {"files/deep/../../server.db", 403},
      {"files/deep/../a.png", 403},
      {"../" + data.filename().string() + "/files/a.png", 403},
      {(data / "server.db").string(), 403},
      {"/etc/passwd", 403},
      {"/nowhere/at/all", 403},
      {"files-not/c.png", 403},
      {"files/link.png", 403},
      {"files/up/server.db", 403},
      {std::string("files/a.png\0.png", 16), 403},
      {std::string("files/a.png\0", 12), 403},
      {"files/missing.png", 404},
      {"files/dangling.png", 404},
      {"files", 404},
      {"files/deep", 404},
      {"", 403},
      {std::string(100000, 'a'), 403},
  };
  for (const Case& c : cases) {
    const FoundFile found = FindInside(data / "files", data, c.asked);
    EXPECT_EQ(found.status, c.status) << c.asked.substr(0, 80) << ": " << found.reason;
    const bool named = c.status == 200 || c.asked == "files/missing.png";
    EXPECT_EQ(!found.path.empty(), named) << c.asked.substr(0, 80);
    EXPECT_EQ(found.reason.empty(), c.status == 200) << c.asked.substr(0, 80);
  }
}

TEST(ServedFilesTest, ReadsQueriesAndEscapes) {
  EXPECT_EQ(QueryValue("a=1&b=x%2Fy+z%C3%A9", "b"), "x/y z\xC3\xA9");
  EXPECT_EQ(QueryValue("a=1", "b"), std::nullopt);
  EXPECT_EQ(QueryValue("ab=1&b", "b"), "");
  EXPECT_EQ(QueryValue("b=%4", "b"), std::nullopt);
  EXPECT_EQ(QueryValue("b=%4", "a"), std::nullopt);
  EXPECT_EQ(QueryValue("b=%zz", "b"), std::nullopt);
  EXPECT_EQ(QueryValue("b=%41", "b"), "A");
  EXPECT_EQ(PercentDecode("/a+b%00", false), std::string("/a+b\0", 5));
}

TEST(ServedFilesTest, ReadsRanges) {
  struct Case {
    const char* header;
    std::uintmax_t size;
    RangeKind kind;
    ByteRange range;
  };
  const Case cases[] = {
      {"bytes=0-0", 10, RangeKind::kPart, {0, 0}},
      {"bytes=3-", 10, RangeKind::kPart, {3, 9}},
      {"bytes=3-99", 10, RangeKind::kPart, {3, 9}},
      {"bytes=-4", 10, RangeKind::kPart, {6, 9}},
      {"bytes=-40", 10, RangeKind::kPart, {0, 9}},
      {"bytes=10-", 10, RangeKind::kBeyond, {}},
      {"bytes=-0", 10, RangeKind::kBeyond, {}},
      {"bytes=0-", 0, RangeKind::kBeyond, {}},
      {"bytes=-1", 0, RangeKind::kBeyond, {}},
      {"", 10, RangeKind::kNone, {}},
      {"bytes=", 10, RangeKind::kNone, {}},
      {"bytes=-", 10, RangeKind::kNone, {}},
      {"bytes=5-3", 10, RangeKind::kNone, {}},
      {"bytes=0-1,3-4", 10, RangeKind::kNone, {}},
      {"bytes=99999999999999999999-", 10, RangeKind::kNone, {}},
      {"items=0-1", 10, RangeKind::kNone, {}},
  };
  for (const Case& c : cases) {
    ByteRange range;
    EXPECT_EQ(ReadRange(c.header, c.size, &range), c.kind) << c.header;
    EXPECT_EQ(range.first, c.range.first) << c.header;
    EXPECT_EQ(range.last, c.range.last) << c.header;
  }
}

}  // namespace
}  // namespace imsdk::host
