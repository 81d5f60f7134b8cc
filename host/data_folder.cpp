#include "data_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <system_error>

namespace imsdk::host {
namespace fs = std::filesystem;
namespace {

constexpr char kLock[] = "host.lock";

// Whether a host has used the folder before.
bool HasLock(const fs::path& folder) {
  std::error_code failure;
  return fs::exists(folder / kLock, failure);
}

}  // namespace

std::unique_ptr<DataFolder> DataFolder::Open(const fs::path& path, std::string* error) {
  std::error_code failure;
  const bool made = fs::create_directories(path, failure);
  // A folder of somebody else's things keeps its rights, whatever is put beside them.
  const bool own = made || (!failure && (fs::is_empty(path, failure) || HasLock(path)));
  if (!failure && own) fs::permissions(path, fs::perms::owner_all, failure);
  const fs::path absolute = failure ? fs::path() : fs::canonical(path, failure);
  if (failure) {
    *error = "the data folder " + path.string() + " cannot be used: " + failure.message();
    return nullptr;
  }
  const int lock = ::open((absolute / kLock).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock < 0) {
    *error = "the data folder " + path.string() + " cannot be written: " + std::strerror(errno);
    return nullptr;
  }
  if (::flock(lock, LOCK_EX | LOCK_NB) != 0) {
    *error = "the data folder " + path.string() + " is in use by another bridgehost";
    ::close(lock);
    return nullptr;
  }
  return std::unique_ptr<DataFolder>(new DataFolder(absolute, lock));
}

DataFolder::~DataFolder() { ::close(lock_); }

fs::path DefaultDataFolder() {
  // Relative values of the variable are to be ignored, says its convention.
  if (const char* home = std::getenv("XDG_DATA_HOME"); home && fs::path(home).is_absolute()) {
    return fs::path(home) / "imsdkbridge";
  }
  const char* home = std::getenv("HOME");
  return home && *home ? fs::path(home) / ".local/share/imsdkbridge" : fs::path();
}

}  // namespace imsdk::host
