#include "account/tribes/roster.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <utility>

namespace imsdk::account {

namespace {

std::wstring Folded(std::wstring_view text) {
  std::wstring folded(text);
  for (wchar_t& c : folded) c = static_cast<wchar_t>(utf8proc_tolower(c));
  return folded;
}

}  // namespace

void Roster::Put(biz::IMTribeMember member) {
  const auto known = by_user_.find(member.userid);
  if (known != by_user_.end()) member.status = known->second->second.member.status;
  PutFresh(std::move(member));
}

void Roster::PutFresh(biz::IMTribeMember member) {
  Remove(member.userid);
  std::wstring display = Folded(member.display);
  std::wstring names = display + L'\n' + Folded(member.name) + L'\n' + Folded(member.userid.nick);
  biz::IMUserID user = member.userid;
  Place place(-member.level, std::move(display), user);
  const auto row = rows_.emplace(std::move(place), Row{std::move(member), std::move(names)}).first;
  by_user_.emplace(std::move(user), row);
}

void Roster::Remove(const biz::IMUserID& user) {
  list_.reset();
  const auto known = by_user_.find(user);
  if (known == by_user_.end()) return;
  rows_.erase(known->second);
  by_user_.erase(known);
}

bool Roster::SetStatus(const biz::IMUserID& user, biz::TribeMemberBasicStatus status) {
  const auto known = by_user_.find(user);
  if (known == by_user_.end()) return false;
  biz::IMTribeMember& member = known->second->second.member;
  if (std::exchange(member.status, status) == status) return false;
  list_.reset();
  return true;
}

const biz::IMTribeMember* Roster::Find(const biz::IMUserID& user) const {
  const auto known = by_user_.find(user);
  return known == by_user_.end() ? nullptr : &known->second->second.member;
}

std::shared_ptr<const biz::IMTribeRoster> Roster::List() {
  if (!list_ || list_->online != online) {
    auto list = std::make_shared<biz::IMTribeRoster>();
    list->total = static_cast<std::int32_t>(rows_.size());
    list->online = online;
    list->memberlist.reserve(rows_.size());
    for (const auto& [place, row] : rows_) list->memberlist.push_back(row.member);
    list_ = std::move(list);
  }
  return list_;
}

std::vector<biz::IMTribeMember> Roster::Search(const std::wstring& key) {
  const std::wstring wanted = Folded(key);
  enum Rank : std::size_t { kFavoured, kBegins, kHas, kRanks };
  std::array<std::vector<const biz::IMTribeMember*>, kRanks> ranks;
  for (const auto& [place, row] : rows_) {
    const std::size_t at = row.names.find(wanted);
    if (at == std::wstring::npos) continue;
    const bool begins = at == 0 || row.names[at - 1] == L'\n' ||
                        row.names.find(L'\n' + wanted, at) != std::wstring::npos;
    const Rank rank = favoured_.contains(row.member.userid) ? kFavoured : begins ? kBegins : kHas;
    if (ranks[rank].size() < kMostFoundMembers) ranks[rank].push_back(&row.member);
  }
  std::vector<biz::IMTribeMember> found;
  for (const auto& rank : ranks) {
    for (const biz::IMTribeMember* member : rank) {
      if (found.size() < kMostFoundMembers) found.push_back(*member);
    }
  }
  found_.clear();
  for (const biz::IMTribeMember& member : found) found_.insert(member.userid);
  return found;
}

bool Roster::Favour() {
  if (found_.empty()) return false;
  favoured_ = std::exchange(found_, {});
  return true;
}

}  // namespace imsdk::account
