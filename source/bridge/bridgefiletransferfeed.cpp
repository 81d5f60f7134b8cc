#include "source/bridge/bridgefiletransferfeed.h"

#include <utility>

#include "source/bridge/jsparams/filerecords.h"
#include "trace/traceproxy.h"

namespace imsdk::bridge {
namespace {

constexpr Notification<CloudFileUpdate> kOnUpdateCloudFileMeta{
    L"onUpdateCloudFileMeta", "A file came into a conversation, changed or was deleted."};
constexpr Notification<TransferUpdate> kOnUpdateTransferInfo{L"onUpdateTransferInfo",
                                                             "A file's transfer went on or ended."};

constexpr const NotifyInfo* kRows[] = {&kOnUpdateCloudFileMeta, &kOnUpdateTransferInfo};

class FileTransferFeed final : public CAccountFeed {
 public:
  explicit FileTransferFeed(RefPtr<biz::IIMAccount> account)
      : CAccountFeed(std::move(account), kRows) {}

 private:
  void Update() override {
    if (mgr_) return;
    mgr_ = account().GetIMFileTransfer();
    if (!mgr_) return;
    Subscribe(mgr_->Events().on_update_cloud_file_meta, &FileTransferFeed::OnUpdateCloudFileMeta);
    Subscribe(mgr_->Events().on_update_transfer_info, &FileTransferFeed::OnUpdateTransferInfo);
  }

  template <class Payload>
  void Tell(const Notification<Payload>& row, const char* handler, const Payload& payload) {
    ns_log::CTraceProxy(ns_log::kRoutine, {handler}, row.name)
        .Brief("_brief_,json",
               [&](std::wstring* made) -> std::wstring_view { return *made = row.Text(payload); });
    Notify(row, payload);
  }

  void OnUpdateCloudFileMeta(std::int64_t /*id*/, const biz::CloudFileMeta& file) {
    Tell(kOnUpdateCloudFileMeta, "CBridgeFileTransfer::OnUpdateCloudFileMeta",
         {ToFileRecord(file), file.transfer});
  }
  void OnUpdateTransferInfo(std::int64_t id, const biz::FileTransferInfo& info) {
    Tell(kOnUpdateTransferInfo, "CBridgeFileTransfer::OnUpdateTransferInfo",
         {{info.owner}, id, info});
  }

  RefPtr<biz::IIMFileTransfer> mgr_;  // null until subscribed
};

}  // namespace

constinit const NotifyList kFileNotifications = kRows;

std::shared_ptr<CAccountFeed> MakeFileTransferFeed(RefPtr<biz::IIMAccount> account) {
  return std::make_shared<FileTransferFeed>(std::move(account));
}

}  // namespace imsdk::bridge
