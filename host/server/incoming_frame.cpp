#include "server/incoming_frame.h"

#include <algorithm>

namespace imsdk::host {

void IncomingFrame::Add(std::string_view piece) {
  if (skipped_) return;
  if (MakeRoom(piece.size())) {
    text_ += piece;
  } else {
    Done();
    skipped_ = true;
  }
}

bool IncomingFrame::MakeRoom(std::size_t more) {
  if (text_.size() + more <= counted_) return true;
  const std::size_t wanted = std::max(text_.size() + more, 2 * counted_);
  if (!memory_->Take(wanted - counted_)) return false;
  counted_ = wanted;
  text_.reserve(wanted);
  return true;
}

void IncomingFrame::Done() {
  text_ = {};
  memory_->Give(counted_ - kPrepaid);
  counted_ = kPrepaid;
  skipped_ = false;
}

}  // namespace imsdk::host
