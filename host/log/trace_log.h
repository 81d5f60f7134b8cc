// Where the trace lines of the library and the host end up.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "kexcore/logger.h"

namespace imsdk::host {

// The most characters that a line of a trace file has of the values of a trace line together, of
// its record, and of its text. What is cut ends with "...".
constexpr std::size_t kLongestTraceText = 64 * 1024;

// A trace line as JSON, the form of a trace file, without the line break. `time` is milliseconds
// since the Unix epoch, UTC.
std::string JsonTraceLine(const ns_log::ITraceLine& line, std::int64_t time);

// A trace line for people, on one line, without its time; long values are cut.
std::string ReadableTraceLine(const ns_log::ITraceLine& line);

struct TraceLogOptions {
  std::filesystem::path folder;       // receives imsdk.log and its older parts; made when missing
  std::filesystem::path trace_file;   // receives every line as JSON; empty for none. Appended to
  std::size_t part_size = 10u << 20;  // bytes of imsdk.log before it is set aside
  std::size_t parts = 4;              // older parts that are kept
};

// The log files, readable by their owner alone. A line reaches the disk within 200 ms, warnings and
// failures at once. Any thread.
class TraceLog {
 public:
  // Opens the files. Null when that fails; `*error` then says why.
  static std::unique_ptr<TraceLog> Open(const TraceLogOptions& options, std::string* error);
  // Writes what is left. Loggers that are still held write nothing from then on.
  ~TraceLog();

  // The logging facility for the component registry. Every name gives the same logger.
  RefPtr<ns_log::ILogService> Service() const;
  RefPtr<ns_log::ILogger> Logger() const;

 private:
  class Files;
  class FileLogger;
  class FileLogService;

  explicit TraceLog(std::shared_ptr<Files> files);

  std::shared_ptr<Files> files_;
  RefPtr<ns_log::ILogger> logger_;
};

}  // namespace imsdk::host
