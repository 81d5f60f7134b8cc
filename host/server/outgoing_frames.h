// The frames that wait for a page to read them.
#pragma once

#include <deque>
#include <memory>
#include <string>

#include "memory/budget.h"

namespace imsdk::host {

// First in, first out, counted in the host's memory. View's strand.
class OutgoingFrames {
 public:
  // `longest`: bytes that may wait.
  OutgoingFrames(std::shared_ptr<MemoryShare> memory, std::size_t longest)
      : memory_(std::move(memory)), longest_(longest) {}
  ~OutgoingFrames() { memory_->Give(counted_); }

  // Why the frame cannot wait with the others; empty when it does from now on.
  std::string Add(std::string frame);
  const std::string& front() const { return frames_.front(); }
  void DropFront();
  std::size_t size() const { return frames_.size(); }

 private:
  static constexpr std::size_t kOverhead = 64;  // of a frame in the queue
  // Up to here frames always have room: the view's own memory. A page that reads what it gets is
  // told of a refusal however full the host's memory is.
  static constexpr std::size_t kPrepaid = 256u << 10;

  static std::size_t ToCount(std::size_t bytes, std::size_t frames);

  const std::shared_ptr<MemoryShare> memory_;
  const std::size_t longest_;
  std::deque<std::string> frames_;
  std::size_t bytes_ = 0;    // in frames_
  std::size_t counted_ = 0;  // in memory_
};

}  // namespace imsdk::host
