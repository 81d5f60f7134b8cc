// Numbers for messages: unique, growing, also over restarts and clocks that are set back.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "kexbase/lock.h"
#include "kexbase/task_runner.h"
#include "sqlite/kept_store.h"

namespace imsdk::account {

// The layout of a number from the top: milliseconds since the Unix epoch, a counter within the
// millisecond (10 bits; more messages run ahead of the clock), the installation (10 bits).
inline constexpr int kCounterBits = 10;
inline constexpr int kNodeBits = 10;

// Numbers below a ceiling may be given out; the ceiling is on the disk before they are, and a
// restart begins above it. `Next` never waits for that: the ceiling is raised from a task, long
// before it is reached.
class MessageIds : public std::enable_shared_from_this<MessageIds> {
 public:
  using Clock = std::function<std::int64_t()>;  // milliseconds since the Unix epoch

  // Opens or makes the store and holds it against other processes, so that two engines cannot
  // share a data folder. Throws `sqlite::Error`.
  MessageIds(const sqlite::StorePlace& place, Clock clock,
             std::shared_ptr<base::TaskRunner> runner);

  // What the store was found to have lost. The numbers are those of another installation then.
  const std::optional<sqlite::Loss>& loss() const { return loss_; }

  // Any thread.
  std::int64_t Next();
  std::int64_t Now() const { return clock_(); }

  // Lets the store go. After the runner has ended, and the last number was given.
  void Close() { database_.reset(); }

 private:
  void RaiseCeiling();
  void StoreCeiling(std::int64_t ceiling);

  const Clock clock_;
  const std::shared_ptr<base::TaskRunner> runner_;
  std::optional<sqlite::Loss> loss_;
  std::unique_ptr<sqlite::Database> database_;  // used by tasks of the runner only
  std::int64_t node_ = 0;

  base::Lock lock_;
  std::int64_t last_ = 0;  // both count ticks: milliseconds and counter
  std::int64_t ceiling_ = 0;
  bool raising_ = false;
};

}  // namespace imsdk::account
