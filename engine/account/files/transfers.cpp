#include "account/files/transfers.h"

#include <algorithm>
#include <utility>

#include "account/files/file_names.h"
#include "account/files/file_tokens.h"
#include "kexbase/callback.h"
#include "kexbase/message_body.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

// Downloads that are not finished, those that wait for the link among them.
constexpr std::ptrdiff_t kMostWaiting = 1'000;
// What has ended and is still remembered.
constexpr std::size_t kMostKept = 10'000;

biz::ResultCode NothingUnderWay() {
  return {biz::kEngineNotFound, 0, L"no such transfer is under way"};
}

std::int32_t Percent(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 100 : static_cast<std::int32_t>(std::min(part, whole) * 100 / whole);
}

}  // namespace

Transfers::Transfers(std::shared_ptr<AccountState> state, std::shared_ptr<Courier> courier)
    : state_(std::move(state)), courier_(std::move(courier)) {}

void Transfers::Listen() {
  courier_->SetProgress(base::BindWeak(weak_from_this(), &Transfers::Crossed));
}

std::wstring Transfers::PathOf(const std::string& name) const {
  return base::UTF8ToWide(state_->environment->folder.FilesFolder(state_->self) + '/' + name);
}

bool Transfers::Waits(const Moving& moving) const {
  return moving.info.status == biz::kTransferWaiting || moving.info.status == biz::kTransferRunning;
}

void Transfers::Set(std::int64_t id, Moving& moving, biz::IMTransferStatus status) {
  moving.info.status = status;
  state_->file_events.on_update_transfer_info(id, moving.info);
}

void Transfers::UploadBegins(const biz::IMMessage& message, const std::vector<std::string>& names) {
  Moving& moving = moving_[-message.msgid];
  moving = {};
  biz::CloudFileMeta& meta = moving.meta;
  meta.id = -message.msgid;
  meta.owner = message.cid;
  meta.msginfo = {message.msgid, message.msgtime, 0, state_->self};
  std::error_code missing;
  for (const std::string& name : names) {
    const auto size =
        std::filesystem::file_size(state_->environment->folder.FileOf(state_->self, name), missing);
    moving.sizes[name] = missing ? 0 : size;
    meta.nodeSize += missing ? 0 : static_cast<std::int64_t>(size);
  }
  meta.md5 = base::UTF8ToWide(names.front().substr(0, 32));
  meta.nodeName = base::UTF8ToWide(names.front());
  for (const base::BodyPart& part : base::ReadBody(message.msgbody)) {
    if (part.kind != base::BodyPart::kFile) continue;
    meta.nodeName = CleanFileName(part.name);
    break;
  }
  moving.info = {0, biz::kTransferWaiting, biz::kTransferUpload, PathOf(names.front()), meta.owner};
  meta.transfer = moving.info;
  state_->file_events.on_update_cloud_file_meta(meta.id, meta);
}

void Transfers::UploadEnds(std::int64_t msgid, const biz::ResultCode& result,
                           const std::vector<std::int64_t>& nodes) {
  const auto entry = moving_.find(-msgid);
  if (entry == moving_.end()) return;
  Moving moving = std::move(entry->second);
  moving_.erase(entry);
  if (result.ok()) moving.info.progress = 100;
  const bool cancelled = moving.info.status == biz::kTransferCancelled;
  if (result.ok() || !cancelled) {
    Set(-msgid, moving, result.ok() ? biz::kTransferDone : biz::kTransferFailed);
  }
  if (!result.ok() || nodes.size() != 1) return;
  moving.meta.id = nodes.front();
  moving.meta.transfer = moving.info;
  state_->file_events.on_update_cloud_file_meta(moving.meta.id, moving.meta);
}

void Transfers::CancelUpload(const biz::CloudFileMeta& file, const biz::IMCallback<>& done) {
  const auto entry = moving_.find(file.id < 0 ? file.id : -file.msginfo.msgid);
  if (entry == moving_.end() || entry->second.info.type != biz::kTransferUpload) {
    return done(NothingUnderWay());
  }
  Set(entry->first, entry->second, biz::kTransferCancelled);
  for (const auto& [name, size] : entry->second.sizes) courier_->Cancel(name, true);
  done({});
}

void Transfers::Download(const link::CloudFile& file, const biz::IMCallback<>& taken,
                         biz::IMCallback<biz::FileTransferInfo> whole) {
  if (!IsFileName(base::UTF8ToWide(file.file.name))) {
    const biz::ResultCode not_there{biz::kEngineNotFound, 0, L"there is no such file"};
    taken(not_there);
    if (whole) whole(not_there, {});
    return;
  }
  const auto known = moving_.find(file.node);
  if (known == moving_.end() || !Waits(known->second)) {
    const auto waiting = std::count_if(moving_.begin(), moving_.end(),
                                       [&](const auto& one) { return Waits(one.second); });
    if (waiting >= kMostWaiting) {
      const biz::ResultCode busy{biz::kEngineBusy, 0, L"too many files are on their way"};
      taken(busy);
      if (whole) whole(busy, {});
      return;
    }
    if (moving_.size() >= kMostKept) {
      std::erase_if(moving_, [&](const auto& one) { return !Waits(one.second); });
    }
    Moving& moving = moving_[file.node];
    moving = {};
    moving.file = file;
    moving.info = {0, biz::kTransferWaiting, biz::kTransferDownload, {}, file.cid};
    if (whole) moving.waiting.push_back(std::move(whole));
    taken({});
    Set(file.node, moving, biz::kTransferWaiting);
    return Fetch(file.node);
  }
  if (whole) known->second.waiting.push_back(std::move(whole));
  taken({});
}

void Transfers::Fetch(std::int64_t node) {
  Moving& moving = moving_.at(node);
  moving.attempt = ++attempts_;
  courier_->Fetch(
      moving.file.file,
      base::BindWeak(weak_from_this(), [node, attempt = moving.attempt](
                                           Transfers& here, const biz::ResultCode& result) {
        here.Fetched(node, attempt, result);
      }));
}

void Transfers::Fetched(std::int64_t node, std::uint64_t attempt, const biz::ResultCode& result) {
  const auto entry = moving_.find(node);
  if (entry == moving_.end() || entry->second.attempt != attempt) return;
  Moving& moving = entry->second;
  // A broken link is no failure of the file: it goes on when the link is back.
  const bool broken = result.code == biz::kEngineNoLink || result.code == biz::kEngineTimeout;
  const bool cancelled = moving.info.status == biz::kTransferCancelled;
  // Asked for again while what was cancelled still came to its end.
  if (Courier::WasCancelled(result) && !cancelled) return Fetch(node);
  if (broken && !cancelled) return Set(node, moving, biz::kTransferWaiting);
  if (result.ok()) {
    moving.info.progress = 100;
    moving.info.filePath = PathOf(moving.file.file.name);
  }
  const auto waiting = std::exchange(moving.waiting, {});
  const biz::FileTransferInfo info = moving.info;
  if (!cancelled || result.ok()) {
    Set(node, moving, result.ok() ? biz::kTransferDone : biz::kTransferFailed);
  }
  for (const auto& whole : waiting) whole(result, result.ok() ? moving.info : info);
}

void Transfers::CancelDownload(std::int64_t node, const biz::IMCallback<>& done) {
  const auto entry = moving_.find(node);
  if (entry == moving_.end() || !Waits(entry->second) ||
      entry->second.info.type != biz::kTransferDownload) {
    return done(NothingUnderWay());
  }
  const std::string name = entry->second.file.file.name;
  entry->second.info.progress = 0;
  Set(node, entry->second, biz::kTransferCancelled);
  for (const auto& whole : std::exchange(entry->second.waiting, {})) {
    whole({biz::kEngineRefused, 0, L"the transfer was cancelled"}, {});
  }
  // Another message may have brought the same content, and somebody still wants that.
  const bool wanted = std::any_of(moving_.begin(), moving_.end(), [&](const auto& one) {
    return Waits(one.second) && one.second.file.file.name == name;
  });
  if (!wanted) courier_->Cancel(name, false);
  done({});
}

void Transfers::Connected() {
  std::vector<std::int64_t> broken;
  for (const auto& [id, moving] : moving_) {
    if (moving.info.type == biz::kTransferDownload && moving.info.status == biz::kTransferWaiting) {
      broken.push_back(id);
    }
  }
  for (const std::int64_t id : broken) Fetch(id);
}

void Transfers::Crossed(const std::string& name, bool upload, std::uint64_t bytes,
                        std::uint64_t size) {
  for (auto& [id, moving] : moving_) {
    if (!Waits(moving)) continue;
    if (upload && moving.info.type == biz::kTransferUpload && moving.sizes.contains(name)) {
      moving.crossed[name] = bytes;
      std::uint64_t crossed = 0;
      for (const auto& [of, part] : moving.crossed) crossed += part;
      moving.info.progress = Percent(crossed, static_cast<std::uint64_t>(moving.meta.nodeSize));
      Set(id, moving, biz::kTransferRunning);
    } else if (!upload && moving.info.type == biz::kTransferDownload &&
               moving.file.file.name == name) {
      moving.info.progress = Percent(bytes, size);
      Set(id, moving, biz::kTransferRunning);
    }
  }
}

const biz::FileTransferInfo* Transfers::Find(std::int64_t id) const {
  const auto entry = moving_.find(id);
  return entry == moving_.end() ? nullptr : &entry->second.info;
}

biz::FileTransferInfo Transfers::InfoOf(const link::CloudFile& file) const {
  const auto entry = moving_.find(file.node);
  if (entry != moving_.end() && entry->second.info.status != biz::kTransferDone) {
    return entry->second.info;
  }
  biz::FileTransferInfo info;
  info.owner = file.cid;
  if (!IsFileName(base::UTF8ToWide(file.file.name)) || !courier_->HasWhole(file.file)) return info;
  const bool own = file.from == state_->self;
  return {100, biz::kTransferDone, own ? biz::kTransferUpload : biz::kTransferDownload,
          PathOf(file.file.name), file.cid};
}

biz::CloudFileMeta Transfers::ToMeta(const link::CloudFile& file) const {
  biz::CloudFileMeta meta;
  meta.id = file.node;
  meta.parentId = file.folder;
  meta.nodeName = CleanFileName(file.name);
  meta.nodeSize = static_cast<std::int64_t>(file.file.size);
  meta.md5 = base::UTF8ToWide(file.file.name.substr(0, 32));
  meta.msginfo = {file.msgid, file.msgtime, file.svrtime, file.from};
  meta.owner = file.cid;
  meta.transfer = InfoOf(file);
  return meta;
}

void Transfers::Came(const link::Message& message) {
  for (const link::File& file : message.files) {
    if (file.node == 0) continue;
    link::CloudFile cloud{file.node,
                          0,
                          base::UTF8ToWide(file.name),
                          file,
                          message.cid,
                          message.from,
                          message.msgid,
                          message.msgtime,
                          message.svrtime};
    for (const base::BodyPart& part : base::ReadBody(message.body)) {
      if (part.kind == base::BodyPart::kFile && part.path == base::UTF8ToWide(file.name)) {
        cloud.name = part.name;
      }
    }
    state_->file_events.on_update_cloud_file_meta(file.node, ToMeta(cloud));
  }
}

void Transfers::Deleted(const link::FileDeleted& what) {
  const auto entry = moving_.find(what.node);
  if (entry != moving_.end() && Waits(entry->second)) {
    CancelDownload(what.node, [](const biz::ResultCode&) {});
  }
  biz::CloudFileMeta meta;
  meta.id = what.node;
  meta.nodeSize = -1;
  meta.owner = what.cid;
  meta.transfer.owner = what.cid;
  state_->file_events.on_update_cloud_file_meta(what.node, meta);
}

}  // namespace imsdk::account
