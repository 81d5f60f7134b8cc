#include "sqlite/interrupt.h"

#include <sqlite3.h>

namespace imsdk::sqlite {

namespace {

constexpr int kInstructions = 20'000;  // of SQLite's machine between two questions

}  // namespace

Interrupt::Interrupt(Database& database, std::function<bool()> unwanted)
    : database_(database), unwanted_(std::move(unwanted)) {
  sqlite3_progress_handler(
      database_.handle(), kInstructions,
      [](void* self) -> int {
        auto& here = *static_cast<Interrupt*>(self);
        here.happened_ = here.happened_ || here.unwanted_();
        return here.happened_ ? 1 : 0;
      },
      this);
}

Interrupt::~Interrupt() { sqlite3_progress_handler(database_.handle(), 0, nullptr, nullptr); }

}  // namespace imsdk::sqlite
