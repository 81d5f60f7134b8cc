#include "client/translation.h"

#include <utility>

#include "json_file.h"
#include "kexbase/json_reader.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"

namespace imsdk::host {
namespace {

constexpr int kMostWaiting = 64;
constexpr std::chrono::milliseconds kLookEvery{1000};
constexpr std::size_t kLongestText = 64 * 1024;  // bytes

// A program ends its output with a line break that the text did not have.
std::string WithoutLastBreak(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

}  // namespace

Translation::Translation(std::filesystem::path file, ProgramLimits limits)
    : file_(std::move(file)), limits_(limits), thread_("Translation") {
  told_ = Current().enabled;
  thread_.Start();
  Watch();
}

void Translation::Stop() {
  stopped_ = true;
  thread_.Stop();
}

Translation::Settings Translation::Current() {
  const std::lock_guard hold(lock_);
  Read();
  return settings_;
}

void Translation::Read() {
  const Stamp stamp = StampOf(file_);
  if (stamp == stamp_) return;
  stamp_ = stamp;
  settings_ = {};
  const base::DictionaryValue object = ReadJsonFile(file_);
  std::string program = StringIn(object, "program");
  if (program.empty()) return;
  settings_.command.push_back(std::move(program));
  const base::Value* args = object.Find("args");
  if (args && args->GetIfList()) {
    for (const base::Value& arg : *args->GetIfList()) {
      if (const std::string* text = arg.GetIfString()) settings_.command.push_back(*text);
    }
  }
  const base::Value* enable = object.Find("enable");
  settings_.enabled = !enable || enable->GetIfInt64().value_or(0) != 0;
}

Translation::Stamp Translation::StampOf(const std::filesystem::path& file) {
  std::error_code missing;
  Stamp stamp{std::filesystem::last_write_time(file, missing), 0};
  if (!missing) stamp.size = std::filesystem::file_size(file, missing);
  return missing ? Stamp() : stamp;
}

// Also when nobody asks for a translation, pages hear of it when the file changes.
void Translation::Watch() {
  const auto look = [this] {
    Tell();
    Watch();
  };
  // Refused only when this stops.
  (void)thread_.task_runner()->PostDelayedTask(FROM_HERE, look, kLookEvery);
}

void Translation::Tell() {
  const bool enabled = Current().enabled;
  if (told_.exchange(enabled) != enabled) events_.on_setting_changed(enabled ? 1 : 0);
}

bool Translation::Report(std::string_view json) {
  const auto value = base::JSONReader::Read(json);
  const base::DictionaryValue* dict = value ? value->GetIfDict() : nullptr;
  const base::Value* enable = dict ? dict->Find("enable") : nullptr;
  const auto flag = enable ? enable->GetIfInt64() : std::nullopt;
  if (!flag) return false;
  const bool enabled = Switch(*flag != 0);
  told_ = enabled;
  events_.on_setting_changed(enabled ? 1 : 0);
  return true;
}

bool Translation::Switch(bool on) {
  const std::lock_guard hold(lock_);
  Read();
  if (settings_.command.empty()) return false;
  settings_.enabled = on;
  base::DictionaryValue object = ReadJsonFile(file_);
  object.Set("enable", base::Value(on ? 1 : 0));
  // A switch that cannot be kept holds until the file changes or the host ends.
  WriteJsonFile(file_, base::Value(std::move(object)));
  stamp_ = StampOf(file_);
  return on;
}

bool Translation::IsEnabled() { return Current().enabled; }

biz::ResultCode Translation::Problem(const Settings& settings) {
  if (settings.command.empty()) return {E_UNEXPECTED, 0, L"no translation is set up"};
  if (!settings.enabled) return {biz::kEngineRefused, 0, L"translation is switched off"};
  if (waiting_ >= kMostWaiting) return {biz::kEngineBusy, 0, L"too many texts wait"};
  if (stopped_) return {E_UNEXPECTED, 0, L"the host stops"};
  return {};
}

void Translation::Translate(const biz::IMUserID& account, const std::wstring& msgid,
                            const std::wstring& text, client::IMTranslateCallback done) {
  Settings settings = Current();
  const biz::ResultCode problem = Problem(settings);
  if (!problem.ok()) return done(problem, {});
  std::string utf8 = base::WideToUTF8(text);
  if (utf8.empty()) return done({biz::kEngineEmpty, 0, L"there is nothing to translate"}, {});
  if (utf8.size() > kLongestText) {
    return done({biz::kEngineTooLarge, 0, L"the text is too long to translate"}, {});
  }
  ++waiting_;
  const auto work = [this, account, msgid, command = std::move(settings.command),
                     utf8 = std::move(utf8), done] {
    const ProgramOutcome outcome = RunProgram(command, utf8, limits_, stopped_);
    --waiting_;
    if (!outcome.ok) return done({E_UNEXPECTED, 0, base::UTF8ToWide(outcome.reason)}, {});
    const std::wstring translated = base::UTF8ToWide(WithoutLastBreak(outcome.output));
    events_.on_translated(account, msgid, translated);
    done({}, translated);
  };
  if (!thread_.task_runner()->PostTask(FROM_HERE, work)) {
    --waiting_;
    done({E_UNEXPECTED, 0, L"the host stops"}, {});
  }
}

}  // namespace imsdk::host
