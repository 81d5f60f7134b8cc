#include "embedded/file_desk.h"

#include <algorithm>
#include <string>

#include "embedded/file_room.h"
#include "embedded/tribe_rights.h"

namespace imsdk::embedded {

namespace {

biz::ResultCode NoSuchFile() { return Failure(biz::kEngineNotFound, L"there is no such file"); }

bool NamesNone(const biz::IMConversationID& cid) { return !cid.is_tribe() && cid.user.empty(); }

}  // namespace

std::int64_t FileDesk::Since() { return limits_.life_ms > 0 ? store_.Now() - limits_.life_ms : 0; }

Outcome<link::Nothing> FileDesk::Answer(const Caller& caller, const UploadStart& request) {
  const auto largest = static_cast<std::uint64_t>(limits_.largest);
  if (request.file.size > largest) {
    return Failure(biz::kEngineTooLarge, L"the file is larger than the server takes: " +
                                             std::to_wstring(largest) + L" bytes");
  }
  if (store_.files().HasUploaded(caller.account, DigestOf(request.file))) return {};
  const std::int64_t used = store_.files().Uploaded(caller.account);
  if (static_cast<std::int64_t>(request.file.size) > limits_.quota - used) {
    return Failure(biz::kEngineTooLarge,
                   L"the account's files would be more than the server keeps "
                   L"for it: " +
                       std::to_wstring(limits_.quota) + L" bytes");
  }
  return {};
}

Outcome<link::Uploaded> FileDesk::Answer(const Caller& caller, const link::Upload& request) {
  link::Uploaded uploaded{DigestOf(request.file)};
  store_.files().AddUpload(caller.account, uploaded.address,
                           static_cast<std::int64_t>(request.file.size));
  return uploaded;
}

Outcome<link::Nothing> FileDesk::Answer(const Caller& caller, const link::Download& request) {
  // To everybody else it is as if it were not there.
  if (!store_.files().WasSent(caller.account, request.file.address, Since())) return NoSuchFile();
  return {};
}

biz::ResultCode FileDesk::Sight(const Caller& caller, const biz::IMConversationID& cid,
                                FileQuery* query) {
  query->account = caller.account;
  query->since = Since();
  const Found found = FindConversation(store_, caller, cid);
  if (!found.result.ok()) return found.result;
  // Two who never talked share no files, and no number stands for that.
  if (found.conversation == 0) return NoSuchFile();
  query->conversation = found.conversation;
  if (found.stay && !found.open_history) query->joined = found.stay->joined;
  return {};
}

Outcome<link::FilesPart> FileDesk::Answer(const Caller& caller, const link::ListFiles& request) {
  FileQuery query;
  if (NamesNone(request.cid)) {
    query.account = caller.account;
    query.since = Since();
  } else if (const auto why = Sight(caller, request.cid, &query); !why.ok()) {
    if (why.code == biz::kEngineNotFound) return link::FilesPart{};
    return why;
  }
  if (!request.place.empty()) {
    const auto place = ParsePosition(request.place);
    if (!place) return Failure(biz::kEngineRefused, L"the page's key is none of the server's");
    query.before = *place;
  }
  query.search = request.search;
  const std::int32_t count = request.count <= 0 || request.count > biz::kMaxFilesInPage
                                 ? biz::kMaxFilesInPage
                                 : request.count;
  query.count = count + 1;
  link::FilesPart part;
  part.files = store_.files().List(query);
  if (std::ssize(part.files) > count) {
    part.files.pop_back();
    part.next = std::to_string(part.files.back().node);
  }
  return part;
}

Outcome<link::CloudFile> FileDesk::Answer(const Caller& caller, const link::FindFile& request) {
  FileQuery query;
  if (NamesNone(request.cid)) {
    query.account = caller.account;
    query.since = Since();
  } else if (const auto why = Sight(caller, request.cid, &query); !why.ok()) {
    return why;
  }
  const auto file = store_.files().Find(query, request.node);
  if (!file) return NoSuchFile();
  return *file;
}

Outcome<link::Nothing> FileDesk::Answer(const Caller& caller, const link::DeleteFile& request) {
  FileQuery query;
  if (const auto why = Sight(caller, request.cid, &query); !why.ok()) return why;
  const auto file = store_.files().Find(query, request.node);
  if (!file) return NoSuchFile();
  if (file->from != caller.user) {
    if (!request.cid.is_tribe()) {
      return Failure(biz::kEngineRefused, L"only its sender can delete the file");
    }
    const Admitted admitted = Admit(store_, caller, request.cid.tribe, TribeAct::kReadAsManager);
    if (!admitted.ok()) return admitted.result;
  }
  store_.files().Delete(request.node);
  Outcome<link::Nothing> outcome;
  const auto tell = [&](const Stream& stream) {
    NewEntry entry{stream, EntryKind::kFileDeleted, query.conversation};
    entry.numbers = {request.node};
    outcome.effects.news.push_back({stream, store_.mail().AddEntry(entry), 0});
  };
  if (request.cid.is_tribe()) {
    tell({Stream::Kind::kTribe, query.conversation});
    return outcome;
  }
  tell({Stream::Kind::kAccount, caller.account});
  const auto peer = store_.accounts().Find(request.cid.user);
  if (peer && peer->id != caller.account) tell({Stream::Kind::kAccount, peer->id});
  return outcome;
}

Outcome<biz::IMFileExpireTime> FileDesk::Answer(const Caller& /*caller*/,
                                                const link::GetFileLife& /*request*/) {
  return biz::IMFileExpireTime{limits_.life_ms};
}

}  // namespace imsdk::embedded
