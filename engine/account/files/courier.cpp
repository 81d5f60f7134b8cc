#include "account/files/courier.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "account/files/large_file.h"
#include "account/session/line.h"
#include "kexbase/callback.h"
#include "link/digest.h"

namespace imsdk::account {

namespace {

// Side by side, for one account; uploads and downloads each.
constexpr std::size_t kAtOnce = 3;

biz::ResultCode NotThere() { return {biz::kEngineNotFound, 0, L"there is no such file"}; }

bool IsFile(const std::filesystem::path& file) {
  std::error_code failure;
  return std::filesystem::is_regular_file(file, failure);
}

// Between two reports of a file's progress.
constexpr std::chrono::milliseconds kReportEvery{250};
constexpr std::chrono::hours kLongestPart{7 * 24};
constexpr std::size_t kPiece = 256 * 1024;  // bytes

constexpr std::int32_t kCancelled = 1;  // subcode

biz::ResultCode Stopped() {
  return {biz::kEngineRefused, kCancelled, L"the transfer was cancelled"};
}

// What came, read from one end to the other: `kEngineOk` when it has the content that its name
// promises and is on the disk.
biz::ResultCode Check(const std::filesystem::path& file, const std::string& name,
                      const GivesUp& gives_up) {
  std::ifstream in(file, std::ios::binary);
  link::Digest digest;
  std::string piece(kPiece, '\0');
  while (in.read(piece.data(), static_cast<std::streamsize>(kPiece)), in.gcount() > 0) {
    digest.Add(std::string_view(piece.data(), static_cast<std::size_t>(in.gcount())));
    if (gives_up()) return NotLoggedIn();
  }
  const std::string md5 = digest.Finish();
  if (in.bad() || md5.empty() || !name.starts_with(md5)) {
    std::error_code failure;
    std::filesystem::remove(file, failure);
    return {biz::kEngineStorage, 0, L"the file that came is another one"};
  }
  if (sqlite::SyncToDisk(file)) return {};
  return {biz::kEngineStorage, 0, L"the file could not be kept"};
}

}  // namespace

Courier::Courier(std::shared_ptr<AccountState> state)
    : state_(std::move(state)),
      uploads_(kAtOnce,
               [this](const std::string& name, auto done) { Upload(name, std::move(done)); }),
      downloads_(kAtOnce,
                 [this](const std::string& name, auto done) { Download(name, std::move(done)); }) {}

std::filesystem::path Courier::PathOf(const std::string& name) const {
  return state_->environment->folder.FileOf(state_->self, name);
}

bool Courier::IsHere(const std::string& name, const std::optional<KnownFile>& known) const {
  std::error_code failure;
  const auto size = std::filesystem::file_size(PathOf(name), failure);
  return !failure && (!known || known->file.size == 0 || size == known->file.size);
}

std::filesystem::path Courier::PartOf(const std::string& name) const {
  return state_->environment->folder.IncomingFolder(state_->self) / name;
}

link::Cancelled Courier::SwitchOf(const Way& way) {
  link::Cancelled& cancelled = ways_[way];
  if (!cancelled) cancelled = std::make_shared<std::atomic<bool>>(false);
  return cancelled;
}

link::Progress Courier::ProgressOf(const Way& way, std::uint64_t size) {
  using Clock = std::chrono::steady_clock;
  const auto told = std::make_shared<std::atomic<Clock::rep>>(0);
  return [weak = weak_from_this(), runner = state_->runner, way, size, told](std::uint64_t bytes) {
    const auto now = Clock::now().time_since_epoch();
    if (now - Clock::duration(told->load()) < kReportEvery) return;
    *told = now.count();
    runner->PostTask(FROM_HERE, base::BindWeak(weak, [way, bytes, size](Courier& here) {
                       if (here.progress_) here.progress_(way.first, way.second, bytes, size);
                     }));
  };
}

void Courier::Cancel(const std::string& name, bool upload) {
  const auto way = ways_.find({name, upload});
  if (way != ways_.end()) {
    *way->second = true;
    return;
  }
  // Nothing is under way; what waited for the link has left a part.
  std::error_code failure;
  if (!upload) std::filesystem::remove(PartOf(name), failure);
}

bool Courier::WasCancelled(const biz::ResultCode& result) {
  return result.code == biz::kEngineRefused && result.subcode == kCancelled;
}

void Courier::DropOldParts() {
  std::error_code failure;
  const auto folder = state_->environment->folder.IncomingFolder(state_->self);
  const auto now = std::filesystem::file_time_type::clock::now();
  for (const auto& part : std::filesystem::directory_iterator(folder, failure)) {
    const auto written = part.last_write_time(failure);
    if (!failure && now - written > kLongestPart) std::filesystem::remove(part.path(), failure);
  }
}

void Courier::Provide(const std::string& name, biz::IMCallback<link::File> done) {
  std::optional<KnownFile> known;
  const biz::ResultCode read = sqlite::Guarded([&] { known = state_->store.files().Find(name); });
  if (!read.ok()) return done(read, {});
  if (known && (known->own || !IsHere(name, known))) return done({}, known->file);
  if (!known && !IsFile(PathOf(name))) return done(NotThere(), {});
  SwitchOf({name, true});
  uploads_.Ask(name, std::move(done));
}

void Courier::Upload(const std::string& name, biz::IMCallback<link::File> done) {
  std::error_code failure;
  link::File file{name, {}, std::filesystem::file_size(PathOf(name), failure)};
  const Way way{name, true};
  const link::Cancelled cancelled = SwitchOf(way);
  if (failure || *cancelled) {
    ways_.erase(way);
    return done(failure ? NotThere() : Stopped(), {});
  }
  state_->line->Ask(link::Upload{PathOf(name), file, ProgressOf(way, file.size), cancelled},
                    [weak = weak_from_this(), way, file, done = std::move(done)](
                        const biz::ResultCode& result, const link::Uploaded& uploaded) mutable {
                      const auto self = weak.lock();
                      if (!self) return;
                      self->ways_.erase(way);
                      if (!result.ok()) return done(result, {});
                      file.address = uploaded.address;
                      AccountState& state = *self->state_;
                      state.commit.Add(
                          [&state, file](sqlite::Database&) {
                            state.store.files().Put({file, true});
                          },
                          [self, file, done](const biz::ResultCode& stored) {
                            done(stored, stored.ok() ? file : link::File{});
                          });
                    });
}

void Courier::Fetch(const std::string& name, biz::IMCallback<> done) {
  std::optional<KnownFile> known;
  const biz::ResultCode read = sqlite::Guarded([&] { known = state_->store.files().Find(name); });
  if (!read.ok()) return done(read);
  if (IsHere(name, known)) return done({});
  if (!known) return done(NotThere());
  SwitchOf({name, false});
  wanted_.insert_or_assign(name, known->file);
  downloads_.Ask(name, std::move(done));
}

void Courier::Fetch(const link::File& file, biz::IMCallback<> done) {
  if (HasWhole(file)) return done({});
  SwitchOf({file.name, false});
  wanted_.insert_or_assign(file.name, file);
  downloads_.Ask(file.name, std::move(done));
}

void Courier::Download(const std::string& name, biz::IMCallback<> done) {
  const Way way{name, false};
  const link::File file = wanted_.at(name);
  const link::Cancelled cancelled = SwitchOf(way);
  if (*cancelled) return Arrived(file, Stopped(), done);
  const auto aside = PartOf(name);
  std::error_code failure;
  std::filesystem::create_directories(aside.parent_path(), failure);
  std::filesystem::create_directories(PathOf(name).parent_path(), failure);
  state_->line->Ask(
      link::Download{file, aside, ProgressOf(way, file.size), cancelled},
      base::BindWeak(weak_from_this(),
                     [file, done = std::move(done)](Courier& here, const biz::ResultCode& result,
                                                    const link::Nothing&) {
                       here.Arrived(file, result, done);
                     }));
}

void Courier::Arrived(const link::File& file, const biz::ResultCode& result,
                      const biz::IMCallback<>& done) {
  const Way way{file.name, false};
  const auto cancelled = SwitchOf(way);
  if (!result.ok()) return Settled(file, result, done);
  const auto path = PartOf(file.name);
  if (file.size < kLargeFileBytes) {
    return Settled(file, Check(path, file.name, [] { return false; }), done);
  }
  const auto settled =
      base::BindWeak(weak_from_this(), [file, done](Courier& here, const biz::ResultCode& outcome) {
        here.Settled(file, outcome, done);
      });
  const auto gives_up = [cancelled, ending = state_->Ending()] { return *cancelled || ending(); };
  state_->aside->PostTask(FROM_HERE,
                          [runner = state_->runner, path, name = file.name, gives_up, settled] {
                            const biz::ResultCode outcome = Check(path, name, gives_up);
                            runner->PostTask(FROM_HERE, [settled, outcome] { settled(outcome); });
                          });
}

void Courier::Settled(const link::File& file, const biz::ResultCode& result,
                      const biz::IMCallback<>& done) {
  const auto aside = PartOf(file.name);
  const auto way = ways_.extract(Way{file.name, false});
  const bool cancelled = !way.empty() && *way.mapped();
  wanted_.erase(file.name);
  biz::ResultCode outcome = cancelled && !result.ok() ? Stopped() : result;
  std::error_code failed;
  if (outcome.ok()) {
    std::filesystem::rename(aside, PathOf(file.name), failed);
    if (failed) outcome = {biz::kEngineStorage, 0, L"the file could not be kept"};
  }
  // What has come of one that is given up is worth nothing; any other part is gone on with.
  if (cancelled && !outcome.ok()) std::filesystem::remove(aside, failed);
  done(outcome);
}

}  // namespace imsdk::account
