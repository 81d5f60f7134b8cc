// The calls of one page that wait for their answers, and the memory that they hold.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>

#include "bridge/imsdkbridge.h"
#include "memory/budget.h"

namespace imsdk::host {

// Counts what the bridge keeps of a call until its answer: a call that is never answered counts as
// long as its page is there. View's thread.
class OpenCalls {
 public:
  explicit OpenCalls(std::shared_ptr<MemoryShare> memory) : memory_(std::move(memory)) {}
  ~OpenCalls() { Clear(); }

  // Counts a call under its sequence identifier, in the place of an older one under the same. A
  // call without an identifier is not kept by the bridge. False when there is no memory for it.
  bool Open(const std::wstring& seq, const bridge::SdkParam& call);
  bool Has(const std::wstring& seq) const { return bytes_.contains(seq); }
  void Close(const std::wstring& seq);
  void Clear();

 private:
  const std::shared_ptr<MemoryShare> memory_;
  std::unordered_map<std::wstring, std::size_t> bytes_;
};

// An argument of a call as the bridge reads it; empty when there is none.
std::wstring TextOf(const bridge::SdkParam& call, std::size_t index);

// A call's sequence identifier as the bridge reads it, which its answer brings back.
std::wstring SequenceOf(const bridge::SdkParam& call);

}  // namespace imsdk::host
