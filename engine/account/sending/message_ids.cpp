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

MessageIds::MessageIds(const sqlite::StorePlace& place, Clock clock,
                       std::shared_ptr<base::TaskRunner> runner)
    : clock_(std::move(clock)), runner_(std::move(runner)) {
  sqlite::OpenedStore opened = sqlite::OpenStore(
      place, {sqlite::Locking::kExclusive, [](auto& fresh) { sqlite::Migrate(fresh, kSchema); }});
  database_ = std::move(opened.database);
  loss_ = std::move(opened.loss);
  // A ceiling that is lost may lie above every number that is known: another node has others.
  if (loss_) database_->Execute("DELETE FROM ids");
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
  sqlite::Transaction transaction(*database_);
  database_->Prepare("UPDATE ids SET ceiling=?", ceiling).Run();
  transaction.Commit();
}

}  // namespace imsdk::account
