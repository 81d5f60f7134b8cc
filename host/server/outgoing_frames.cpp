#include "server/outgoing_frames.h"

#include <utility>

namespace imsdk::host {

std::size_t OutgoingFrames::ToCount(std::size_t bytes, std::size_t frames) {
  const std::size_t held = bytes + frames * kOverhead;
  return held > kPrepaid ? held - kPrepaid : 0;
}

std::string OutgoingFrames::Add(std::string frame) {
  frame.shrink_to_fit();  // so that what is counted is what is held
  const std::size_t bytes = frame.capacity();
  if (bytes_ + bytes > longest_) {
    return "the page reads too slowly: over " + std::to_string(longest_) + " bytes wait for it";
  }
  const std::size_t to_count = ToCount(bytes_ + bytes, frames_.size() + 1);
  if (!memory_->Take(to_count - counted_)) {
    return "the host's memory is full: the page left " + std::to_string(bytes_) + " bytes unread";
  }
  frames_.push_back(std::move(frame));
  bytes_ += bytes;
  counted_ = to_count;
  return {};
}

void OutgoingFrames::DropFront() {
  bytes_ -= frames_.front().capacity();
  frames_.pop_front();
  const std::size_t to_count = ToCount(bytes_, frames_.size());
  memory_->Give(counted_ - to_count);
  counted_ = to_count;
}

}  // namespace imsdk::host
