// The files that an account sends, kept in the data folder under their content's digest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "account/files/large_file.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/file_path.h"

namespace imsdk::account {

// Largest content of a file that a call brings along, in bytes, and of one that is named by its
// path; the server may take less.
inline constexpr std::size_t kMaxFileBytes = biz::kMaxContentBytes;
inline constexpr std::uint64_t kMaxSentFileBytes = std::uint64_t{16} << 30;

struct KeptFile {
  std::wstring path;  // relative to the data folder, with "/", so that the folder may move
  std::wstring md5;   // lower-case hexadecimal digits
  std::wstring type;  // ending without the dot; empty when there is none
};

// Any thread; files are written aside and renamed, so that a name always has its whole content.
class FileBox {
 public:
  // `root` is the data folder, `folder` the account's place in it. Files may be sent from the data
  // folder's `files` and from the folders `send_from`.
  FileBox(std::filesystem::path root, std::string folder,
          std::vector<std::filesystem::path> send_from = {})
      : root_(std::move(root)), folder_(std::move(folder)), send_from_(std::move(send_from)) {}

  // Keeps `content` under an ending of `type`; when that is empty, under one told by the content.
  biz::ResultCode Keep(std::string_view content, std::string type, KeptFile* kept) const;
  // Keeps a copy of a local file. A relative path starts at the data folder. Pages name these
  // files, so one that may not be sent is answered as one that is not there.
  // A copy that was given up leaves nothing.
  biz::ResultCode KeepCopy(const base::FilePath& file, KeptFile* kept,
                           const GivesUp& gives_up = {}) const;
  // The size of a file that may be sent; 0 for any other.
  std::uint64_t SizeToSend(const base::FilePath& file) const;

 private:
  // Whether a file, given without links and "..", may be sent: of the data folder itself nothing
  // but its `files`, whatever else was allowed.
  bool MaySend(const std::filesystem::path& file) const;
  // The file that a page names, without links and ".."; empty when it may not be sent.
  std::filesystem::path ToSend(const base::FilePath& file) const;

  // In pieces, so that a large file needs no memory.
  biz::ResultCode CopyWhole(const std::filesystem::path& source, const std::string& named,
                            KeptFile* kept, const GivesUp& gives_up) const;

  const std::filesystem::path root_;
  const std::string folder_;
  const std::vector<std::filesystem::path> send_from_;
};

// The ending that a file of this name has, without the dot: lower-case, empty for an odd one.
std::string TypeOfName(const base::FilePath& name);
// The usual ending for content that begins like this; empty when it is not known.
std::string TypeOfContent(std::string_view content);

}  // namespace imsdk::account
