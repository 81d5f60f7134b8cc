#include "embedded/file_room.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "embedded/outcome.h"
#include "kexbase/task_runner.h"

namespace imsdk::embedded {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 256 * 1024;  // bytes
constexpr const char* kComing = "coming";   // folder of what is not whole yet

biz::ResultCode DiskFailed() {
  return Failure(biz::kEngineStorage, L"the server's disk refuses the file");
}

// The digest of what comes in pieces.
class Digest {
 public:
  Digest() : context_(EVP_MD_CTX_new()) {
    good_ = context_ && EVP_DigestInit_ex(context_.get(), EVP_md5(), nullptr) == 1;
  }

  void Add(const std::string& piece) {
    good_ = good_ && EVP_DigestUpdate(context_.get(), piece.data(), piece.size()) == 1;
  }

  // Lower-case hexadecimal digits; empty when the system's cryptography refuses.
  std::string Finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned length = 0;
    if (!good_ || EVP_DigestFinal_ex(context_.get(), bytes.data(), &length) != 1) return {};
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned i = 0; i < length; ++i) {
      text += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
    }
    return text;
  }

 private:
  struct Free {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  const std::unique_ptr<EVP_MD_CTX, Free> context_;
  bool good_;
};

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
           FileRoom::Done done)
      : runner_(std::move(runner)),
        in_(from, std::ios::binary),
        progress_(std::move(progress)),
        done_(std::move(done)) {}
  virtual ~Transfer() = default;

  void Next() {
    if (!in_.is_open()) return End(Failure(biz::kEngineNotFound, L"there is no such file"));
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
  virtual biz::ResultCode Take(const std::string& piece) = 0;
  virtual biz::ResultCode Finish() = 0;
  virtual void Drop() = 0;

 private:
  void End(const biz::ResultCode& result) {
    if (!result.ok()) Drop();
    done_(result);
  }

  const std::shared_ptr<base::TaskRunner> runner_;
  std::ifstream in_;
  const link::Progress progress_;
  const FileRoom::Done done_;
  std::uint64_t bytes_ = 0;
};

class Incoming final : public Transfer {
 public:
  Incoming(std::shared_ptr<base::TaskRunner> runner, const link::Upload& request, fs::path aside,
           fs::path place, FileRoom::Done done)
      : Transfer(std::move(runner), request.from, request.progress, std::move(done)),
        file_(request.file),
        aside_(std::move(aside)),
        place_(std::move(place)) {
    std::error_code unknown;
    known_ = fs::exists(place_, unknown);
    if (!known_) out_.open(aside_, std::ios::binary);
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

 private:
  static biz::ResultCode Wrong() {
    return Failure(biz::kEngineRefused, L"the file is not what its name says");
  }

  const link::File file_;
  const fs::path aside_;
  const fs::path place_;
  std::ofstream out_;
  bool known_ = false;
  Digest digest_;
};

class Outgoing final : public Transfer {
 public:
  Outgoing(std::shared_ptr<base::TaskRunner> runner, const link::Download& request,
           const fs::path& place, FileRoom::Done done)
      : Transfer(std::move(runner), place, request.progress, std::move(done)),
        out_(request.to, std::ios::binary) {}

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
  fs::remove_all(folder_ / kComing);
  fs::create_directories(folder_ / kComing);
  if (!thread_.Start()) throw std::runtime_error("the system gives no threads");
}

fs::path FileRoom::PlaceOf(const std::string& digest) const {
  return folder_ / digest.substr(0, 2) / digest;
}

void FileRoom::Receive(const link::Upload& request, const Done& done) {
  const std::string digest = DigestOf(request.file);
  if (digest.empty())
    return done(Failure(biz::kEngineRefused, L"the file has no name of a digest"));
  const bool posted = thread_.task_runner()->PostTask(FROM_HERE, [this, digest, request, done] {
    std::make_shared<Incoming>(thread_.task_runner(), request,
                               folder_ / kComing / std::to_string(++last_number_), PlaceOf(digest),
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
