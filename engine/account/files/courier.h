// Takes an account's files to the server and brings them from there.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "account/files/once_per_file.h"
#include "account/session/account_state.h"
#include "imsdk/biz/callback.h"
#include "link/message.h"

namespace imsdk::account {

// Used on the account's worker; callbacks are called there. Files are named as on the link.
class Courier : public std::enable_shared_from_this<Courier> {
 public:
  explicit Courier(std::shared_ptr<AccountState> state);

  // What a message of the account that names the file passes on for it: the file is brought to the
  // server unless that was done before; one that is not here goes on as it was received.
  // `kEngineNotFound` when the account knows no such file.
  void Provide(const std::string& name, biz::IMCallback<link::File> done);
  // Brings the file into the account's folder unless it is there whole. A part that an earlier
  // attempt left, whenever that was, is gone on with.
  void Fetch(const std::string& name, biz::IMCallback<> done);
  // The same for a file that the store need not know.
  void Fetch(const link::File& file, biz::IMCallback<> done);
  // Ends the file's way, for all who wait for it, and drops what came of it.
  void Cancel(const std::string& name, bool upload);
  // Whether this is the outcome of what somebody cancelled.
  static bool WasCancelled(const biz::ResultCode& result);
  // Whether the file is in the account's folder whole, as far as its size tells.
  bool HasWhole(const link::File& file) const { return IsHere(file.name, KnownFile{file}); }

  // Is told how many of a file's bytes have crossed, a few times a second.
  using Progress = std::function<void(const std::string& name, bool upload, std::uint64_t bytes,
                                      std::uint64_t size)>;
  void SetProgress(Progress progress) { progress_ = std::move(progress); }
  // Removes the parts of files that nobody went on with for a week.
  void DropOldParts();

 private:
  void Upload(const std::string& name, biz::IMCallback<link::File> done);
  void Download(const std::string& name, biz::IMCallback<> done);
  // The content has crossed, or has not: a good one is checked, a large one aside.
  void Arrived(const link::File& file, const biz::ResultCode& result,
               const biz::IMCallback<>& done);
  void Settled(const link::File& file, const biz::ResultCode& result,
               const biz::IMCallback<>& done);
  std::filesystem::path PathOf(const std::string& name) const;
  // Whether the file is here and not cut short, as far as its size tells.
  bool IsHere(const std::string& name, const std::optional<KnownFile>& known) const;

  // A file's way in one direction.
  using Way = std::pair<std::string, bool>;
  // The switch that ends it, made when it is new.
  link::Cancelled SwitchOf(const Way& way);
  link::Progress ProgressOf(const Way& way, std::uint64_t size);
  std::filesystem::path PartOf(const std::string& name) const;

  const std::shared_ptr<AccountState> state_;
  Progress progress_;
  std::map<Way, link::Cancelled> ways_;
  std::map<std::string, link::File> wanted_;  // downloads that the store need not know
  OncePerFile<link::File> uploads_;
  OncePerFile<> downloads_;
};

}  // namespace imsdk::account
