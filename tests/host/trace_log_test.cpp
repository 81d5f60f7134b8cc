#include "log/trace_log.h"

#include <gtest/gtest.h>

#include <thread>

#include "kexbase/json_reader.h"
#include "kexbase/time.h"
#include "log/host_trace.h"
#include "temp_folder.h"

namespace imsdk::host {
namespace {

using base::DictionaryValue;

constexpr HostTraceSite kSite{"Page::OnFrame", "host\\page"};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST(TraceLogTest, ALineOfTheTraceFileHasTheAgreedForm) {
  const TempFolder folder;
  std::string error;
  auto log = TraceLog::Open({folder.path() / "logs", folder.path() / "t.jsonl"}, &error);
  ASSERT_TRUE(log) << error;
  const std::int64_t before = base::Time::Now().ToMilliseconds();
  WriteTrace(*log->Logger(), ns_log::kWarning, kSite, L"frame \"refused\"!!!",
             "_brief_,browserId,reason", {"B-1", "no\nJSON \xF0\x9F\x98\x80"}, 42);
  // A warning is on the disk at once.
  const std::string line = folder.Read("t.jsonl");
  const std::string head = "{\"time\":";
  ASSERT_TRUE(line.starts_with(head)) << line;
  const std::size_t comma = line.find(',');
  const std::int64_t time = std::stoll(line.substr(head.size(), comma - head.size()));
  EXPECT_GE(time, before);
  EXPECT_LE(time, base::Time::Now().ToMilliseconds());
  EXPECT_EQ(line.substr(comma),
            R"(,"level":2,"text":"frame \"refused\"!!!","function":"Page::OnFrame",)"
            R"("source":"host\\page","line":42,"brief":"_brief_,browserId,reason",)"
            R"("items":{"browserId":"B-1","reason":"no\nJSON )"
            "\xF0\x9F\x98\x80"
            R"("},"record":"2|2|31{}{} browserId=B-1,reason=no\nJSON )"
            "\xF0\x9F\x98\x80\"}\n");

  const std::string readable = folder.Read("logs/imsdk.log");
  EXPECT_EQ(Lines(readable).size(), 1u) << readable;
  EXPECT_NE(readable.find(" W Page::OnFrame: frame \"refused\"!!! browserId=\"B-1\""),
            std::string::npos)
      << readable;
}

TEST(TraceLogTest, RoutineLinesReachTheDiskSoonAndAllThreadsLinesStayWhole) {
  const TempFolder folder;
  std::string error;
  auto log = TraceLog::Open({folder.path() / "logs", folder.path() / "t.jsonl"}, &error);
  ASSERT_TRUE(log) << error;
  constexpr int kThreads = 4;
  constexpr int kEach = 500;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&log] {
      const auto logger = log->Logger();
      for (int i = 0; i < kEach; ++i) {
        WriteTrace(*logger, ns_log::kRoutine, kSite, L"line", "_brief_,i", {std::to_string(i)});
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const std::vector<std::string> lines = Lines(folder.Read("t.jsonl"));
  EXPECT_EQ(lines.size(), std::size_t{kThreads * kEach});
  for (const std::string& line : lines) {
    ASSERT_TRUE(base::JSONReader::Read(line)) << line;
  }

  // A logger that outlives the log writes nothing more, and what was open is complete.
  const auto logger = log->Logger();
  log.reset();
  WriteTrace(*logger, ns_log::kError, kSite, L"too late");
  EXPECT_EQ(folder.Read("t.jsonl").find("too late"), std::string::npos);
}

TEST(TraceLogTest, TheLogIsSetAsideWhenItIsFull) {
  const TempFolder folder;
  TraceLogOptions options{folder.path() / "logs", {}};
  options.part_size = 4000;
  options.parts = 2;
  std::string error;
  {
    const auto log = TraceLog::Open(options, &error);
    ASSERT_TRUE(log) << error;
    const std::string value(5000, 'v');  // cut in the log for people
    for (int i = 0; i < 20; ++i) {
      WriteTrace(*log->Logger(), ns_log::kRoutine, kSite, L"long", "_brief_,v", {value});
    }
  }
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path() / "logs")) {
    ++files;
    EXPECT_LE(entry.file_size(), 4000u + 2200u) << entry.path();
  }
  EXPECT_EQ(files, 3);
}

TEST(TraceLogTest, OneLineHasABoundAndStaysOneLineOfJson) {
  const TempFolder folder;
  folder.Write("t.jsonl", "");
  std::filesystem::permissions(folder.path() / "t.jsonl", std::filesystem::perms(0644));
  std::string error;
  const auto log = TraceLog::Open({folder.path() / "logs", folder.path() / "t.jsonl"}, &error);
  ASSERT_TRUE(log) << error;
  const std::string large(3'000'000, '\x01');  // six characters each as JSON
  WriteTrace(*log->Logger(), ns_log::kWarning, kSite, std::wstring(3'000'000, L'x'),
             "_brief_,a,b,c", {"whole", large, large});
  const std::string line = folder.Read("t.jsonl");
  EXPECT_EQ(Lines(line).size(), 1u);
  EXPECT_LT(line.size(), 13 * kLongestTraceText + 1000);
  const auto read = base::JSONReader::Read(line);
  ASSERT_TRUE(read && read->is_dict());
  const auto& items = *read->GetIfDict()->Find("items")->GetIfDict();
  EXPECT_EQ(*items.Find("a")->GetIfString(), "whole");
  EXPECT_TRUE(items.Find("b")->GetIfString()->ends_with("\x01..."));
  EXPECT_EQ(*items.Find("c")->GetIfString(), "...");
  EXPECT_LT(folder.Read("logs/imsdk.log").size(), 40'000u);

  // Logs are for their owner, whoever made the file.
  const auto mode = [&](const char* name) {
    return std::filesystem::status(folder.path() / name).permissions();
  };
  EXPECT_EQ(mode("t.jsonl"), std::filesystem::perms(0600));
  EXPECT_EQ(mode("logs/imsdk.log"), std::filesystem::perms(0600));
  EXPECT_EQ(mode("logs"), std::filesystem::perms(0700));
}

TEST(TraceLogTest, AFileThatCannotBeOpenedIsAClearError) {
  const TempFolder folder;
  const auto file = folder.Write("plain", "");
  std::string error;
  EXPECT_FALSE(TraceLog::Open({folder.path() / "logs", file / "t.jsonl"}, &error));
  EXPECT_NE(error.find("the log cannot be opened"), std::string::npos) << error;
}

}  // namespace
}  // namespace imsdk::host
