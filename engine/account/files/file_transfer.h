// The account's cloud files as the bridge sees them.
#pragma once

#include <memory>
#include <utility>

#include "account/files/transfers.h"
#include "account/session/on_worker.h"
#include "imsdk/biz/file_transfer.h"

namespace imsdk::account {

class FileTransfer final : public RefPtrCounted<biz::IIMFileTransfer> {
 public:
  template <class... Answer>
  using Done = biz::IMCallback<Answer...>;

  FileTransfer(std::shared_ptr<AccountState> state, std::shared_ptr<Transfers> transfers)
      : state_(std::move(state)), transfers_(std::move(transfers)) {}

  biz::IMFileEvents& Events() override { return state_->file_events; }
  void GetFileTransferInfo(const biz::CloudFileMeta& file,
                           Done<biz::FileTransferInfo> done) override;
  void DownloadCloudFile(const biz::CloudFileMeta& file, Done<> done) override;
  void CancelDownloadCloudFile(const biz::CloudFileMeta& file, Done<> done) override;
  void CancelUploadFile(const biz::CloudFileMeta& file, Done<> done) override;
  void DeleteCloudFile(const biz::CloudFileMeta& file, Done<> done) override;
  void OpenFolder(const biz::IMFolderRequest& request, Done<> done) override;
  void PreviewCloudFile(const biz::CloudFileMeta& file, Done<biz::FileTransferInfo> done) override;
  void GetCloudFileList(const biz::CloudFilesRequest& request, Done<biz::CloudFiles> done) override;
  void SearchCloudFiles(const biz::CloudFilesRequest& request, Done<biz::CloudFiles> done) override;
  void GetFileExpireTime(const biz::IMNothing& request, Done<biz::IMFileExpireTime> done) override;

 private:
  void List(const biz::CloudFilesRequest& request, Done<biz::CloudFiles> done);

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Transfers> transfers_;
};

}  // namespace imsdk::account
