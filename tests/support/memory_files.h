// The cloud files of an account of the engine in memory.
#pragma once

#include "imsdk/biz/file_transfer.h"
#include "tests/support/memory_answers.h"

namespace imsdk::test {

class MemoryFileTransfer final
    : public RefPtrCounted<biz::IIMFileTransfer>,
      public MemoryAnswers<biz::FileTransferInfo, biz::CloudFiles, biz::IMFileExpireTime> {
 public:
  biz::IMFileEvents& Events() override { return events; }

  IMSDK_MEMORY_ANSWERS(GetFileTransferInfo, CloudFileMeta, biz::FileTransferInfo)
  IMSDK_MEMORY_ANSWERS(DownloadCloudFile, CloudFileMeta)
  IMSDK_MEMORY_ANSWERS(CancelDownloadCloudFile, CloudFileMeta)
  IMSDK_MEMORY_ANSWERS(CancelUploadFile, CloudFileMeta)
  IMSDK_MEMORY_ANSWERS(DeleteCloudFile, CloudFileMeta)
  IMSDK_MEMORY_ANSWERS(OpenFolder, IMFolderRequest)
  IMSDK_MEMORY_ANSWERS(PreviewCloudFile, CloudFileMeta, biz::FileTransferInfo)
  IMSDK_MEMORY_ANSWERS(GetCloudFileList, CloudFilesRequest, biz::CloudFiles)
  IMSDK_MEMORY_ANSWERS(SearchCloudFiles, CloudFilesRequest, biz::CloudFiles)
  IMSDK_MEMORY_ANSWERS(GetFileExpireTime, IMNothing, biz::IMFileExpireTime)

  biz::IMFileEvents events;
};

}  // namespace imsdk::test
