// JSON forms of cloud files and their transfers.
#pragma once

#include <string>
#include <vector>

#include "imsdk/biz/file_transfer.h"
#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

// The kinds of conversations that have cloud files.
enum FileOwnerType : std::int32_t {
  kFileOwnerUser = biz::kCIDUser,
  kFileOwnerTribe = biz::kCIDTribe,
};
inline constexpr Values kFileOwnerType{
    Value<kFileOwnerUser>("A one-to-one conversation, named by the user it is held with."),
    Value<kFileOwnerTribe>("A tribe."),
};
inline constexpr Values kNodeType{
    Value<biz::kNodeFile>("A file."),
    Value<biz::kNodeFolder>("A folder."),
};
inline constexpr Values kTransferType{
    Value<biz::kTransferNone>("The file has not moved."),
    Value<biz::kTransferUpload>("To the server."),
    Value<biz::kTransferDownload>("To this machine."),
};
inline constexpr Values kTransferStatus{
    Value<biz::kTransferIdle>("Nothing moves."),
    Value<biz::kTransferWaiting>("It waits for its turn or for the link."),
    Value<biz::kTransferRunning>("It is under way."),
    Value<biz::kTransferDone>("The whole file is here."),
    Value<biz::kTransferFailed>("It failed; another try goes on where it ended."),
    Value<biz::kTransferCancelled>("It was cancelled."),
};
inline constexpr Values kSearchMethod{
    Value<biz::kSearchFileNames>("The names of the files."),
};

template <>
struct Record<biz::CloudFileMsg> {
  using R = biz::CloudFileMsg;
  static constexpr auto kFields =
      FieldList(Field("msgid", &R::msgid, "The message's identifier."),
                Field("localtime", &R::localtime, "When it was sent, by the sender's clock."),
                Field("svrtime", &R::svrtime, "When it was sent, by the server's clock."),
                Field("from", &R::from, "Who sent it."));
};

template <>
struct Record<biz::CloudFileMeta> {
  using R = biz::CloudFileMeta;
  static constexpr auto kFields = FieldList(
      Field("id", &R::id, "The file's identifier."),
      Field("parentId", &R::parentId, "The identifier of its folder; one for a conversation."),
      Field("nodeName", &R::nodeName, "Its name, fit for every disk."),
      Field("nodeSize", &R::nodeSize, "Its size in bytes; -1 when it was deleted."),
      Field("nodeType", &R::nodeType, "What it is.", &kNodeType),
      Field("md5", &R::md5, "The digest of its content."),
      Field("msginfo", &R::msginfo, "The message that carried it."));
};

template <>
struct Record<biz::FileTransferInfo> {
  using R = biz::FileTransferInfo;
  static constexpr auto kFields =
      FieldList(Field("progress", &R::progress, "How far it has come, in percent."),
                Field("status", &R::status, "Where it stands.", &kTransferStatus),
                Field("type", &R::type, "Which way the file goes.", &kTransferType),
                Field("filePath", &R::filePath,
                      "Where the file is in the data folder; empty while it is not here whole."));
};

// Whose a file is, at the begin of a record that derives from this.
struct FileOwner {
  biz::IMConversationID owner;

  bool IsUsers() const { return !owner.is_tribe(); }
  bool IsTribes() const { return owner.is_tribe(); }
};

template <class R>
constexpr auto OwnerFields() {
  using Id = biz::IMConversationID;
  return FieldList(
      Field("type", Path(&R::owner, &Id::type), "Whose the file is.", &kFileOwnerType),
      OfKind("Of a one-to-one conversation", &R::IsUsers,
             Field("appkey", Path(&R::owner, &Id::user, &biz::IMUserID::appkey),
                   "The application that the user belongs to."),
             Field("nick", Path(&R::owner, &Id::user, &biz::IMUserID::nick),
                   "The user's name there.")),
      OfKind("Of a tribe", &R::IsTribes,
             Field("tribeid", Path(&R::owner, &Id::tribe, &biz::IMTribeID::id), "The tribe.")));
}

struct FileRecord : FileOwner {
  biz::CloudFileMeta fileMeta;
};
template <>
struct Record<FileRecord> {
  using R = FileRecord;
  static constexpr auto kFields =
      FieldList(OwnerFields<R>(), Field("fileMeta", &R::fileMeta, "The file."));
};

inline FileRecord ToFileRecord(const biz::CloudFileMeta& file) { return {{file.owner}, file}; }

struct FileListRequest : FileOwner {
  std::int32_t count = 0;
  std::wstring nextkey;
};
template <>
struct Record<FileListRequest> {
  using R = FileListRequest;
  static constexpr auto kFields =
      FieldList(Field("count", &R::count, "At most this many files."),
                Field("nextkey", &R::nextkey, "Where the page begins; empty for the first one."),
                OwnerFields<R>());
};

struct FileSearchRequest : FileListRequest {
  std::wstring searchKey;
};
template <>
struct Record<FileSearchRequest> {
  using R = FileSearchRequest;
  static constexpr auto kFields =
      FieldList(Field("count", &R::count, "At most this many files."),
                Field("searchKey", &R::searchKey, "Letters of the file's name, in any case."),
                Field("nextkey", &R::nextkey, "Where the page begins; empty for the first one."),
                OwnerFields<R>());
};

struct FileList {
  std::wstring nextkey;
  std::vector<FileRecord> filesList;
};
template <class R>
constexpr auto FileListFields() {
  return FieldList(
      Field("nextkey", &R::nextkey, "Where the next page begins; empty when there is none."),
      Field("filesList", &R::filesList, "The files, newest first."));
}
template <>
struct Record<FileList> {
  static constexpr auto kFields = FileListFields<FileList>();
};

struct FoundFiles : FileList {
  biz::IMFileSearchMethod searchMethod = biz::kSearchFileNames;
};
template <>
struct Record<FoundFiles> {
  static constexpr auto kFields = FieldList(
      FileListFields<FoundFiles>(),
      Field("searchMethod", &FoundFiles::searchMethod, "What was looked at.", &kSearchMethod));
};

struct TransferAnswer {
  biz::FileTransferInfo transferInfo;
};
template <>
struct Record<TransferAnswer> {
  static constexpr auto kFields = FieldList(
      Field("transferInfo", &TransferAnswer::transferInfo, "Where the file's transfer stands."));
};

template <>
struct Record<biz::IMFolderRequest> {
  static constexpr auto kFields =
      FieldList(Field("filePath", &biz::IMFolderRequest::filePath,
                      "A file or folder below `files` in the data folder."));
};

template <>
struct Record<biz::IMFileExpireTime> {
  static constexpr auto kFields =
      FieldList(Field("expireTime", &biz::IMFileExpireTime::expireTime,
                      "Milliseconds for which a file is kept; 0 for no end."));
};

struct CloudFileUpdate {
  FileRecord fileInfo;
  biz::FileTransferInfo transferInfo;
};
template <>
struct Record<CloudFileUpdate> {
  using R = CloudFileUpdate;
  static constexpr auto kFields =
      FieldList(Field("fileInfo", &R::fileInfo, "The file and whose it is."),
                Field("transferInfo", &R::transferInfo, "Where its transfer stands."));
};

struct TransferUpdate : FileOwner {
  std::int64_t id = 0;
  biz::FileTransferInfo transferInfo;
};
template <>
struct Record<TransferUpdate> {
  using R = TransferUpdate;
  static constexpr auto kFields =
      FieldList(OwnerFields<R>(), Field("id", &R::id, "The file's identifier."),
                Field("transferInfo", &R::transferInfo, "Where its transfer stands."));
};

}  // namespace imsdk::bridge
