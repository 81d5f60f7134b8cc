#include "embedded/file_room.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "embedded/outcome.h"
#include "kexbase/task_runner.h"
#include "link/digest.h"

namespace imsdk::embedded {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 256 * 1024;          // bytes
constexpr std::chrono::hours kLongestPart{7 * 24};  // for which a part waits to be gone on with
constexpr const char* kComing = "coming";           // folder of what is not whole yet

biz::ResultCode DiskFailed() {
  return Failure(biz::kEngineStorage, L"the server's disk refuses the file");
}

// Whether what was written to the file, or to the names in the folder, is on the disk.
bool Sync(const fs::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool synced = fsync(file) == 0;
  close(file);
  return synced;
}

// A file on its way, piece by piece. What is written goes to a file of its own that is renamed or
// removed at the end.
class Transfer : public std::enable_shared_from_this<Transfer> {
 public:
  Transfer(std::shared_ptr<base::TaskRunner> runner, const fs::path& from, link::Progress progress,
           link::Cancelled cancelled, FileRoom::Done done)
      : runner_(std::move(runner)),
        in_(from, std::ios::binary),
        progress_(std::move(progress)),
        cancelled_(std::move(cancelled)),
        done_(std::move(done)) {}
  virtual ~Transfer() = default;

  void Next() {
    if (!in_.is_open()) return End(Failure(biz::kEngineNotFound, L"there is no such file"));
    if (cancelled_ && *cancelled_) {
      return End(Failure(biz::kEngineRefused, L"the transfer was cancelled"));
    }
    std::string piece(kPiece, '\0');
    in_.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    if (in_.bad()) return End(Failure(biz::kEngineStorage, L"the file cannot be read"));
    piece.resize(static_cast<std::size_t>(in_.gcount()));
    if (piece.empty()) return End(Finish());
    if (const biz::ResultCode took = Take(piece); !took.ok()) return End(took);
    bytes_ += piece.size();
    if (progress_) progress_(bytes_);
    if (!runner_->PostTask(FROM_HERE, [self = shared_from_this()] { self->Next(); })) {
      End(ServerStops());
    }
  }

 protected:
  std::uint64_t bytes() const { return bytes_; }
  // Of these bytes the other side has the first ones already.
  void SkipTo(std::uint64_t bytes) {
    in_.seekg(static_cast<std::streamoff>(bytes));
    bytes_ = bytes;
  }
  virtual biz::ResultCode Take(const std::string& piece) = 0;
  virtual biz::ResultCode Finish() = 0;
  // What has come is worth nothing.
  virtual void Drop() = 0;
  // It is over, whatever became of it.
  virtual void Leave() {}

 private:
  void End(const biz::ResultCode& result) {
    // What the disk or the end of the server broke off is gone on with later.
    const bool goes_on =
        bytes_ > 0 && (result.code == biz::kEngineNoLink || result.code == biz::kEngineStorage);
    if (!result.ok() && !goes_on) Drop();
    Leave();
    done_(result);
  }

  const std::shared_ptr<base::TaskRunner> runner_;
  std::ifstream in_;
  const link::Progress progress_;
  const link::Cancelled cancelled_;
  const FileRoom::Done done_;
  std::uint64_t bytes_ = 0;
};

class Incoming final : public Transfer {
 public:
  // `coming` has the file aside until it is over.
  Incoming(std::shared_ptr<base::TaskRunner> runner, const link::Upload& request, fs::path aside,
           fs::path place, std::set<fs::path>& coming, FileRoom::Done done)
      : Transfer(std::move(runner), request.from, request.progress, request.cancelled,
                 std::move(done)),
        file_(request.file),
        aside_(std::move(aside)),
        place_(std::move(place)),
        coming_(coming) {
    std::error_code unknown;
    known_ = fs::exists(place_, unknown);
    if (known_) return;
    GoOn();
    out_.open(aside_, std::ios::binary | std::ios::app);
  }

 protected:
  biz::ResultCode Take(const std::string& piece) override {
    if (bytes() + piece.size() > file_.size) return Wrong();
    digest_.Add(piece);
    if (known_ || out_.write(piece.data(), static_cast<std::streamsize>(piece.size()))) return {};
    return DiskFailed();
  }

  biz::ResultCode Finish() override {
    if (bytes() != file_.size || digest_.Finish() != DigestOf(file_)) return Wrong();
    if (known_) return {};
    out_.close();
    std::error_code failure;
    fs::create_directories(place_.parent_path(), failure);
    if (!out_ || failure || !Sync(aside_)) return DiskFailed();
    fs::rename(aside_, place_, failure);
    return !failure && Sync(place_.parent_path()) ? biz::ResultCode{} : DiskFailed();
  }

  void Drop() override {
    if (known_) return;
    out_.close();
    std::error_code failed_before;
    fs::remove(aside_, failed_before);
  }

  void Leave() override {
    out_.close();
    coming_.erase(aside_);
  }

 private:
  // Takes up what an earlier attempt left.
  void GoOn() {
    std::error_code failure;
    const std::uint64_t there = fs::file_size(aside_, failure);
    if (failure) return;
    if (there > file_.size) {
      fs::remove(aside_, failure);
      return;
    }
    std::ifstream begin(aside_, std::ios::binary);
    std::string piece(kPiece, '\0');
    while (begin.read(piece.data(), static_cast<std::streamsize>(kPiece)), begin.gcount() > 0) {
      digest_.Add(std::string_view(piece.data(), static_cast<std::size_t>(begin.gcount())));
    }
    SkipTo(there);
  }

  static biz::ResultCode Wrong() {
    return Failure(biz::kEngineRefused, L"the file is not what its name says");
  }

  const link::File file_;
  const fs::path aside_;
  const fs::path place_;
  std::set<fs::path>& coming_;
  std::ofstream out_;
  bool known_ = false;
  link::Digest digest_;
};

class Outgoing final : public Transfer {
 public:
  Outgoing(std::shared_ptr<base::TaskRunner> runner, const link::Download& request,
           const fs::path& place, FileRoom::Done done)
      : Transfer(std::move(runner), place, request.progress, request.cancelled, std::move(done)) {
    std::error_code failure;
    const std::uint64_t there = fs::file_size(request.to, failure);
    const bool fits = !failure && there <= request.file.size;
    if (fits) SkipTo(there);
    out_.open(request.to, std::ios::binary | (fits ? std::ios::app : std::ios::trunc));
  }

 protected:
  biz::ResultCode Take(const std::string& piece) override {
    return out_.write(piece.data(), static_cast<std::streamsize>(piece.size())) ? biz::ResultCode{}
                                                                                : Unwritten();
  }
  biz::ResultCode Finish() override {
    out_.close();
    return out_ ? biz::ResultCode{} : Unwritten();
  }
  void Drop() override {}

 private:
  static biz::ResultCode Unwritten() {
    return Failure(biz::kEngineStorage, L"the file cannot be written");
  }

  std::ofstream out_;
};

}  // namespace

std::string DigestOf(const link::File& file) {
  constexpr std::size_t kDigits = 32;
  const std::string digest = file.name.substr(0, kDigits);
  const bool whole = digest.size() == kDigits &&
                     (file.name.size() == kDigits || file.name[kDigits] == '.') &&
                     digest.find_first_not_of("0123456789abcdef") == std::string::npos;
  return whole ? digest : std::string();
}

FileRoom::FileRoom(fs::path folder) : folder_(std::move(folder)), thread_("ImServerFiles") {
  fs::create_directories(folder_ / kComing);
  for (const fs::directory_entry& part : fs::directory_iterator(folder_ / kComing)) {
    const auto age = fs::file_time_type::clock::now() - part.last_write_time();
    if (age > kLongestPart) fs::remove(part.path());
  }
  if (!thread_.Start()) throw std::runtime_error("the system gives no threads");
}

fs::path FileRoom::PlaceOf(const std::string& digest) const {
  return folder_ / digest.substr(0, 2) / digest;
}

void FileRoom::Receive(const link::Upload& request, std::int64_t account, const Done& done) {
  const std::string digest = DigestOf(request.file);
  if (digest.empty())
    return done(Failure(biz::kEngineRefused, L"the file has no name of a digest"));
  const bool posted =
      thread_.task_runner()->PostTask(FROM_HERE, [this, digest, request, account, done] {
        fs::path aside = folder_ / kComing / (std::to_string(account) + '-' + digest);
        // Another device brings the same now: this one begins on its own.
        while (!coming_.insert(aside).second) aside += "+";
        std::make_shared<Incoming>(thread_.task_runner(), request, aside, PlaceOf(digest), coming_,
                                   done)
            ->Next();
      });
  if (!posted) done(ServerStops());
}

void FileRoom::Send(const link::Download& request, const Done& done) {
  const bool posted = thread_.task_runner()->PostTask(FROM_HERE, [this, request, done] {
    std::make_shared<Outgoing>(thread_.task_runner(), request, PlaceOf(request.file.address), done)
        ->Next();
  });
  if (!posted) done(ServerStops());
}

}  // namespace imsdk::embedded
