// Running another program on a text.
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

namespace imsdk::host {

struct ProgramLimits {
  std::chrono::milliseconds time{10'000};
  std::size_t output = 1024 * 1024;  // bytes
};

struct ProgramOutcome {
  bool ok = false;     // it ran, ended with status 0 and kept its limits
  std::string output;  // its standard output
  std::string reason;  // why it is not ok
};

// Runs `command` (the program, looked up like a shell does, and its arguments; no shell reads
// them) with `input` as its standard input, and waits for its end. A program that breaks a limit,
// or still runs when `*stop` turns true, is killed with everything it started.
ProgramOutcome RunProgram(const std::vector<std::string>& command, const std::string& input,
                          const ProgramLimits& limits, const std::atomic<bool>& stop);

}  // namespace imsdk::host
