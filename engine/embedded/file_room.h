// The contents of files on the embedded server, and the thread on which they come and go.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "imsdk/biz/user_id.h"
#include "kexbase/thread.h"
#include "link/operations.h"

namespace imsdk::embedded {

// The digest that the file's name begins with; empty when that is none.
std::string DigestOf(const link::File& file);

// Contents lie in a folder under their digests. They cross in pieces, those of several transfers in
// turn, on a thread of the room's own. Any thread.
class FileRoom {
 public:
  using Done = std::function<void(const biz::ResultCode&)>;

  // Makes the folder, drops what came long ago and was never finished. Throws
  // `std::runtime_error` or `std::filesystem::filesystem_error`.
  explicit FileRoom(std::filesystem::path folder);
  // Ends the transfers that are open with `kEngineNoLink`.
  void Stop() { thread_.Stop(); }

  // Keeps the content of the local file `request.from`. Refuses one of another digest or size than
  // `request.file` says. A content that is known is read, but not written again. What an earlier
  // attempt of the account brought is kept over restarts and gone on from. `done` is called on the
  // room's thread, like `request.progress`.
  void Receive(const link::Upload& request, std::int64_t account, const Done& done);
  // Adds to the local file `request.to` what it lacks of a content that is kept.
  void Send(const link::Download& request, const Done& done);

 private:
  std::filesystem::path PlaceOf(const std::string& digest) const;

  const std::filesystem::path folder_;
  base::Thread thread_;
  std::set<std::filesystem::path> coming_;  // what is written now; used on the thread
};

}  // namespace imsdk::embedded
