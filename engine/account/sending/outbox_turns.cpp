// How messages that are stored get their turn to be handed over.
#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "account/files/file_tokens.h"
#include "account/sending/outbox.h"
#include "kexbase/callback.h"

namespace imsdk::account {

namespace {

// What the server gets to do for one account at once.
constexpr std::size_t kMostInWork = 64;
constexpr std::size_t kMostBytesInWork = 4 * 1024 * 1024;

}  // namespace

void Outbox::Queue(const biz::IMConversationID& cid, std::int64_t msgid) {
  open_.at(msgid).deadline = Deadline::max();  // it begins when its turn comes
  std::deque<std::int64_t>& turns = turns_[cid];
  turns.push_back(msgid);
  if (turns.size() == 1) Ready(cid);
}

void Outbox::Ready(const biz::IMConversationID& cid) {
  ready_.push_back(cid);
  TakeTurns();
}

void Outbox::TakeTurns() {
  if (std::exchange(taking_turns_, true)) return;
  while (!ready_.empty() && in_work_ < kMostInWork && bytes_in_work_ < kMostBytesInWork) {
    const biz::IMConversationID cid = std::move(ready_.front());
    ready_.pop_front();
    TakeTurn(cid);
  }
  taking_turns_ = false;
}

void Outbox::TakeTurn(const biz::IMConversationID& cid) {
  const auto turns = turns_.find(cid);
  if (turns == turns_.end()) return;
  std::deque<std::int64_t>& queue = turns->second;
  while (!queue.empty() && !open_.contains(queue.front())) queue.pop_front();
  if (queue.empty()) {
    turns_.erase(turns);
    return;
  }
  const std::int64_t msgid = queue.front();
  Open& open = open_.at(msgid);
  if (open.stage == Stage::kPreparing) return;
  const auto parcel = Load(cid, msgid);
  if (parcel) {
    open.in_work = 1 + parcel->message.msgbody.size() + parcel->message.extinfo.others.size();
    ++in_work_;
    bytes_in_work_ += open.in_work;
    if (!parcel->names.empty()) {
      open.stage = Stage::kPreparing;
      parcel->aside = IsLarge(*parcel);
      transfers_->UploadBegins(parcel->message, parcel->names);
      if (parcel->aside) {
        queue.pop_front();
        ready_.push_back(cid);
      }
      return FetchFiles(parcel);
    }
  }
  queue.pop_front();
  if (parcel) Deliver(*parcel);
  ready_.push_back(cid);
}

std::shared_ptr<Outbox::Parcel> Outbox::Load(const biz::IMConversationID& cid, std::int64_t msgid) {
  std::optional<Unsent> found;
  biz::ResultCode read = sqlite::Guarded([&] { found = state_->store.FindUnsent(cid, msgid); });
  if (read.ok() && !found) read = {biz::kEngineNotFound, 0, L"there is no such message"};
  if (!read.ok()) {
    Answered(msgid, read);
    return nullptr;
  }
  auto parcel = std::make_shared<Parcel>(Parcel{cid, msgid, link_, std::move(found->message)});
  parcel->names = FileNamesIn(parcel->message.msgbody, state_->files_in_tokens);
  return parcel;
}

bool Outbox::IsLarge(const Parcel& parcel) const {
  std::uint64_t bytes = 0;
  for (const std::string& name : parcel.names) {
    std::error_code missing;
    const auto size =
        std::filesystem::file_size(state_->environment->folder.FileOf(state_->self, name), missing);
    if (!missing) bytes += size;
  }
  return bytes >= kLargeFileBytes;
}

void Outbox::StopWork(Open& open) {
  if (open.in_work == 0) return;
  --in_work_;
  bytes_in_work_ -= std::exchange(open.in_work, 0);
}

void Outbox::FetchFiles(const std::shared_ptr<Parcel>& parcel) {
  if (parcel->files.size() == parcel->names.size()) return Prepared(parcel, {});
  const std::string& name = parcel->names[parcel->files.size()];
  courier_->Provide(
      name, base::BindWeak(weak_from_this(), [parcel](Outbox& outbox, const biz::ResultCode& result,
                                                      const link::File& file) {
        // From a task of its own: thousands of files that are known at once must not pile up on
        // the stack.
        outbox.state_->runner->PostTask(
            FROM_HERE,
            base::BindWeak(outbox.weak_from_this(), [parcel, result, file](Outbox& here) {
              here.Provided(parcel, result, file);
            }));
      }));
}

void Outbox::Provided(const std::shared_ptr<Parcel>& parcel, const biz::ResultCode& result,
                      const link::File& file) {
  if (parcel->link != link_) return;
  if (result.code == biz::kEngineNotFound) {
    // Its token goes on as it is.
    parcel->names.erase(parcel->names.begin() + std::ssize(parcel->files));
  } else if (!result.ok()) {
    return Prepared(parcel, result);
  } else {
    parcel->files.push_back(file);
  }
  FetchFiles(parcel);
}

void Outbox::Prepared(const std::shared_ptr<Parcel>& parcel, const biz::ResultCode& result) {
  const auto turns = turns_.find(parcel->cid);
  if (!parcel->aside && (turns == turns_.end() || turns->second.front() != parcel->msgid)) {
    return;  // closed
  }
  const auto entry = open_.find(parcel->msgid);
  if (entry != open_.end() && result.code == biz::kEngineNoLink) {
    // A server that wants nothing now and keeps the link: time runs out for the message.
    entry->second.stage = Stage::kWaiting;
    StopWork(entry->second);
    SetDeadline(parcel->msgid, entry->second);
    WaitForDeadline();
    return TakeTurns();
  }
  if (!parcel->aside) turns->second.pop_front();
  if (entry != open_.end()) {
    if (result.ok()) {
      Deliver(*parcel);
    } else {
      Answered(parcel->msgid, result);
    }
  }
  if (!parcel->aside) Ready(parcel->cid);
}

void Outbox::Deliver(const Parcel& parcel) {
  Open& open = open_.at(parcel.msgid);
  open.stage = Stage::kHanded;
  SetDeadline(parcel.msgid, open);
  const biz::IMMessage& message = parcel.message;
  link::Message outgoing;
  outgoing.cid = message.cid;
  outgoing.from = message.fromid;
  outgoing.msgid = message.msgid;
  outgoing.msgtime = message.msgtime;
  outgoing.msgtype = message.msgtype;
  outgoing.body = parcel.names.empty()
                      ? message.msgbody
                      : WithoutFolder(message.msgbody, state_->files_in_tokens, parcel.names);
  outgoing.ext = message.extinfo;
  outgoing.files = parcel.files;
  outgoing.at = {message.tribeat.atmsgtype, message.tribeat.atmembers};
  // Whoever receives it without the one before it only has a hole less to notice.
  sqlite::Guarded([&] { outgoing.previous = state_->store.OwnBefore(message.cid, message.msgid); });
  state_->line->Ask(
      link::Deliver{std::move(outgoing)},
      base::BindWeak(weak_from_this(),
                     [msgid = parcel.msgid](Outbox& outbox, const biz::ResultCode& result,
                                            const link::Delivered& how) {
                       outbox.Delivered(msgid, result, how);
                     }));
}

}  // namespace imsdk::account
