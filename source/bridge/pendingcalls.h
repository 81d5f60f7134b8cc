// The calls of one view that wait for their answers.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace imsdk::bridge {

// One call that waits. Its start is in milliseconds of the monotonic clock.
struct PendingCall {
  std::wstring method;
  std::wstring params;
  std::int64_t start = 0;
};

// Sequence identifier to pending call. Bounded, so that a page that floods the bridge with calls
// nobody answers cannot exhaust the memory: over the bound the oldest calls give way. Runs on the
// view's thread.
class PendingCalls {
 public:
  static constexpr std::size_t kMaxCalls = 1'000'000;
  static constexpr std::size_t kMaxText = 64'000'000;  // characters of all texts together

  // Stores a call, replacing one under the same identifier.
  void Add(std::wstring_view seq, PendingCall call);
  bool Has(std::wstring_view seq) const { return by_seq_.contains(seq); }
  // Takes a call out, if it is there.
  std::optional<PendingCall> Take(std::wstring_view seq);
  // While the bound is exceeded: the identifier of the oldest call, which is still stored.
  std::optional<std::wstring> Overdue() const;

 private:
  struct Entry {
    std::wstring seq;
    PendingCall call;
  };
  using Entries = std::list<Entry>;

  static std::size_t TextOf(const Entry& entry);
  void Erase(Entries::iterator entry);

  Entries entries_;  // oldest first
  std::unordered_map<std::wstring_view, Entries::iterator> by_seq_;
  std::size_t text_ = 0;
};

}  // namespace imsdk::bridge
