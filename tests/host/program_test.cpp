// bridgehost as a program: its flags, its one line, its ends.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <vector>

#include "kexbase/json_reader.h"
#include "program_files.h"
#include "temp_folder.h"
#include "test_client.h"

namespace imsdk::host {
namespace {

// A running bridgehost; killed when the test is done with it.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments) {
    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0) return;
    std::string program = (BridgeLibraryFile().parent_path() / "bridgehost").string();
    std::vector<char*> argv{program.data()};
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
      ::dup2(out[1], STDOUT_FILENO);
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    ::close(out[1]);
    out_ = out[0];
  }
  ~Program() {
    if (pid_ > 0) End(SIGKILL);
    if (out_ >= 0) ::close(out_);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // The next line of its standard output.
  std::string Line() const {
    std::string line;
    for (char c = 0; ::read(out_, &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }

  // Sends `signal`, if any, and gives the exit status: 128 and more for the signal it died of.
  int End(int signal) {
    if (signal != 0) ::kill(pid_, signal);
    int status = 0;
    ::waitpid(std::exchange(pid_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
};

// "listening on http://127.0.0.1:PORT/?token=TOKEN"
struct Address {
  explicit Address(const std::string& line) {
    const std::string head = "listening on http://127.0.0.1:";
    const std::string middle = "/?token=";
    const std::size_t token_at = line.find(middle);
    if (!line.starts_with(head) || token_at == std::string::npos) return;
    port = static_cast<std::uint16_t>(std::stoi(line.substr(head.size())));
    token = line.substr(token_at + middle.size());
  }
  std::uint16_t port = 0;
  std::string token;
};

TEST(ProgramTest, AKilledHostComesBackForOpenPagesAndACleanEndForgetsThem) {
  const TempFolder folder;
  const std::string data = (folder.path() / "data").string();
  Program first({"--port", "0", "--data", data, "--demo"});
  const Address before(first.Line());
  ASSERT_NE(before.port, 0);
  EXPECT_EQ(first.End(SIGKILL), 128 + SIGKILL);

  Program second({"--port", std::to_string(before.port), "--data", data});
  const Address after(second.Line());
  EXPECT_EQ(after.port, before.port);
  EXPECT_NE(after.token, before.token);
  for (const std::string& token : {before.token, after.token}) {
    TestPage page(after.port, "/channel?account=harbor&token=" + token);
    EXPECT_EQ(page.status(), 101) << page.refusal();
  }

  TestPage page(after.port, "/channel?account=harbor&token=" + after.token);
  ASSERT_TRUE(page.Receive());
  const auto start = std::chrono::steady_clock::now();
  std::thread reader([&page] { EXPECT_EQ(page.WaitClosed(), 1001); });
  EXPECT_EQ(second.End(SIGINT), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  reader.join();

  Program third({"--port", "0", "--data", data, "--token", "my-own"});
  const Address last(third.Line());
  EXPECT_EQ(last.token, "my-own");
  for (const std::string& token : {before.token, after.token}) {
    EXPECT_EQ(Request(last.port, "/health?token=" + token).status, 401);
  }
  EXPECT_EQ(Request(last.port, "/health?token=my-own").status, 200);
  EXPECT_EQ(third.End(SIGTERM), 0);
}

TEST(ProgramTest, DescribesTheProtocolAndOpensNothing) {
  Program program({"--describe"});
  std::string document;
  for (std::string line = program.Line(); !line.empty(); line = program.Line()) document += line;
  EXPECT_EQ(program.End(0), 0);
  const auto described = base::JSONReader::Read(document);
  ASSERT_TRUE(described && described->is_dict());
  for (const char* key : {"openrpc", "methods", "x-notifications", "x-page-events", "x-frames"}) {
    EXPECT_TRUE(described->GetIfDict()->Find(key)) << key;
  }
  EXPECT_EQ(Program({"--describe", "--demo"}).End(0), 2);
}

TEST(ProgramTest, WhatIsKeptIsForItsOwnerAlone) {
  namespace fs = std::filesystem;
  const TempFolder folder;
  const auto mode = [](const fs::path& path) {
    return fs::symlink_status(path).permissions() & fs::perms::mask;
  };
  const fs::path mine = folder.Write("shared/notes.txt", "").parent_path();  // not the host's
  fs::create_directories(folder.path() / "empty");
  fs::permissions(mine, fs::perms(0755));
  fs::permissions(folder.path() / "empty", fs::perms(0755));
  for (const char* name : {"made", "empty", "shared"}) {
    const fs::path data = folder.path() / name;
    Program host({"--port", "0", "--demo", "--data", data.string(), "--trace",
                  (folder.path() / "trace.jsonl").string()});
    const Address address(host.Line());
    TestPage page(address.port, "/channel?account=harbor&token=" + address.token);
    ASSERT_TRUE(page.Receive());
    EXPECT_EQ(mode(data), fs::perms(data == mine ? 0755 : 0700)) << data;
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(data)) {
      if (entry.path() == mine / "notes.txt") continue;
      ++files;
      EXPECT_EQ(mode(entry.path()), fs::perms(entry.is_directory() ? 0700 : 0600)) << entry.path();
    }
    EXPECT_GT(files, 5);
  }
  EXPECT_EQ(mode(folder.path() / "trace.jsonl"), fs::perms(0600));
}

TEST(ProgramTest, SaysOfADataFolderWhatIsWhole) {
  const TempFolder folder;
  const std::string data = (folder.path() / "data").string();
  EXPECT_EQ(Program({"--check", "--data", data}).End(0), 1) << "there is none";
  Program host({"--port", "0", "--data", data, "--demo"});
  ASSERT_NE(Address(host.Line()).port, 0);
  EXPECT_EQ(Program({"--check", "--data", data}).End(0), 1) << "in use";
  EXPECT_EQ(host.End(SIGTERM), 0);
  Program whole({"--check", "--data", data});
  EXPECT_EQ(whole.Line(), "server/server.db: whole");
  EXPECT_EQ(whole.End(0), 0);
  std::filesystem::resize_file(std::filesystem::path(data) / "server" / "server.db", 20'000);
  Program damaged({"--check", "--data", data});
  EXPECT_TRUE(damaged.Line().starts_with("server/server.db: not whole: "));
  EXPECT_EQ(damaged.End(0), 1);
}

// What is left of a damaged folder is its people's; a page hears why its account cannot be opened.
TEST(ProgramTest, ADemoThatLostItsServerIsNotMadeAnew) {
  namespace fs = std::filesystem;
  const TempFolder folder;
  const fs::path data = folder.path() / "data";
  const std::vector<std::string> flags{"--port", "0", "--data", data.string(), "--demo"};
  const auto kept = [&] {
    std::map<std::string, std::string> files;
    for (const char* part : {"accounts", "files"}) {
      for (const auto& entry : fs::recursive_directory_iterator(data / part)) {
        const std::string name = fs::relative(entry.path(), folder.path()).string();
        if (entry.is_regular_file()) files[name] = folder.Read(name);
      }
    }
    return files;
  };
  Program first(flags);
  ASSERT_NE(Address(first.Line()).port, 0);
  ASSERT_EQ(first.End(SIGTERM), 0);
  const auto before = kept();
  ASSERT_GT(before.size(), 2u);
  fs::remove(data / "server" / "server.db");

  Program second(flags);
  const Address address(second.Line());
  const TestPage page(address.port, "/channel?account=harbor&token=" + address.token);
  EXPECT_EQ(page.status(), 503);
  EXPECT_NE(page.refusal().find("damaged or missing"), std::string::npos) << page.refusal();
  EXPECT_EQ(second.End(SIGTERM), 0);
  EXPECT_TRUE(kept() == before);
}

TEST(ProgramTest, BadStartsEndWithAStatus) {
  const TempFolder folder;
  const std::string data = (folder.path() / "data").string();
  EXPECT_EQ(Program({"--no-such-flag"}).End(0), 2);
  EXPECT_EQ(Program({"--data", folder.Write("plain", "").string()}).End(0), 1);
  EXPECT_EQ(Program({"--data", data, "--pages", data + "/none"}).End(0), 1);
  Program first({"--port", "0", "--data", data});
  const std::string port = std::to_string(Address(first.Line()).port);
  EXPECT_EQ(Program({"--port", port, "--data", data + "2"}).End(0), 1);
  EXPECT_EQ(Program({"--port", "0", "--data", data}).End(0), 1);
}

}  // namespace
}  // namespace imsdk::host
