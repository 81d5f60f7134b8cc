// JSON files of the host: settings and lists.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "kexbase/values.h"

namespace imsdk::host {

// The whole content of a file of at most `limit` bytes; nothing when it cannot be read or is
// larger.
std::optional<std::string> ReadFile(const std::filesystem::path& file, std::size_t limit);

// Replaces the file as a whole: others see the old content or the new one. False when that fails;
// the old one then stays. One writer of a file at a time.
bool WriteFile(const std::filesystem::path& file, std::string_view content);

// The object in a file; empty when there is none.
base::DictionaryValue ReadJsonFile(const std::filesystem::path& file);
// `WriteFile` of the value's text.
bool WriteJsonFile(const std::filesystem::path& file, const base::Value& value);

// The string under `key`; empty when there is none.
std::string StringIn(const base::DictionaryValue& object, std::string_view key);

}  // namespace imsdk::host
