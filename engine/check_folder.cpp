#include "imsdk/check_folder.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>

#include "account/files/data_folder.h"
#include "kexbase/md5.h"
#include "sqlite/kept_store.h"

namespace imsdk {

namespace {

namespace fs = std::filesystem;
using State = FolderFinding::State;

constexpr char kAside[] = ".aside-";

class Check {
 public:
  explicit Check(const base::FilePath& data) : root_(account::ToPath(data)) {}

  std::vector<FolderFinding> Run() {
    std::set<std::string> accounts;
    for (const fs::path& folder : Entries(root_ / "accounts")) {
      accounts.insert(folder.filename().string());
    }
    Store("server/server.db", "server", !accounts.empty());
    Store("client/ids.db", "ids");
    const std::string of_account = "account-";
    for (const fs::path& record : Entries(root_ / account::kRecordsFolder)) {
      const std::string name = record.filename().string();
      if (name.starts_with(of_account) && record.extension() != ".new") {
        accounts.insert(name.substr(of_account.size()));
      }
    }
    for (const std::string& name : accounts) {
      Store("accounts/" + name + "/messages.db", of_account + name);
    }
    for (const fs::path& folder : Entries(root_ / account::kFilesFolder)) Files(folder);
    for (const fs::path& folder : Entries(root_ / "server" / "files")) Files(folder);
    return std::move(found_);
  }

 private:
  static std::vector<fs::path> Entries(const fs::path& folder) {
    std::error_code missing;
    std::vector<fs::path> entries;
    for (const auto& entry : fs::directory_iterator(folder, missing)) entries.push_back(entry);
    std::sort(entries.begin(), entries.end());
    return entries;
  }

  void Add(const fs::path& file, State state, std::string text) {
    found_.push_back({file.lexically_relative(root_).generic_string(), state, std::move(text)});
  }

  // `expected` as in `sqlite::StorePlace`.
  void Store(const std::string& name, const std::string& record, bool expected = false) {
    const fs::path file = root_ / name;
    const fs::path known = root_ / account::kRecordsFolder / record;
    if (expected || fs::exists(file) || fs::exists(known)) {
      const std::string wrong = sqlite::CheckStore({file, known, expected});
      Add(file, wrong.empty() ? State::kWhole : State::kDamaged, wrong);
    }
    for (const fs::path& entry : Entries(file.parent_path())) {
      const std::string text = entry.filename().string();
      const bool part = text.ends_with("-wal") || text.ends_with("-shm");
      if (text.starts_with(file.filename().string() + kAside) && !part) {
        Add(entry, State::kSetAside, {});
      }
    }
  }

  // Files bear the digest of their content as their name.
  void Files(const fs::path& folder) {
    for (const fs::path& file : Entries(folder)) {
      const std::string digest = file.stem().string();
      if (!fs::is_regular_file(file) || digest.size() != 32) continue;
      std::ifstream in(file, std::ios::binary);
      std::string content{std::istreambuf_iterator<char>(in), {}};
      if (base::MD5String(content) != digest) {
        Add(file, State::kDamaged, "its content is not what its name says");
      }
    }
  }

  const fs::path root_;
  std::vector<FolderFinding> found_;
};

}  // namespace

std::vector<FolderFinding> CheckFolder(const base::FilePath& data) { return Check(data).Run(); }

}  // namespace imsdk
