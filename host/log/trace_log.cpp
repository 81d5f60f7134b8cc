#include "log/trace_log.h"

#include <spdlog/details/log_msg.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "kexbase/time.h"

namespace imsdk::host {
namespace {

constexpr std::chrono::milliseconds kFlushEvery{200};

spdlog::level::level_enum SpdlogLevel(int level) {
  if (level >= ns_log::kError) return spdlog::level::err;
  return level >= ns_log::kWarning ? spdlog::level::warn : spdlog::level::info;
}

// What is traced is the user's own. Devices and pipes are left as they are.
void KeepPrivate(std::FILE* file) {
  const int handle = ::fileno(file);
  struct stat about {};
  if (::fstat(handle, &about) == 0 && S_ISREG(about.st_mode)) ::fchmod(handle, S_IRUSR | S_IWUSR);
}

spdlog::file_event_handlers Private() {
  spdlog::file_event_handlers handlers;
  handlers.after_open = [](const spdlog::filename_t&, std::FILE* file) { KeepPrivate(file); };
  return handlers;
}

}  // namespace

// The sinks and the thread that flushes them.
class TraceLog::Files {
 public:
  explicit Files(const TraceLogOptions& options)
      : readable_(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
            (options.folder / "imsdk.log").string(), options.part_size, options.parts, false,
            Private())) {
    readable_->set_pattern("%Y-%m-%d %H:%M:%S.%e %L %v");
    if (!options.trace_file.empty()) {
      json_ = std::make_shared<spdlog::sinks::basic_file_sink_mt>(options.trace_file.string(),
                                                                  false, Private());
      json_->set_pattern("%v");
    }
    flusher_ = std::thread([this] { FlushLoop(); });
  }

  ~Files() { Close(); }

  void Close() {
    {
      std::lock_guard hold(lock_);
      if (closed_) return;
      closed_ = true;
    }
    wake_.notify_one();
    flusher_.join();
    Flush();
  }

  void Write(const ns_log::ITraceLine& line) {
    if (closed_) return;
    const spdlog::level::level_enum level = SpdlogLevel(line.Level());
    if (json_) {
      Put(*json_, level, JsonTraceLine(line, base::Time::Now().ToMilliseconds()));
    }
    Put(*readable_, level, ReadableTraceLine(line));
    dirty_ = true;
    if (line.Level() >= ns_log::kWarning) Flush();
  }

 private:
  static void Put(spdlog::sinks::sink& sink, spdlog::level::level_enum level,
                  const std::string& text) {
    sink.log(spdlog::details::log_msg(spdlog::string_view_t(), level,
                                      spdlog::string_view_t(text.data(), text.size())));
  }

  void Flush() {
    dirty_ = false;
    if (json_) json_->flush();
    readable_->flush();
  }

  void FlushLoop() {
    std::unique_lock hold(lock_);
    while (!wake_.wait_for(hold, kFlushEvery, [this] { return closed_.load(); })) {
      if (!dirty_) continue;
      try {
        Flush();
      } catch (const std::exception&) {  // a full disk: the next line tries again
      }
    }
  }

  std::shared_ptr<spdlog::sinks::sink> readable_;
  std::shared_ptr<spdlog::sinks::sink> json_;  // null without a trace file
  std::atomic<bool> dirty_{false};
  std::mutex lock_;
  std::condition_variable wake_;
  std::atomic<bool> closed_{false};  // changed under lock_
  std::thread flusher_;
};

class TraceLog::FileLogger final : public RefPtrCounted<ns_log::ILogger> {
 public:
  explicit FileLogger(std::shared_ptr<Files> files) : files_(std::move(files)) {}

  bool IsEnabled(int) override { return true; }
  void Write(const ns_log::ITraceLine& line) override { files_->Write(line); }

 private:
  std::shared_ptr<Files> files_;
};

class TraceLog::FileLogService final : public RefPtrCounted<ns_log::ILogService> {
 public:
  explicit FileLogService(RefPtr<ns_log::ILogger> logger) : logger_(std::move(logger)) {}

  ns_log::ILogger* GetLogger(const char*) override {
    logger_->AddRef();
    return logger_.get();
  }

 private:
  RefPtr<ns_log::ILogger> logger_;
};

std::unique_ptr<TraceLog> TraceLog::Open(const TraceLogOptions& options, std::string* error) {
  try {
    std::filesystem::create_directories(options.folder);
    std::filesystem::permissions(options.folder, std::filesystem::perms::owner_all);
    return std::unique_ptr<TraceLog>(new TraceLog(std::make_shared<Files>(options)));
  } catch (const std::exception& failure) {
    *error = std::string("the log cannot be opened: ") + failure.what();
    return nullptr;
  }
}

TraceLog::TraceLog(std::shared_ptr<Files> files)
    : files_(std::move(files)), logger_(new FileLogger(files_)) {}

TraceLog::~TraceLog() {
  try {
    files_->Close();
  } catch (const std::exception&) {  // a full disk: nobody is left to be told
  }
}

RefPtr<ns_log::ILogService> TraceLog::Service() const {
  return RefPtr<ns_log::ILogService>(new FileLogService(logger_));
}

RefPtr<ns_log::ILogger> TraceLog::Logger() const { return logger_; }

}  // namespace imsdk::host
