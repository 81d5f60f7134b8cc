// Files on the embedded server: who brought what, who may fetch it, and the files of conversations.
#pragma once

#include <cstdint>

#include "embedded/address_book.h"
#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// What the server takes, and how long it gives it out; 0 for a time without an end.
struct FileLimits {
  std::int64_t life_ms = 0;
  std::int64_t largest = 0;  // bytes of one file
  std::int64_t quota = 0;    // of all files of one account
};

// A content that is to be brought.
struct UploadStart {
  link::File file;
};

// A desk; see `PostDesk`. The contents are `FileRoom`'s.
class FileDesk {
 public:
  FileDesk(ServerStore& store, const FileLimits& limits) : store_(store), limits_(limits) {}

  // Asked before the content is taken.
  Outcome<link::Nothing> Answer(const Caller& caller, const UploadStart& request);
  // Asked once the content is there.
  Outcome<link::Uploaded> Answer(const Caller& caller, const link::Upload& request);
  // Asked before the content is handed out.
  Outcome<link::Nothing> Answer(const Caller& caller, const link::Download& request);
  Outcome<link::FilesPart> Answer(const Caller& caller, const link::ListFiles& request);
  Outcome<link::CloudFile> Answer(const Caller& caller, const link::FindFile& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::DeleteFile& request);
  Outcome<biz::IMFileExpireTime> Answer(const Caller& caller, const link::GetFileLife& request);

 private:
  // The time since which files are given out.
  std::int64_t Since();
  // What the caller sees of a conversation's files, or why nothing.
  biz::ResultCode Sight(const Caller& caller, const biz::IMConversationID& cid, FileQuery* query);

  ServerStore& store_;
  const FileLimits limits_;
};

}  // namespace imsdk::embedded
