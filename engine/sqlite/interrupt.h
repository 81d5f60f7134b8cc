// Statements that may take long and are wanted no more.
#pragma once

#include <functional>
#include <utility>

#include "sqlite/database.h"

namespace imsdk::sqlite {

// As long as this lives, statements of the connection end with `Error` once `unwanted` says so. It
// is asked every few milliseconds.
class Interrupt {
 public:
  Interrupt(Database& database, std::function<bool()> unwanted);
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

 private:
  Database& database_;
  const std::function<bool()> unwanted_;
  bool happened_ = false;
};

}  // namespace imsdk::sqlite
