#include "client/emotions.h"

#include <string>

#include "json_file.h"
#include "kexbase/json_reader.h"
#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

constexpr std::size_t kLongestList = 1024 * 1024;

}  // namespace

Emotions::Emotions(const std::filesystem::path& web) {
  const auto text = ReadFile(web / "emotions" / "list.json", kLongestList);
  const auto json = text ? base::JSONReader::Read(*text) : std::nullopt;
  const base::ListValue* list = json ? json->GetIfList() : nullptr;
  if (!list) return;
  for (const base::Value& item : *list) {
    const base::DictionaryValue* entry = item.GetIfDict();
    if (!entry) continue;
    const std::string shortcut = StringIn(*entry, "shortcut");
    const std::string file = StringIn(*entry, "file");
    if (shortcut.empty() || file.empty()) continue;
    emotions_.push_back({base::UTF8ToWide(shortcut), base::UTF8ToWide("emotions/" + file)});
  }
}

}  // namespace imsdk::host
