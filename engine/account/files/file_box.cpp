#include "account/files/file_box.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "account/files/data_folder.h"
#include "kexbase/guid.h"
#include "kexbase/md5.h"
#include "kexbase/strings.h"
#include "link/digest.h"
#include "sqlite/store_record.h"

namespace imsdk::account {

namespace {

constexpr std::size_t kLongestType = 8;
constexpr std::size_t kPiece = 256 * 1024;  // bytes

biz::ResultCode Failure(biz::EngineCode code, const wchar_t* text) { return {code, 0, text}; }

bool WriteWhole(const std::filesystem::path& file, std::string_view content) {
  std::filesystem::path aside = file;
  aside += "." + base::GenerateGUID();
  std::error_code failure;
  {
    std::ofstream out(aside, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.close();
    // A name must not be on the disk before its content is.
    const bool written = out && sqlite::SyncToDisk(aside);
    if (written) std::filesystem::rename(aside, file, failure);
    if (written && !failure) return true;
  }
  std::filesystem::remove(aside, failure);
  return false;
}

// `file` has no links and no "..".
bool IsInside(const std::filesystem::path& file, const std::filesystem::path& folder) {
  std::error_code failure;
  const std::filesystem::path real = std::filesystem::canonical(folder, failure);
  return !failure &&
         std::mismatch(real.begin(), real.end(), file.begin(), file.end()).first == real.end();
}

}  // namespace

biz::ResultCode FileBox::Keep(std::string_view content, std::string type, KeptFile* kept) const {
  if (content.size() > kMaxFileBytes) {
    return Failure(biz::kEngineTooLarge, L"the file is too large");
  }
  if (type.empty()) type = TypeOfContent(content);
  const std::string md5 = base::MD5String(content);
  const std::string path = folder_ + '/' + md5 + (type.empty() ? "" : '.' + type);
  const std::filesystem::path file = root_ / path;
  std::error_code failure;
  std::filesystem::create_directories(file.parent_path(), failure);
  const bool there = std::filesystem::file_size(file, failure) == content.size() && !failure;
  if (!there && !WriteWhole(file, content)) {
    return Failure(biz::kEngineStorage, L"the file could not be kept");
  }
  *kept = {base::UTF8ToWide(path), base::UTF8ToWide(md5), base::UTF8ToWide(type)};
  return {};
}

bool FileBox::MaySend(const std::filesystem::path& file) const {
  if (IsInside(file, root_)) return IsInside(file, root_ / kFilesFolder);
  return std::any_of(send_from_.begin(), send_from_.end(),
                     [&](const std::filesystem::path& folder) { return IsInside(file, folder); });
}

std::filesystem::path FileBox::ToSend(const base::FilePath& file) const {
  std::error_code failure;
  // An absolute path replaces the root.
  const std::filesystem::path source = std::filesystem::canonical(root_ / ToPath(file), failure);
  const bool may = !failure && MaySend(source) && std::filesystem::is_regular_file(source, failure);
  return may ? source : std::filesystem::path();
}

std::uint64_t FileBox::SizeToSend(const base::FilePath& file) const {
  std::error_code failure;
  const std::filesystem::path source = ToSend(file);
  const auto size = source.empty() ? 0 : std::filesystem::file_size(source, failure);
  return failure ? 0 : size;
}

biz::ResultCode FileBox::KeepCopy(const base::FilePath& file, KeptFile* kept,
                                  const GivesUp& gives_up) const {
  const std::filesystem::path source = ToSend(file);
  if (source.empty()) return Failure(biz::kEngineNotFound, L"there is no such file");
  std::error_code failure;
  const auto size = std::filesystem::file_size(source, failure);
  if (!failure && size > kMaxSentFileBytes) {
    return Failure(biz::kEngineTooLarge, L"the file is too large");
  }
  return CopyWhole(source, TypeOfName(file), kept, gives_up);
}

biz::ResultCode FileBox::CopyWhole(const std::filesystem::path& source, const std::string& named,
                                   KeptFile* kept, const GivesUp& gives_up) const {
  const std::filesystem::path aside = root_ / folder_ / ("." + base::GenerateGUID());
  std::error_code failure;
  std::filesystem::create_directories(aside.parent_path(), failure);
  std::ifstream in(source, std::ios::binary);
  std::ofstream out(aside, std::ios::binary);
  link::Digest digest;
  std::string piece(kPiece, '\0');
  std::string type = named;
  while (in.read(piece.data(), static_cast<std::streamsize>(kPiece)), in.gcount() > 0) {
    const std::string_view part(piece.data(), static_cast<std::size_t>(in.gcount()));
    if (type.empty() && out.tellp() == std::streampos(0)) type = TypeOfContent(part);
    digest.Add(part);
    out.write(part.data(), static_cast<std::streamsize>(part.size()));
    if (!out || (gives_up && gives_up())) break;
  }
  out.close();
  const bool read = (in.eof() && !in.bad()) || !out;
  const std::string md5 = digest.Finish();
  const std::string path = folder_ + '/' + md5 + (type.empty() ? "" : '.' + type);
  const auto size = std::filesystem::file_size(aside, failure);
  const bool there = std::filesystem::file_size(root_ / path, failure) == size && !failure;
  bool good = read && out && !md5.empty();
  if (good && !there) {
    good = sqlite::SyncToDisk(aside);
    if (good) std::filesystem::rename(aside, root_ / path, failure);
    good = good && !failure;
  }
  if (!good || there) std::filesystem::remove(aside, failure);
  if (!good) {
    return Failure(biz::kEngineStorage,
                   read ? L"the file could not be kept" : L"the file could not be read");
  }
  *kept = {base::UTF8ToWide(path), base::UTF8ToWide(md5), base::UTF8ToWide(type)};
  return {};
}

std::string TypeOfName(const base::FilePath& name) {
  std::string type;
  const std::wstring extension = name.Extension();
  for (std::size_t i = 1; i < extension.size(); ++i) {
    const wchar_t letter = extension[i] | (extension[i] >= L'A' && extension[i] <= L'Z' ? 0x20 : 0);
    const bool plain = (letter >= L'a' && letter <= L'z') || (letter >= L'0' && letter <= L'9');
    if (!plain || type.size() == kLongestType) return {};
    type += static_cast<char>(letter);
  }
  return type;
}

std::string TypeOfContent(std::string_view content) {
  struct Kind {
    std::string_view start;
    std::size_t at;
    const char* type;
  };
  constexpr Kind kKinds[] = {
      {"\x89PNG\r\n\x1a\n", 0, "png"},
      {"\xff\xd8\xff", 0, "jpg"},
      {"GIF8", 0, "gif"},
      {"WEBP", 8, "webp"},
      {"WAVE", 8, "wav"},
      {"OggS", 0, "ogg"},
      {"ID3", 0, "mp3"},
      {"#!AMR", 0, "amr"},
  };
  for (const Kind& kind : kKinds) {
    if (content.size() >= kind.at && content.substr(kind.at).starts_with(kind.start)) {
      return kind.type;
    }
  }
  return {};
}

}  // namespace imsdk::account
