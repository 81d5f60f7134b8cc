// Where the files of an account's conversations stand on their way.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "account/files/courier.h"
#include "account/session/account_state.h"
#include "imsdk/biz/file_transfer.h"
#include "link/file_operations.h"

namespace imsdk::account {

// Used on the account's worker; raises the events of transfers. A message whose files are on their
// way to the server is known here by its identifier below zero: the server has no number for it.
class Transfers : public std::enable_shared_from_this<Transfers> {
 public:
  Transfers(std::shared_ptr<AccountState> state, std::shared_ptr<Courier> courier);
  // Hears of what crosses; called once, before anything is asked.
  void Listen();

  // The files of an own message begin their way, and have ended it: `nodes` are their numbers when
  // the server has the message.
  void UploadBegins(const biz::IMMessage& message, const std::vector<std::string>& names);
  void UploadEnds(std::int64_t msgid, const biz::ResultCode& result,
                  const std::vector<std::int64_t>& nodes);
  void CancelUpload(const biz::CloudFileMeta& file, const biz::IMCallback<>& done);

  // `taken` is called once it is under way, `whole` (which may be empty) when the file is here.
  void Download(const link::CloudFile& file, const biz::IMCallback<>& taken,
                biz::IMCallback<biz::FileTransferInfo> whole);
  void CancelDownload(std::int64_t node, const biz::IMCallback<>& done);
  // The link is back: goes on with what it broke off.
  void Connected();

  // What is known of a file without the server; null when nothing is.
  const biz::FileTransferInfo* Find(std::int64_t id) const;
  biz::CloudFileMeta ToMeta(const link::CloudFile& file) const;
  biz::FileTransferInfo InfoOf(const link::CloudFile& file) const;

  // What the server tells.
  void Came(const link::Message& message);
  void Deleted(const link::FileDeleted& what);

 private:
  struct Moving {
    biz::FileTransferInfo info;
    biz::CloudFileMeta meta;
    std::uint64_t attempt = 0;                       // the last one that fetches it
    link::CloudFile file;                            // of a download
    std::map<std::string, std::uint64_t> crossed{};  // of an upload, by name
    std::map<std::string, std::uint64_t> sizes{};
    std::vector<biz::IMCallback<biz::FileTransferInfo>> waiting{};
  };
  bool Waits(const Moving& moving) const;
  void Fetch(std::int64_t node);
  void Fetched(std::int64_t node, std::uint64_t attempt, const biz::ResultCode& result);
  void Crossed(const std::string& name, bool upload, std::uint64_t bytes, std::uint64_t size);
  void Set(std::int64_t id, Moving& moving, biz::IMTransferStatus status);
  std::wstring PathOf(const std::string& name) const;

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Courier> courier_;
  std::map<std::int64_t, Moving> moving_;
  std::uint64_t attempts_ = 0;
};

}  // namespace imsdk::account
