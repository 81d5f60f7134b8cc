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
// the file no translation is set up. Messages are translated one after another on a thread of
// their own.
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
  // Why nothing can be translated now; good when it can.
  biz::ResultCode Problem();
  void Save();

  const std::filesystem::path file_;
  const ProgramLimits limits_;
  std::vector<std::string> command_;  // empty: none is set up
  std::mutex save_lock_;
  std::atomic<bool> enabled_{false};
  std::atomic<bool> stopped_{false};
  std::atomic<int> waiting_{0};
  TranslationEvents events_;
  base::Thread thread_;
};

}  // namespace imsdk::host
