// bridgehost: serves chat pages on the loopback address.

#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "bridge_library.h"
#include "data_folder.h"
#include "imsdk/check_folder.h"
#include "options.h"
#include "page/page_protocol.h"

namespace {

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;

// Signals that ask for a clean stop, blocked from before the first thread until one arrives.
sigset_t BlockStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

// Prints the description of the protocol. Starts nothing else.
int Describe() {
  using namespace imsdk::host;
  std::string error;
  const auto library = BridgeLibrary::Load(BridgeLibraryFile(), &error);
  const std::string document = library ? WithPageProtocol(library->Describe()) : "";
  if (document.empty()) {
    if (error.empty()) error = "the bridge library has no description";
    std::fprintf(stderr, "bridgehost: %s\n", error.c_str());
    return kFailed;
  }
  const bool written = std::printf("%s\n", document.c_str()) >= 0 && std::fflush(stdout) == 0;
  return written ? 0 : kFailed;
}

// Says of a data folder what is whole. Starts nothing else, and changes nothing in it.
int CheckData(const std::filesystem::path& path) {
  using imsdk::FolderFinding;
  std::string error = "there is no data folder " + path.string();
  const bool there = std::filesystem::is_directory(path);
  const auto folder = there ? imsdk::host::DataFolder::Open(path, &error) : nullptr;
  if (!folder) {
    std::fprintf(stderr, "bridgehost: %s\n", error.c_str());
    return kFailed;
  }
  bool whole = true;
  for (const auto& [name, state, text] :
       imsdk::CheckFolder(base::FilePath::FromUTF8(folder->path().string()))) {
    whole = whole && state != FolderFinding::State::kDamaged;
    const std::string what = state == FolderFinding::State::kWhole      ? "whole"
                             : state == FolderFinding::State::kSetAside ? "set aside earlier"
                                                                        : "not whole: " + text;
    std::printf("%s: %s\n", name.c_str(), what.c_str());
  }
  return whole ? 0 : kFailed;
}

int Run(const std::vector<std::string>& arguments) {
  using imsdk::host::Host;
  if (arguments.size() == 1 && arguments[0] == "--help") {
    std::printf("%s", imsdk::host::kUsage.data());
    return 0;
  }
  if (arguments.size() == 1 && arguments[0] == "--describe") return Describe();
  imsdk::host::HostOptions options;
  std::string error;
  if (!imsdk::host::ReadOptions(arguments, &options, &error)) {
    std::fprintf(stderr, "bridgehost: %s\n%s", error.c_str(), imsdk::host::kUsage.data());
    return kBadUsage;
  }
  if (options.check) return CheckData(options.data);
  ::umask(S_IRWXG | S_IRWXO);  // whatever is kept is the user's own
  const sigset_t stop_signals = BlockStopSignals();
  std::signal(SIGPIPE, SIG_IGN);
  const std::unique_ptr<Host> host = Host::Start(options, &error);
  if (!host) {
    std::fprintf(stderr, "bridgehost: %s\n", error.c_str());
    return kFailed;
  }
  std::printf("listening on %s\n", host->Address().c_str());
  std::fflush(stdout);
  // Not on standard output, whose one line is read by scripts.
  if (!options.origin.empty()) {
    std::fprintf(stderr, "pages of %s may come in too\n", options.origin.c_str());
  }
  int signal = 0;
  sigwait(&stop_signals, &signal);
  // A second signal ends the process at once, should stopping hang.
  pthread_sigmask(SIG_UNBLOCK, &stop_signals, nullptr);
  host->Stop();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bridgehost: %s\n", error.what());
    return kFailed;
  }
}
