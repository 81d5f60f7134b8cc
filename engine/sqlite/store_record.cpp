#include "sqlite/store_record.h"

#include <fcntl.h>
#include <unistd.h>

#include <system_error>
#include <utility>

#include "kexbase/strings.h"

namespace imsdk::sqlite {

namespace {

// Lines of fixed width, so that each can be written over.
constexpr char kHead[] = "store 1\n";
constexpr std::size_t kDigits = 19;
constexpr char kWhole[] = "whole  \n";
constexpr char kDamaged[] = "damaged\n";
constexpr std::streamoff kCommitsAt = sizeof kHead - 1;
constexpr std::streamoff kConditionAt = kCommitsAt + static_cast<std::streamoff>(kDigits) + 1;

std::string CommitsLine(std::int64_t commits) {
  std::string digits = std::to_string(commits);
  digits.insert(0, kDigits - digits.size(), '0');
  return digits + '\n';
}

}  // namespace

bool SyncToDisk(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool synced = fsync(file) == 0;
  close(file);
  return synced;
}

std::optional<StoreRecord::Content> StoreRecord::Read() const {
  std::ifstream in(file_, std::ios::binary);
  std::string head, commits, condition, id;
  for (std::string* line : {&head, &commits, &condition, &id}) std::getline(in, *line);
  Content content{id, 0, condition + '\n' == kDamaged};
  if (head + '\n' != kHead || id.empty()) return std::nullopt;
  for (const char digit : commits) {
    if (digit < '0' || digit > '9' || commits.size() != kDigits) return std::nullopt;
    content.commits = content.commits * 10 + (digit - '0');
  }
  return content;
}

void StoreRecord::Write(const Content& content) {
  if (file_.empty()) return;
  change_.close();
  std::error_code failure;
  std::filesystem::create_directories(file_.parent_path(), failure);
  std::filesystem::path aside = file_;
  aside += ".new";
  std::ofstream out(aside, std::ios::binary);
  out << kHead << CommitsLine(content.commits) << (content.damaged ? kDamaged : kWhole)
      << content.id << '\n';
  out.close();
  if (!out || !SyncToDisk(aside)) return;
  std::filesystem::rename(aside, file_, failure);
  SyncToDisk(file_.parent_path());
}

bool StoreRecord::OpenForChange() {
  if (change_.is_open()) return true;
  if (file_.empty()) return false;
  // Does not make a file that is not there.
  change_.open(file_, std::ios::in | std::ios::out | std::ios::binary);
  return change_.is_open();
}

void StoreRecord::Change(std::streamoff at, const std::string& text) {
  if (!OpenForChange()) return;
  change_.clear();
  change_.seekp(at);
  change_.write(text.data(), static_cast<std::streamsize>(text.size()));
  change_.flush();
}

void StoreRecord::SetCommits(std::int64_t commits) { Change(kCommitsAt, CommitsLine(commits)); }
void StoreRecord::SetDamaged() { Change(kConditionAt, kDamaged); }

}  // namespace imsdk::sqlite
