#include "sqlite/group_commit.h"

#include <utility>

#include "kexbase/strings.h"

namespace imsdk::sqlite {

namespace {

// A transaction of more writes makes those at its front wait for nothing.
constexpr std::size_t kMostInOneCommit = 512;

}  // namespace

biz::ResultCode Guarded(const std::function<void()>& work) {
  try {
    work();
    return {};
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
      const std::size_t to = std::min(entries.size(), from + kMostInOneCommit);
      const biz::ResultCode together = Commit(entries, from, to);
      for (std::size_t i = from; i < to; ++i) {
        // One bad write must not take its neighbours with it.
        const bool alone = !together.ok() && to - from > 1;
        entries[i].after(alone ? Commit(entries, i, i + 1) : together);
      }
      from = to;
    }
  }
}

biz::ResultCode GroupCommit::Commit(const std::vector<Entry>& entries, std::size_t from,
                                    std::size_t to) {
  return Guarded([&] {
    Database& database = open_();
    Transaction transaction(database);
    for (std::size_t i = from; i < to; ++i) entries[i].write(database);
    transaction.Commit();
  });
}

}  // namespace imsdk::sqlite
