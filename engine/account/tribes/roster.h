// The members of one tribe, as the account knows them after a deep login.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "imsdk/biz/tribe_mgr.h"

namespace imsdk::account {

// What a search finds at most.
inline constexpr std::size_t kMostFoundMembers = 200;

// Adding, removing and changing one member costs the same however many there are, nearly. Used on
// the account's worker.
class Roster {
 public:
  // Adds the member, or puts it in the place of the one of this user. The status of one that is
  // there stays.
  void Put(biz::IMTribeMember member);
  // The same with the status.
  void PutFresh(biz::IMTribeMember member);
  void Remove(const biz::IMUserID& user);
  // False when there is no such member or nothing changes.
  bool SetStatus(const biz::IMUserID& user, biz::TribeMemberBasicStatus status);
  // Null when there is no such member.
  const biz::IMTribeMember* Find(const biz::IMUserID& user) const;
  std::size_t size() const { return by_user_.size(); }

  std::int32_t online = 0;  // as the server counts

  // All members, the highest level first, then by display names. Made once after each change.
  std::shared_ptr<const biz::IMTribeRoster> List();
  // See `IIMTribeMgr::SearchTribeMember`.
  std::vector<biz::IMTribeMember> Search(const std::wstring& key);
  // What the last search found comes first from now on. False when there was none.
  bool Favour();

 private:
  // Level from above, display name without case, user.
  using Place = std::tuple<int, std::wstring, biz::IMUserID>;
  struct Row {
    biz::IMTribeMember member;
    std::wstring names;  // all of them, folded, one in a line
  };
  using Rows = std::map<Place, Row>;

  Rows rows_;
  std::unordered_map<biz::IMUserID, Rows::iterator> by_user_;
  std::shared_ptr<const biz::IMTribeRoster> list_;
  std::unordered_set<biz::IMUserID> found_;
  std::unordered_set<biz::IMUserID> favoured_;
};

}  // namespace imsdk::account
