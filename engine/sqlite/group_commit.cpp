#include "sqlite/group_commit.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "kexbase/strings.h"
#include "sqlite/interrupt.h"

namespace imsdk::sqlite {

namespace {

// A transaction of more writes makes those at its front wait for nothing.
constexpr std::size_t kMostInOneCommit = 512;
constexpr std::chrono::milliseconds kLongestCommit{100};

}  // namespace

biz::ResultCode Guarded(const std::function<void()>& work) {
  try {
    work();
    return {};
  } catch (const Damaged& failure) {
    return {biz::kEngineDamaged, 0, L"a store is damaged: " + base::UTF8ToWide(failure.what())};
  } catch (const std::exception& failure) {
    return {biz::kEngineStorage, 0, base::UTF8ToWide(failure.what())};
  }
}

void GroupCommit::Add(Write write, After after) {
  queue_.push_back({std::move(write), std::move(after)});
  if (std::exchange(scheduled_, true)) return;
  schedule_();
}

void GroupCommit::Flush() {
  scheduled_ = false;
  while (!queue_.empty()) {
    const std::vector<Entry> entries = std::exchange(queue_, {});
    for (std::size_t from = 0; from < entries.size();) {
      std::size_t to = std::min(entries.size(), from + kMostInOneCommit);
      const biz::ResultCode together = Commit(entries, from, &to);
      for (std::size_t i = from; i < to; ++i) {
        // One bad write must not take its neighbours with it.
        const bool alone = !together.ok() && to - from > 1;
        std::size_t next = i + 1;
        entries[i].after(alone ? Commit(entries, i, &next) : together);
      }
      from = to;
    }
  }
}

biz::ResultCode GroupCommit::Commit(const std::vector<Entry>& entries, std::size_t from,
                                    std::size_t* to) {
  if (const biz::ResultCode why = refuse_(); !why.ok()) return why;
  const biz::ResultCode result = Guarded([&] {
    const auto end = std::chrono::steady_clock::now() + kLongestCommit;
    Database& database = open_();
    const Interrupt unless(database, [this] { return !refuse_().ok(); });
    Transaction transaction(database);
    for (std::size_t i = from; i < *to; ++i) {
      entries[i].write(database);
      if (std::chrono::steady_clock::now() > end) *to = i + 1;
    }
    last_();
    transaction.Commit();
  });
  if (result.ok()) return result;
  const biz::ResultCode why = refuse_();
  return why.ok() ? result : why;
}

}  // namespace imsdk::sqlite
