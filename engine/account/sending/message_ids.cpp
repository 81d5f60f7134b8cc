#include "account/sending/message_ids.h"

#include <algorithm>
#include <random>

#include "kexbase/callback.h"
#include "sqlite/group_commit.h"

namespace imsdk::account {

namespace {

constexpr const char* kSchema[] = {R"sql(
  CREATE TABLE ids(node INTEGER NOT NULL, ceiling INTEGER NOT NULL);
)sql"};

// How far the ceiling lies ahead, and how near it may come before it is raised.
constexpr std::int64_t kAhead = 60'000LL << kCounterBits;
constexpr std::int64_t kMargin = 30'000LL << kCounterBits;

}  // namespace

MessageIds::MessageIds(const std::filesystem::path& file, Clock clock,
                       std::shared_ptr<base::TaskRunner> runner)
    : clock_(std::move(clock)),
      runner_(std::move(runner)),
      database_(std::make_unique<sqlite::Database>(file, sqlite::Locking::kExclusive)) {
  sqlite::Migrate(*database_, kSchema);
  bool known = false;
  {
    auto row = database_->Prepare("SELECT node, ceiling FROM ids");
    known = row.Step();
    if (known) {
      node_ = row.Int64(0);
      last_ = row.Int64(1);
    }
  }
  if (!known) {
    node_ = static_cast<std::int64_t>(std::random_device{}() & ((1U << kNodeBits) - 1));
    database_->Prepare("INSERT INTO ids(node, ceiling) VALUES(?, 0)", node_).Run();
  }
  ceiling_ = std::max(last_, clock_() << kCounterBits) + kAhead;
  StoreCeiling(ceiling_);
}

std::int64_t MessageIds::Next() {
  const std::int64_t now = clock_() << kCounterBits;
  bool raise = false;
  std::int64_t tick = 0;
  {
    base::AutoLock hold(lock_);
    tick = last_ = std::max(last_ + 1, now);
    raise = !raising_ && tick > ceiling_ - kMargin;
    if (raise) raising_ = true;
  }
  if (raise) {
    runner_->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), &MessageIds::RaiseCeiling));
  }
  return tick << kNodeBits | node_;
}

void MessageIds::RaiseCeiling() {
  std::int64_t ceiling = 0;
  {
    base::AutoLock hold(lock_);
    ceiling = last_ + kAhead;
  }
  const bool stored = sqlite::Guarded([&] { StoreCeiling(ceiling); }).ok();
  base::AutoLock hold(lock_);
  raising_ = false;  // a disk that failed is tried again with the next number
  if (stored) ceiling_ = ceiling;
}

void MessageIds::StoreCeiling(std::int64_t ceiling) {
  database_->Prepare("UPDATE ids SET ceiling=?", ceiling).Run();
}

}  // namespace imsdk::account
