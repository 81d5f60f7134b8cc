// The folder that holds everything a host keeps.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace imsdk::host {

// A data folder in use by this host and by no other one.
class DataFolder {
 public:
  // Makes the folder when it is missing and locks it. A folder that is new, empty or a host's
  // already becomes readable by the user alone. Null when that fails or another host uses it;
  // `*error` then says why.
  static std::unique_ptr<DataFolder> Open(const std::filesystem::path& path, std::string* error);
  ~DataFolder();
  DataFolder(const DataFolder&) = delete;
  DataFolder& operator=(const DataFolder&) = delete;

  // Absolute.
  const std::filesystem::path& path() const { return path_; }

 private:
  DataFolder(std::filesystem::path path, int lock) : path_(std::move(path)), lock_(lock) {}

  std::filesystem::path path_;
  int lock_;
};

// The folder used when none is named: "imsdkbridge" under the user's data home. Empty when the
// environment names no home.
std::filesystem::path DefaultDataFolder();

}  // namespace imsdk::host
