#include "account/files/courier.h"

#include <fstream>
#include <optional>
#include <system_error>
#include <utility>

#include "account/session/line.h"
#include "kexbase/guid.h"
#include "kexbase/md5.h"

namespace imsdk::account {

namespace {

// Side by side, for one account; uploads and downloads each.
constexpr std::size_t kAtOnce = 3;

biz::ResultCode NotThere() { return {biz::kEngineNotFound, 0, L"there is no such file"}; }

bool IsFile(const std::filesystem::path& file) {
  std::error_code failure;
  return std::filesystem::is_regular_file(file, failure);
}

// Whether the file has the content that its name promises.
bool IsWhole(const std::filesystem::path& file, const std::string& name) {
  std::error_code failure;
  const auto size = std::filesystem::file_size(file, failure);
  if (failure) return false;
  std::string content(static_cast<std::size_t>(size), '\0');
  std::ifstream in(file, std::ios::binary);
  in.read(content.data(), static_cast<std::streamsize>(content.size()));
  return in && name.starts_with(base::MD5String(content));
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

void Courier::Provide(const std::string& name, biz::IMCallback<link::File> done) {
  std::optional<KnownFile> known;
  const biz::ResultCode read = sqlite::Guarded([&] { known = state_->store.files().Find(name); });
  if (!read.ok()) return done(read, {});
  if (known && (known->own || !IsHere(name, known))) return done({}, known->file);
  if (!known && !IsFile(PathOf(name))) return done(NotThere(), {});
  uploads_.Ask(name, std::move(done));
}

void Courier::Upload(const std::string& name, biz::IMCallback<link::File> done) {
  std::error_code failure;
  link::File file{name, {}, std::filesystem::file_size(PathOf(name), failure)};
  if (failure) return done(NotThere(), {});
  state_->line->Ask(link::Upload{PathOf(name), file, {}},
                    [weak = weak_from_this(), file, done = std::move(done)](
                        const biz::ResultCode& result, const link::Uploaded& uploaded) mutable {
                      const auto self = weak.lock();
                      if (!self) return;
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
  downloads_.Ask(name, std::move(done));
}

void Courier::Download(const std::string& name, biz::IMCallback<> done) {
  std::optional<KnownFile> known;
  const biz::ResultCode read = sqlite::Guarded([&] { known = state_->store.files().Find(name); });
  if (!read.ok()) return done(read);
  if (!known) return done(NotThere());
  const auto aside =
      state_->environment->folder.IncomingFolder(state_->self) / base::GenerateGUID();
  std::error_code failure;
  std::filesystem::create_directories(aside.parent_path(), failure);
  std::filesystem::create_directories(PathOf(name).parent_path(), failure);
  state_->line->Ask(link::Download{known->file, aside, {}},
                    [weak = weak_from_this(), final_place = PathOf(name), name, aside,
                     done = std::move(done)](const biz::ResultCode& result, const link::Nothing&) {
                      const auto self = weak.lock();
                      if (!self) return;
                      biz::ResultCode outcome = result;
                      std::error_code failed;
                      if (outcome.ok() && !IsWhole(aside, name)) {
                        outcome = {biz::kEngineStorage, 0, L"the file that came is another one"};
                      }
                      if (outcome.ok() && !sqlite::SyncToDisk(aside)) {
                        outcome = {biz::kEngineStorage, 0, L"the file could not be kept"};
                      }
                      if (outcome.ok()) std::filesystem::rename(aside, final_place, failed);
                      if (failed) outcome = {biz::kEngineStorage, 0, L"the file could not be kept"};
                      if (!outcome.ok()) std::filesystem::remove(aside, failed);
                      done(outcome);
                    });
}

}  // namespace imsdk::account
