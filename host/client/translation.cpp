#include "client/translation.h"

#include <utility>

#include "json_file.h"
#include "kexbase/json_reader.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"

namespace imsdk::host {
namespace {

constexpr int kMostWaiting = 64;
constexpr std::size_t kLongestText = 64 * 1024;  // bytes

// A program ends its output with a line break that the text did not have.
std::string WithoutLastBreak(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

}  // namespace

Translation::Translation(std::filesystem::path file, ProgramLimits limits)
    : file_(std::move(file)), limits_(limits), thread_("Translation") {
  const base::DictionaryValue settings = ReadJsonFile(file_);
  std::string program = StringIn(settings, "program");
  if (!program.empty()) {
    command_.push_back(std::move(program));
    const base::Value* args = settings.Find("args");
    if (args && args->GetIfList()) {
      for (const base::Value& arg : *args->GetIfList()) {
        if (const std::string* text = arg.GetIfString()) command_.push_back(*text);
      }
    }
    const base::Value* enable = settings.Find("enable");
    enabled_ = !enable || enable->GetIfInt64().value_or(0) != 0;
  }
  thread_.Start();
}

void Translation::Stop() {
  stopped_ = true;
  thread_.Stop();
}

bool Translation::Report(std::string_view json) {
  const auto value = base::JSONReader::Read(json);
  const base::DictionaryValue* dict = value ? value->GetIfDict() : nullptr;
  const base::Value* enable = dict ? dict->Find("enable") : nullptr;
  const auto flag = enable ? enable->GetIfInt64() : std::nullopt;
  if (!flag) return false;
  enabled_ = *flag != 0 && !command_.empty();
  if (!command_.empty()) Save();
  events_.on_setting_changed(IsEnabled() ? 1 : 0);
  return true;
}

void Translation::Save() {
  const std::lock_guard hold(save_lock_);
  base::DictionaryValue settings = ReadJsonFile(file_);
  settings.Set("enable", base::Value(enabled_ ? 1 : 0));
  // A switch that cannot be kept holds until the host ends.
  WriteJsonFile(file_, base::Value(std::move(settings)));
}

bool Translation::IsEnabled() { return enabled_; }

biz::ResultCode Translation::Problem() {
  if (command_.empty()) return {E_UNEXPECTED, 0, L"no translation is set up"};
  if (!enabled_) return {biz::kEngineRefused, 0, L"translation is switched off"};
  if (waiting_ >= kMostWaiting) return {biz::kEngineBusy, 0, L"too many texts wait"};
  if (stopped_) return {E_UNEXPECTED, 0, L"the host stops"};
  return {};
}

void Translation::Translate(const biz::IMUserID& account, const std::wstring& msgid,
                            const std::wstring& text, client::IMTranslateCallback done) {
  const biz::ResultCode problem = Problem();
  if (!problem.ok()) return done(problem, {});
  std::string utf8 = base::WideToUTF8(text);
  if (utf8.empty()) return done({biz::kEngineEmpty, 0, L"there is nothing to translate"}, {});
  if (utf8.size() > kLongestText) {
    return done({biz::kEngineTooLarge, 0, L"the text is too long to translate"}, {});
  }
  ++waiting_;
  const auto work = [this, account, msgid, utf8 = std::move(utf8), done] {
    const ProgramOutcome outcome = RunProgram(command_, utf8, limits_, stopped_);
    --waiting_;
    if (!outcome.ok) return done({E_UNEXPECTED, 0, base::UTF8ToWide(outcome.reason)}, {});
    const std::wstring translated = base::UTF8ToWide(WithoutLastBreak(outcome.output));
    events_.on_translated(account, msgid, translated);
    done({}, translated);
  };
  if (!thread_.task_runner()->PostTask(FROM_HERE, work)) {
    done({E_UNEXPECTED, 0, L"the host stops"}, {});
  }
}

}  // namespace imsdk::host
