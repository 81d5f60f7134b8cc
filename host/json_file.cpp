#include "json_file.h"

#include <fstream>
#include <system_error>
#include <utility>

#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"

namespace imsdk::host {
namespace {

constexpr std::size_t kLongestFile = 1024 * 1024;

}  // namespace

std::optional<std::string> ReadFile(const std::filesystem::path& file, std::size_t limit) {
  std::error_code failure;
  const auto size = std::filesystem::file_size(file, failure);
  if (failure || size > limit) return std::nullopt;
  std::string content(static_cast<std::size_t>(size), '\0');
  std::ifstream in(file, std::ios::binary);
  in.read(content.data(), static_cast<std::streamsize>(content.size()));
  if (!in) return std::nullopt;
  return content;
}

bool WriteFile(const std::filesystem::path& file, std::string_view content) {
  const std::filesystem::path aside = file.string() + ".new";
  std::ofstream out(aside, std::ios::binary);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  out.close();
  std::error_code failure;
  if (out) std::filesystem::rename(aside, file, failure);
  return out && !failure;
}

base::DictionaryValue ReadJsonFile(const std::filesystem::path& file) {
  const auto text = ReadFile(file, kLongestFile);
  auto value = text ? base::JSONReader::Read(*text) : std::nullopt;
  base::DictionaryValue* object = value ? value->GetIfDict() : nullptr;
  return object ? std::move(*object) : base::DictionaryValue();
}

bool WriteJsonFile(const std::filesystem::path& file, const base::Value& value) {
  std::string text;
  base::JSONWriter::WriteWithOptions(value, base::JSONWriter::OPTIONS_PRETTY_PRINT, &text);
  return WriteFile(file, text + '\n');
}

std::string StringIn(const base::DictionaryValue& object, std::string_view key) {
  const base::Value* value = object.Find(key);
  const std::string* text = value ? value->GetIfString() : nullptr;
  return text ? *text : std::string();
}

}  // namespace imsdk::host
