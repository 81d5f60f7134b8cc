// The frame that a page is sending.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "memory/budget.h"

namespace imsdk::host {

// Grows with what comes and counts it. View's strand.
class IncomingFrame {
 public:
  explicit IncomingFrame(std::shared_ptr<MemoryShare> memory) : memory_(std::move(memory)) {}
  ~IncomingFrame() { Done(); }

  // Once there is no memory for a piece, what came before it is let go and the rest is skipped.
  void Add(std::string_view piece);
  // Whether the frame was skipped.
  bool skipped() const { return skipped_; }
  std::size_t size() const { return text_.size(); }
  // Hands the text over; it counts until `Done`.
  std::string Take() { return std::move(text_); }
  // Begins the next frame.
  void Done();

 private:
  // Up to here a frame always has room: the view's own memory.
  static constexpr std::size_t kPrepaid = 64u << 10;

  bool MakeRoom(std::size_t more);

  const std::shared_ptr<MemoryShare> memory_;
  std::string text_;
  std::size_t counted_ = kPrepaid;
  bool skipped_ = false;
};

}  // namespace imsdk::host
