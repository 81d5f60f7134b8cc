#include "account/files/file_transfer.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

biz::ResultCode NoSuchFolder() { return {biz::kEngineNotFound, 0, L"there is no such folder"}; }

}  // namespace

void FileTransfer::GetFileTransferInfo(const biz::CloudFileMeta& file,
                                       Done<biz::FileTransferInfo> done) {
  OnWorker(
      state_, file,
      [transfers = transfers_, done](AccountState& here, const auto& asked) {
        if (const biz::FileTransferInfo* info = transfers->Find(asked->id)) {
          return done({}, *info);
        }
        here.line->Ask(link::FindFile{{}, asked->id},
                       [transfers, done](const biz::ResultCode& result, const auto& found) {
                         done(result,
                              result.ok() ? transfers->InfoOf(found) : biz::FileTransferInfo{});
                       });
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

void FileTransfer::DownloadCloudFile(const biz::CloudFileMeta& file, Done<> done) {
  AskServer(state_, link::FindFile{file.owner, file.id},
            Done<link::CloudFile>([transfers = transfers_, done](const biz::ResultCode& result,
                                                                 const link::CloudFile& found) {
              if (!result.ok()) return done(result);
              transfers->Download(found, done, {});
            }));
}

void FileTransfer::PreviewCloudFile(const biz::CloudFileMeta& file,
                                    Done<biz::FileTransferInfo> done) {
  AskServer(state_, link::FindFile{file.owner, file.id},
            Done<link::CloudFile>([transfers = transfers_, done](const biz::ResultCode& result,
                                                                 const link::CloudFile& found) {
              if (!result.ok()) return done(result, {});
              transfers->Download(
                  found, [](const biz::ResultCode&) {}, done);
            }));
}

void FileTransfer::CancelDownloadCloudFile(const biz::CloudFileMeta& file, Done<> done) {
  OnWorker(
      state_, file,
      [transfers = transfers_, done](AccountState&, const auto& asked) {
        transfers->CancelDownload(asked->id, done);
      },
      done);
}

void FileTransfer::CancelUploadFile(const biz::CloudFileMeta& file, Done<> done) {
  OnWorker(
      state_, file,
      [transfers = transfers_, done](AccountState&, const auto& asked) {
        transfers->CancelUpload(*asked, done);
      },
      done);
}

void FileTransfer::DeleteCloudFile(const biz::CloudFileMeta& file, Done<> done) {
  AskServer(state_, link::DeleteFile{file.owner, file.id}, std::move(done));
}

void FileTransfer::OpenFolder(const biz::IMFolderRequest& request, Done<> done) {
  OnWorker(
      state_, request,
      [done](AccountState& here, const auto& asked) {
        namespace fs = std::filesystem;
        std::error_code failure;
        const fs::path root =
            fs::canonical(here.environment->folder.root() / kFilesFolder, failure);
        if (failure) return done(NoSuchFolder());
        // Links and ".." are followed before it is looked where that leads.
        const fs::path asked_for = fs::canonical(
            here.environment->folder.root() / ToPath(base::FilePath(asked->filePath)), failure);
        if (failure ||
            std::mismatch(root.begin(), root.end(), asked_for.begin(), asked_for.end()).first !=
                root.end()) {
          return done(NoSuchFolder());
        }
        done({});
      },
      done);
}

void FileTransfer::GetCloudFileList(const biz::CloudFilesRequest& request,
                                    Done<biz::CloudFiles> done) {
  biz::CloudFilesRequest all = request;
  all.searchKey.clear();
  List(all, std::move(done));
}

void FileTransfer::SearchCloudFiles(const biz::CloudFilesRequest& request,
                                    Done<biz::CloudFiles> done) {
  List(request, std::move(done));
}

void FileTransfer::List(const biz::CloudFilesRequest& request, Done<biz::CloudFiles> done) {
  AskServer(state_,
            link::ListFiles{request.owner, request.searchKey, base::WideToUTF8(request.nextkey),
                            request.count},
            Done<link::FilesPart>([transfers = transfers_, done](const biz::ResultCode& result,
                                                                 const link::FilesPart& part) {
              biz::CloudFiles files;
              files.nextkey = base::UTF8ToWide(part.next);
              for (const link::CloudFile& file : part.files) {
                files.filesList.push_back(transfers->ToMeta(file));
              }
              done(result, files);
            }));
}

void FileTransfer::GetFileExpireTime(const biz::IMNothing& /*request*/,
                                     Done<biz::IMFileExpireTime> done) {
  AskServer(state_, link::GetFileLife{}, std::move(done));
}

}  // namespace imsdk::account
