#include "source/bridge/pendingcalls.h"

#include <utility>

namespace imsdk::bridge {

void PendingCalls::Add(std::wstring_view seq, PendingCall call) {
  if (const auto old = by_seq_.find(seq); old != by_seq_.end()) Erase(old->second);
  entries_.push_back({std::wstring(seq), std::move(call)});
  const auto added = std::prev(entries_.end());
  by_seq_.emplace(added->seq, added);
  text_ += TextOf(*added);
}

std::optional<PendingCall> PendingCalls::Take(std::wstring_view seq) {
  const auto found = by_seq_.find(seq);
  if (found == by_seq_.end()) return std::nullopt;
  text_ -= TextOf(*found->second);
  PendingCall call = std::move(found->second->call);
  const auto entry = found->second;
  by_seq_.erase(found);
  entries_.erase(entry);
  return call;
}

std::optional<std::wstring> PendingCalls::Overdue() const {
  if (entries_.size() <= kMaxCalls && text_ <= kMaxText) return std::nullopt;
  return entries_.front().seq;
}

std::size_t PendingCalls::TextOf(const Entry& entry) {
  return entry.seq.size() + entry.call.method.size() + entry.call.params.size();
}

void PendingCalls::Erase(Entries::iterator entry) {
  text_ -= TextOf(*entry);
  by_seq_.erase(entry->seq);
  entries_.erase(entry);
}

}  // namespace imsdk::bridge
