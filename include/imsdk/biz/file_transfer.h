// Cloud files: every file that was sent in a chat or a tribe, kept by the server for the
// conversation, and its way between server and this machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/callback.h"
#include "imsdk/biz/conversation_id.h"
#include "kexbase/event.h"
#include "kexbase/file_path.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// The numbers of the enumerations are on pages.

enum IMNodeType : std::int32_t {
  kNodeFile = 0,
  kNodeFolder = 1,  // a conversation, as the parent of its files; lists have none
};

enum IMTransferType : std::int32_t {
  kTransferNone = 0,  // the file has not moved since the account logged in
  kTransferUpload = 1,
  kTransferDownload = 2,
};

enum IMTransferStatus : std::int32_t {
  kTransferIdle = 0,     // nothing moves; an earlier part may be kept to go on from
  kTransferWaiting = 1,  // for its turn, or for the link
  kTransferRunning = 2,
  kTransferDone = 3,       // the whole file is here, and at the server
  kTransferFailed = 4,     // what had come is kept to go on from
  kTransferCancelled = 5,  // nothing is kept
};

// What a search looked at.
enum IMFileSearchMethod : std::int32_t {
  kSearchFileNames = 0,
};

// Most files in one page.
inline constexpr std::int32_t kMaxFilesInPage = 100;
// Letters of what is searched for.
inline constexpr std::size_t kMaxFileSearchLetters = 256;

// How far a file has come on its way.
struct FileTransferInfo {
  std::int32_t progress = 0;  // in percent, 0 to 100
  IMTransferStatus status = kTransferIdle;
  IMTransferType type = kTransferNone;
  // Where the file is here, relative to the data folder with "/"; empty while it is not here whole.
  std::wstring filePath;
  IMConversationID owner{};  // whose file it is; not part of the record that pages get

  friend bool operator==(const FileTransferInfo&, const FileTransferInfo&) = default;
};

// The message that carried a file.
struct CloudFileMsg {
  std::int64_t msgid = 0;
  std::int64_t localtime = 0;  // by the sender's clock, milliseconds since the Unix epoch
  std::int64_t svrtime = 0;    // by the server's clock
  IMUserID from{};

  static constexpr auto Bounds() { return Bounded(Inner("from", &CloudFileMsg::from)); }
};

// A cloud file. In a request `id` and, where the operation says so, `owner` count; the rest is what
// the server says, whatever a page sends.
struct CloudFileMeta {
  std::int64_t id = 0;
  std::int64_t parentId = 0;  // the same for all files of a conversation
  std::wstring nodeName;      // as its sender named it, cleaned for every file system
  std::int64_t nodeSize = 0;  // in bytes
  IMNodeType nodeType = kNodeFile;
  std::wstring md5;  // lower-case hexadecimal digits
  CloudFileMsg msginfo{};
  IMConversationID owner{};     // the conversation; a user or a tribe
  FileTransferInfo transfer{};  // as it was when the record was made

  static constexpr auto Bounds() {
    return Bounded(Letters("nodeName", &CloudFileMeta::nodeName, kMaxPathLetters),
                   Letters("md5", &CloudFileMeta::md5, kMaxNameLetters),
                   Inner("msginfo", &CloudFileMeta::msginfo),
                   Inner("owner", &CloudFileMeta::owner));
  }
};

// A page of files, newest first. It starts behind `nextkey`; what comes or goes meanwhile neither
// repeats nor hides another file.
struct CloudFilesRequest {
  IMConversationID owner{};  // of one conversation; one that names none means all of the account
  std::int32_t count = 0;    // at most this many; 0 or less, or over `kMaxFilesInPage`, is that
  std::wstring searchKey{};  // letters of the names, in any case; empty finds every file
  std::wstring nextkey{};    // what the page before gave; empty for the first one

  static constexpr auto Bounds() {
    return Bounded(Inner("owner", &CloudFilesRequest::owner),
                   Letters("searchKey", &CloudFilesRequest::searchKey, kMaxFileSearchLetters),
                   Letters("nextkey", &CloudFilesRequest::nextkey, kMaxSecretLetters));
  }
};

struct CloudFiles {
  std::wstring nextkey;  // empty when there is nothing further
  std::vector<CloudFileMeta> filesList;
  IMFileSearchMethod searchMethod = kSearchFileNames;
};

struct IMFolderRequest {
  std::wstring filePath;  // relative to the data folder, with "/"

  static constexpr auto Bounds() {
    return Bounded(Letters("filePath", &IMFolderRequest::filePath, kMaxPathLetters));
  }
};

// How long the server keeps files.
struct IMFileExpireTime {
  std::int64_t expireTime = 0;  // milliseconds since the file was sent; 0: without an end
};

// Raised on engine threads, with the identifier of the file.
struct IMFileEvents {
  // A file came, changed or was deleted; one that is deleted has the size -1.
  base::event<void(std::int64_t, CloudFileMeta)> on_update_cloud_file_meta;
  // A transfer began, ended, or went on; while it goes on a few times a second at most.
  base::event<void(std::int64_t, FileTransferInfo)> on_update_transfer_info;
};

// The cloud files of an account. Any thread. What is no file of a conversation that the account is
// part of now is answered as one that is not there, whatever identifiers are given:
// `kEngineNotFound`, or `kEngineRefused` for a tribe that the account is no member of.
class IIMFileTransfer : public IKexCOMRefCounted {
 public:
  virtual IMFileEvents& Events() = 0;

  // Where the file's transfer stands; whether the file is here is looked up.
  virtual void GetFileTransferInfo(const CloudFileMeta& file,
                                   IMCallback<FileTransferInfo> done) = 0;
  // Answered when the download is taken up, or when the file is here already; how it goes on is
  // told by events. One that was interrupted, also by the end of the program, goes on where it
  // ended. `kEngineBusy` when too many wait. `owner` counts: a file is found in its conversation.
  virtual void DownloadCloudFile(const CloudFileMeta& file, IMCallback<> done) = 0;
  // Ends a transfer and drops what had come of it; `kEngineNotFound` when none is under way.
  virtual void CancelDownloadCloudFile(const CloudFileMeta& file, IMCallback<> done) = 0;
  virtual void CancelUploadFile(const CloudFileMeta& file, IMCallback<> done) = 0;
  // Takes the file out of its conversation for all; who sent it may, and managers of a tribe.
  virtual void DeleteCloudFile(const CloudFileMeta& file, IMCallback<> done) = 0;
  // Good: the path is one of the data folder's `files`, or a folder there.
  virtual void OpenFolder(const IMFolderRequest& request, IMCallback<> done) = 0;
  // Brings the file here and answers then, with its path.
  virtual void PreviewCloudFile(const CloudFileMeta& file, IMCallback<FileTransferInfo> done) = 0;
  virtual void GetCloudFileList(const CloudFilesRequest& request, IMCallback<CloudFiles> done) = 0;
  virtual void SearchCloudFiles(const CloudFilesRequest& request, IMCallback<CloudFiles> done) = 0;
  virtual void GetFileExpireTime(const IMNothing& request, IMCallback<IMFileExpireTime> done) = 0;

 protected:
  ~IIMFileTransfer() = default;
};

}  // namespace imsdk::biz
