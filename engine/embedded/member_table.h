// The members of tribes, whom they pay attention to, and who may not become one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "imsdk/biz/tribe.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

struct StoredMember {
  std::int64_t account = 0;
  biz::IMUserID user{};
  biz::TribeMemberLevel level = biz::kTribeMember;
  std::wstring nickname{};
  std::int64_t activity = 0;   // messages lately, in thousandths, at `active_at`
  std::int64_t active_at = 0;  // milliseconds since the Unix epoch
};

// The record that a page sees, at this time. A user is called by the nick: the server knows no
// other names.
biz::IMTribeMember ToMember(const StoredMember& member, biz::TribeMemberBasicStatus status,
                            std::int64_t now);

// Used on the store's thread. Functions may throw `sqlite::Error`.
class MemberTable {
 public:
  explicit MemberTable(sqlite::Database& database) : database_(database) {}

  std::optional<StoredMember> Find(std::int64_t conversation, std::int64_t account);
  // At most `count` members behind an account, in the order of the accounts' numbers.
  std::vector<StoredMember> Behind(std::int64_t conversation, std::int64_t account,
                                   std::int64_t count);
  // Owner and administrators, at most `count`.
  std::vector<std::int64_t> Managers(std::int64_t conversation, std::int64_t count);

  void Add(std::int64_t conversation, std::int64_t account, biz::TribeMemberLevel level);
  // And whom it pays attention to there.
  void Remove(std::int64_t conversation, std::int64_t account);
  void SetLevel(std::int64_t conversation, std::int64_t account, biz::TribeMemberLevel level);
  // False when it is so already.
  bool SetNickname(std::int64_t conversation, std::int64_t account, const std::wstring& nickname);
  void SetRemind(std::int64_t conversation, std::int64_t account, biz::TribeMsgRemindType type);
  // The member has written a message.
  void NoteMessage(std::int64_t conversation, std::int64_t account, std::int64_t now);

  void SetAttention(std::int64_t account, std::int64_t conversation, std::int64_t member, bool on);
  // Those who are still members.
  std::vector<StoredMember> Attention(std::int64_t account, std::int64_t conversation);

  bool IsBlack(std::int64_t conversation, std::int64_t account);
  void SetBlack(std::int64_t conversation, std::int64_t account, bool on, std::int64_t now);
  struct Black {
    std::int64_t account = 0;
    biz::IMTribeBlackItem item;
  };
  std::vector<Black> BlackBehind(std::int64_t conversation, std::int64_t account,
                                 std::int64_t count);

 private:
  sqlite::Database& database_;
};

}  // namespace imsdk::embedded
