#include "client/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

extern char** environ;

namespace imsdk::host {
namespace {

using Clock = std::chrono::steady_clock;

// How long nobody looks whether the program is to be stopped.
constexpr int kLookMilliseconds = 50;

class File {
 public:
  File() = default;
  explicit File(int fd) : fd_(fd) {}
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  void Reset(int fd) {
    Close();
    fd_ = fd;
  }
  void Close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }
  int get() const { return fd_; }
  bool open() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

// One end of a pipe for the program, the other one, which never waits, for the host. Pipes and not
// sockets: programs may open "/dev/stdin" anew.
bool MakePipe(File* read, File* write, const File* here) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return false;
  read->Reset(ends[0]);
  write->Reset(ends[1]);
  return ::fcntl(here->get(), F_SETFL, O_NONBLOCK) == 0;
}

// As long as this lives, writing to a program that has gone is an error and no signal.
class NoBrokenPipeSignal {
 public:
  NoBrokenPipeSignal() {
    ::sigemptyset(&signal_);
    ::sigaddset(&signal_, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &signal_, &before_);
  }
  ~NoBrokenPipeSignal() {
    const timespec now{};
    ::sigtimedwait(&signal_, nullptr, &now);  // takes the one that waits, if any
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
  NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

  const sigset_t& signal() const { return signal_; }
  const sigset_t& before() const { return before_; }

 private:
  sigset_t signal_;
  sigset_t before_;
};

// The environment with a locale in which texts are UTF-8.
std::vector<std::string> Utf8Environment() {
  std::vector<std::string> variables{"LC_ALL=C.UTF-8"};
  for (char** entry = environ; *entry; ++entry) {
    if (::strncmp(*entry, "LC_ALL=", 7) != 0) variables.emplace_back(*entry);
  }
  return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Starts the program in a process group of its own, with none of the host's sockets and files and
// with the usual answer to a broken pipe. Returns 0 or the system's error.
int Spawn(std::vector<std::string> command, const File& in, const File& out,
          const NoBrokenPipeSignal& quiet, pid_t* child) {
  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&files);
  ::posix_spawnattr_init(&attributes);
  ::posix_spawn_file_actions_adddup2(&files, in.get(), STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&files, out.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
  ::posix_spawnattr_setsigdefault(&attributes, &quiet.signal());
  ::posix_spawnattr_setsigmask(&attributes, &quiet.before());
  ::posix_spawnattr_setflags(
      &attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  std::vector<std::string> environment = Utf8Environment();
  const int failure = ::posix_spawnp(child, command.front().c_str(), &files, &attributes,
                                     Pointers(command).data(), Pointers(environment).data());
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&files);
  return failure;
}

class Run {
 public:
  Run(const ProgramLimits& limits, const std::atomic<bool>& stop)
      : limits_(limits), stop_(stop), end_(Clock::now() + limits.time) {}

  ProgramOutcome On(const std::vector<std::string>& command, const std::string& input) {
    File child_in, child_out;
    if (!MakePipe(&child_in, &in_, &in_) || !MakePipe(&out_, &child_out, &out_)) {
      return Failed(::strerror(errno));
    }
    if (const int failure = Spawn(command, child_in, child_out, quiet_, &child_); failure != 0) {
      return Failed(command.front() + ": " + ::strerror(failure));
    }
    child_in.Close();
    child_out.Close();
    input_ = input;
    const std::string broken = Talk();
    return End(broken);
  }

 private:
  static ProgramOutcome Failed(std::string reason) { return {false, {}, std::move(reason)}; }

  // Why the program must not go on, or nothing.
  std::string Broken() const {
    if (stop_) return "the host stops";
    if (Clock::now() >= end_) return "the program took too long";
    if (output_.size() > limits_.output) return "the program wrote too much";
    return {};
  }

  // Feeds and reads until the program closes its output.
  std::string Talk() {
    while (true) {
      if (std::string broken = Broken(); !broken.empty()) return broken;
      const bool feeding = in_.open();
      std::array<pollfd, 2> files{{{out_.get(), POLLIN, 0}, {in_.get(), POLLOUT, 0}}};
      if (::poll(files.data(), feeding ? 2 : 1, kLookMilliseconds) <= 0) continue;
      if (feeding && files[1].revents != 0) Feed();
      if (files[0].revents != 0 && !Read()) return {};
    }
  }

  void Feed() {
    const ssize_t sent = ::write(in_.get(), input_.data() + fed_, input_.size() - fed_);
    if (sent > 0) fed_ += static_cast<std::size_t>(sent);
    const bool broken = sent < 0 && errno != EAGAIN && errno != EINTR;
    if (broken || fed_ == input_.size()) in_.Close();
  }

  bool Read() {
    char part[4096];
    const ssize_t got = ::read(out_.get(), part, sizeof part);
    if (got > 0) output_.append(part, static_cast<std::size_t>(got));
    return got > 0 || (got < 0 && (errno == EAGAIN || errno == EINTR));
  }

  ProgramOutcome End(std::string broken) {
    int status = 0;
    while (broken.empty()) {
      const pid_t ended = ::waitpid(child_, &status, WNOHANG);
      if (ended == child_) break;
      ::poll(nullptr, 0, 1);
      broken = Broken();
    }
    ::kill(-child_, SIGKILL);  // also what the program left behind
    if (!broken.empty()) {
      ::waitpid(child_, &status, 0);
      return Failed(std::move(broken));
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return Failed("the program failed");
    return {true, std::move(output_), {}};
  }

  const NoBrokenPipeSignal quiet_;
  const ProgramLimits& limits_;
  const std::atomic<bool>& stop_;
  const Clock::time_point end_;
  File in_, out_;
  pid_t child_ = 0;
  std::string input_;
  std::size_t fed_ = 0;
  std::string output_;
};

}  // namespace

ProgramOutcome RunProgram(const std::vector<std::string>& command, const std::string& input,
                          const ProgramLimits& limits, const std::atomic<bool>& stop) {
  return Run(limits, stop).On(command, input);
}

}  // namespace imsdk::host
