// Takes an account's files to the server and brings them from there.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
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
  // Brings the file into the account's folder unless it is there whole.
  void Fetch(const std::string& name, biz::IMCallback<> done);

 private:
  void Upload(const std::string& name, biz::IMCallback<link::File> done);
  void Download(const std::string& name, biz::IMCallback<> done);
  std::filesystem::path PathOf(const std::string& name) const;
  // Whether the file is here and not cut short, as far as its size tells.
  bool IsHere(const std::string& name, const std::optional<KnownFile>& known) const;

  const std::shared_ptr<AccountState> state_;
  OncePerFile<link::File> uploads_;
  OncePerFile<> downloads_;
};

}  // namespace imsdk::account
