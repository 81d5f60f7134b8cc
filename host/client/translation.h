// Translation of messages by a program of the user's choice.
#pragma once

#include <atomic>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "client/run_program.h"
#include "imsdk/client/translation.h"
#include "kexbase/thread.h"

namespace imsdk::host {

// The program is named in a file of the data folder, "translation.json":
//
//   {"program": "apertium", "args": ["-u", "eng-spa"], "enable": 1}
//
// It gets a text as its standard input and writes the translation to its standard output. Without
// the file no translation is set up. The file is read whenever it has changed. Messages are
// translated one after another on a thread of their own.
class Translation final : public RefPtrCounted<client::ITranslationService> {
 public:
  explicit Translation(std::filesystem::path file, ProgramLimits limits = {});

  // Ends the program that runs and fails what waits. Called once by the owner, before anything
  // that callbacks reach goes away; what is asked later fails too.
  void Stop();

  // Takes over what a page said in UTF-8 JSON, {"enable":1|0}, and keeps it in the file. False
  // when the text is not of this form. Any thread. `on_setting_changed` tells what holds now.
  bool Report(std::string_view json);

  bool IsEnabled() override;
  void Translate(const biz::IMUserID& account, const std::wstring& msgid, const std::wstring& text,
                 client::IMTranslateCallback done) override;
  TranslationEvents& Events() override { return events_; }

 private:
  struct Settings {
    std::vector<std::string> command;  // empty: none is set up
    bool enabled = false;
  };
  // What tells whether the file has changed.
  struct Stamp {
    std::filesystem::file_time_type time{};
    std::uintmax_t size = 0;
    bool operator==(const Stamp&) const = default;
  };

  static Stamp StampOf(const std::filesystem::path& file);
  // What the file says now.
  Settings Current();
  // Reads the file if it changed. Under `lock_`.
  void Read();
  // Keeps the switch; gives what holds now.
  bool Switch(bool on);
  void Watch();
  void Tell();
  // Why nothing can be translated now; good when it can.
  biz::ResultCode Problem(const Settings& settings);

  const std::filesystem::path file_;
  const ProgramLimits limits_;
  std::mutex lock_;
  Settings settings_;              // under lock_
  Stamp stamp_;                    // of the file that settings_ come from; under lock_
  std::atomic<bool> told_{false};  // what pages were told last
  std::atomic<bool> stopped_{false};
  std::atomic<int> waiting_{0};
  TranslationEvents events_;
  base::Thread thread_;
};

}  // namespace imsdk::host
