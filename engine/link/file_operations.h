// What an account can ask its server for about the files of its conversations.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/file_transfer.h"
#include "link/message.h"

namespace imsdk::link {

// A file as a message of a conversation has it.
struct CloudFile {
  std::int64_t node = 0;    // the server's number for it
  std::int64_t folder = 0;  // and for its conversation's files
  std::wstring name;        // as its sender wrote it: anything may stand in it
  File file;
  biz::IMConversationID cid;
  biz::IMUserID from;
  std::int64_t msgid = 0;
  std::int64_t msgtime = 0;
  std::int64_t svrtime = 0;
};

// Files that the account can fetch now, newest first: of one conversation, or of all when `cid`
// names none. It starts behind `place`, which stays good while files come and go.
struct ListFiles {
  using Reply = struct FilesPart;
  biz::IMConversationID cid;
  std::wstring search{};  // letters of the name, in any case; empty: all
  std::string place{};
  std::int32_t count = 0;  // 1 to `biz::kMaxFilesInPage`

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("owner", &ListFiles::cid),
                        biz::Letters("searchKey", &ListFiles::search, biz::kMaxFileSearchLetters),
                        biz::Letters("nextkey", &ListFiles::place, biz::kMaxSecretLetters));
  }
};
struct FilesPart {
  std::vector<CloudFile> files;
  std::string next;  // empty when there is nothing further
};

// One of them, of any conversation when `cid` names none. `kEngineNotFound` for whatever is not in
// this conversation.
struct FindFile {
  using Reply = CloudFile;
  biz::IMConversationID cid;
  std::int64_t node = 0;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("owner", &FindFile::cid)); }
};

// Takes a file out of its conversation; everybody there hears of it. `kEngineRefused` unless the
// account sent it or manages the tribe.
struct DeleteFile {
  using Reply = struct Nothing;
  biz::IMConversationID cid;
  std::int64_t node = 0;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("owner", &DeleteFile::cid)); }
};

struct GetFileLife {
  using Reply = biz::IMFileExpireTime;

  static constexpr auto Bounds() { return biz::Bounded(); }
};

}  // namespace imsdk::link
