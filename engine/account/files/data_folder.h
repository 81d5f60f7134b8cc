// Where an account's stores and files lie inside the data folder.
//
//   stores/NAME                  what is remembered of a store, apart from the store
//   client/ids.db                message numbering
//   accounts/ACCOUNT/messages.db one account's own store
//   accounts/ACCOUNT/incoming/   files on their way here
//   files/ACCOUNT/MD5.EXT        pictures and files that the account sent or fetched
#pragma once

#include <filesystem>
#include <string>

#include "imsdk/biz/user_id.h"
#include "kexbase/file_path.h"

namespace imsdk::account {

std::filesystem::path ToPath(const base::FilePath& path);
base::FilePath FromPath(const std::filesystem::path& path);

// The user as stores and links keep it: parts that are no well-formed text have U+FFFD in them.
biz::IMUserID WellFormed(const biz::IMUserID& user);

// A folder name for any account name: something readable of the nick, and a digest that tells
// apart what letters, case or length would not. Lower-case ASCII letters, digits, "_" and "-".
std::string AccountFolderName(const biz::IMUserID& user);

// The folder in the data folder that pages may see.
inline constexpr char kFilesFolder[] = "files";
// The folder of what is remembered of stores.
inline constexpr char kRecordsFolder[] = "stores";

class DataFolder {
 public:
  explicit DataFolder(std::filesystem::path root) : root_(std::move(root)) {}

  const std::filesystem::path& root() const { return root_; }
  std::filesystem::path MessageIds() const { return root_ / "client" / "ids.db"; }
  std::filesystem::path MessageIdsRecord() const { return root_ / kRecordsFolder / "ids"; }
  std::filesystem::path DeviceName() const { return root_ / "client" / "device"; }
  std::filesystem::path AccountFolder(const biz::IMUserID& user) const {
    return root_ / "accounts" / AccountFolderName(user);
  }
  std::filesystem::path MessageStore(const biz::IMUserID& user) const {
    return AccountFolder(user) / "messages.db";
  }
  std::filesystem::path MessageStoreRecord(const biz::IMUserID& user) const {
    return root_ / kRecordsFolder / ("account-" + AccountFolderName(user));
  }
  std::filesystem::path IncomingFolder(const biz::IMUserID& user) const {
    return AccountFolder(user) / "incoming";
  }
  // A file of an account; `name` is its digest and type.
  std::filesystem::path FileOf(const biz::IMUserID& user, const std::string& name) const {
    return root_ / FilesFolder(user) / name;
  }
  // The folder of an account's files, relative to the data folder.
  std::string FilesFolder(const biz::IMUserID& user) const {
    return std::string(kFilesFolder) + '/' + AccountFolderName(user);
  }

 private:
  std::filesystem::path root_;
};

}  // namespace imsdk::account
