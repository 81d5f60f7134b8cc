// Many small writes, one commit: what is asked for while the disk is busy shares a transaction.
#pragma once

#include <functional>
#include <vector>

#include "imsdk/biz/user_id.h"
#include "sqlite/database.h"

namespace imsdk::sqlite {

// Used on one sequence of tasks only.
class GroupCommit {
 public:
  // Changes the database; may throw. Runs again when its transaction had to be repeated, so it
  // begins by resetting what it tells its follower.
  using Write = std::function<void(Database&)>;
  // Runs after the commit with success, or with `kEngineStorage`; may ask for further writes.
  using After = std::function<void(const biz::ResultCode&)>;

  // Ends each transaction; may throw, and then none of it is done.
  using Last = std::function<void()>;

  // `open` gives the connection, or throws. `schedule` has `Flush` called on the sequence soon.
  // What `refuse` answers instead of success is the outcome of writes that are not begun yet.
  GroupCommit(
      std::function<Database&()> open, std::function<void()> schedule,
      std::function<biz::ResultCode()> refuse = [] { return biz::ResultCode{}; }, Last last = [] {})
      : open_(std::move(open)),
        schedule_(std::move(schedule)),
        refuse_(std::move(refuse)),
        last_(std::move(last)) {}

  // Queues a write. Followers run in the order of the writes.
  void Add(Write write, After after);
  // Commits what is queued, also what followers add meanwhile.
  void Flush();

 private:
  struct Entry {
    Write write;
    After after;
  };

  // The outcome of some of `entries[from, *to)` in one transaction; `*to` becomes its end.
  biz::ResultCode Commit(const std::vector<Entry>& entries, std::size_t from, std::size_t* to);

  const std::function<Database&()> open_;
  const std::function<void()> schedule_;
  const std::function<biz::ResultCode()> refuse_;
  const Last last_;
  std::vector<Entry> queue_;
  bool scheduled_ = false;
};

// Runs `work`, which may throw, and tells how it went.
biz::ResultCode Guarded(const std::function<void()>& work);

}  // namespace imsdk::sqlite
