// Business module "im.filetransfer": cloud files.
#include <utility>

#include "source/bridge/bridgefiletransferfeed.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/jsparams/filerecords.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {
namespace {

using Mgr = biz::IIMFileTransfer;
using Manager = RefPtr<Mgr>;

template <class List>
List ToFileList(const biz::CloudFiles& files) {
  List list;
  list.nextkey = files.nextkey;
  for (const biz::CloudFileMeta& file : files.filesList) {
    list.filesList.push_back(ToFileRecord(file));
  }
  return list;
}

class CBridgeFileTransfer final : public CBridgeBase {
 public:
  using Form = PlainForm;
  static constexpr Name kName = "CBridgeFileTransfer";
  static constexpr RowTexts kTexts{.unreadable = L"jsonStr:"};

  explicit CBridgeFileTransfer(ModuleContext context)
      : CBridgeBase(std::move(context), kFileNotifications, &MakeFileTransferFeed,
                    {"CBridgeFileTransfer::OnAccountChanged", L"GetIMFileTransfer."}) {}
  std::span<const MethodRow> Methods() const override;

  biz::ResultCode Find(Manager* mgr) const {
    *mgr = mgr_;
    return mgr_ ? biz::ResultCode() : NotReady();
  }

  // What is done with a file of a conversation.
  template <auto kOperation>
  void WithFile(const FileRecord& request, Manager mgr, Call<> call) {
    (mgr.get()->*kOperation)(InConversation(request), std::move(call));
  }

  void GetFileTransferInfo(const biz::CloudFileMeta& request, Manager mgr,
                           Call<TransferAnswer> call) {
    mgr->GetFileTransferInfo(request, TransferDone(call));
  }

  void PreviewCloudFile(const FileRecord& request, Manager mgr, Call<TransferAnswer> call) {
    mgr->PreviewCloudFile(InConversation(request), TransferDone(call));
  }

  void GetCloudFileList(const FileListRequest& request, Manager mgr, Call<FileList> call) {
    mgr->GetCloudFileList({request.owner, request.count, {}, request.nextkey}, ListDone(call));
  }

  void SearchCloudFiles(const FileSearchRequest& request, Manager mgr, Call<FoundFiles> call) {
    mgr->SearchCloudFiles({request.owner, request.count, request.searchKey, request.nextkey},
                          [call](const biz::ResultCode& result, const biz::CloudFiles& files) {
                            FoundFiles found = ToFileList<FoundFiles>(files);
                            found.searchMethod = files.searchMethod;
                            call.Finish(result, found);
                          });
  }

 private:
  static biz::CloudFileMeta InConversation(const FileRecord& record) {
    biz::CloudFileMeta file = record.fileMeta;
    file.owner = record.owner;
    return file;
  }
  static biz::IMCallback<biz::FileTransferInfo> TransferDone(const Call<TransferAnswer>& call) {
    return [call](const biz::ResultCode& result, const biz::FileTransferInfo& info) {
      call.Finish(result, {info});
    };
  }
  static biz::IMCallback<biz::CloudFiles> ListDone(const Call<FileList>& call) {
    return [call](const biz::ResultCode& result, const biz::CloudFiles& files) {
      call.Finish(result, ToFileList<FileList>(files));
    };
  }

  void OnAccountChanged(biz::IIMAccount* engine) override {
    CBridgeBase::OnAccountChanged(engine);
    mgr_ = engine ? engine->GetIMFileTransfer() : nullptr;
  }

  Manager mgr_;  // of the current account, or null
};

using M = CBridgeFileTransfer;
constexpr MethodRow kMethods[] = {
    Row<M, "GetFileTransferInfo", &M::GetFileTransferInfo>("Where a file's transfer stands."),
    Row<M, "DownloadCloudFile", &M::WithFile<&Mgr::DownloadCloudFile>>(
        "Brings a file to this machine; how it goes on comes as onUpdateTransferInfo."),
    Row<M, "CancelDownloadCloudFile", &Mgr::CancelDownloadCloudFile>(
        "Ends a download and drops what had come."),
    Row<M, "CancelUploadFile", &Mgr::CancelUploadFile>("Ends an upload."),
    Row<M, "DeleteCloudFile", &M::WithFile<&Mgr::DeleteCloudFile>>(
        "Takes a file out of its conversation; its sender and a tribe's managers only."),
    Row<M, "OpenFolder", &Mgr::OpenFolder>("Whether a path is one whose folder may be shown."),
    Row<M, "PreviewCloudFile", &M::PreviewCloudFile>(
        "Brings a file to this machine and answers with its path then."),
    Row<M, "GetCloudFileList", &M::GetCloudFileList>(
        "A page of files, of one conversation or, without an owner, of all."),
    Row<M, "SearchCloudFiles", &M::SearchCloudFiles>("A page of the files that have such names."),
    Row<M, "GetFileExpireTime", &Mgr::GetFileExpireTime>("How long the server keeps files."),
};

std::span<const MethodRow> CBridgeFileTransfer::Methods() const { return kMethods; }

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeFileTransfer(const ModuleContext& context) {
  return std::make_shared<CBridgeFileTransfer>(context);
}

}  // namespace imsdk::bridge
