#include "account/conversations/roamer.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <vector>

#include "account/conversations/link_message.h"
#include "account/conversations/page_limits.h"
#include "account/store/completeness.h"

namespace imsdk::account {

namespace {

constexpr std::int32_t kFetchCount = 200;  // messages that are fetched at a time

// A request to roam is no page: however many it names, they come part by part.
std::int32_t RoamCountOf(std::int32_t wanted) {
  return CountOf(wanted, std::numeric_limits<std::int32_t>::max());
}

biz::IMMsgPosition ToLink(const Position& position) { return {position.msgtime, position.msgid}; }

}  // namespace

struct Roamer::PageJob {
  biz::IMUserID cid;
  biz::IMPageRequest request;
  biz::IMPageCallback done;
};

struct Roamer::RoamJob {
  biz::IMRoamRequest request;
  link::HistoryRequest next;
  biz::IMRoamed roamed;
  biz::IMRoamCallback done;
};

void Roamer::Enter(const biz::IMUserID& cid, Job job) {
  std::deque<Job>& jobs = jobs_[cid];
  jobs.push_back(std::move(job));
  if (jobs.size() == 1) Begin(cid, Job(jobs.front()));
}

void Roamer::Begin(const biz::IMUserID& cid, const Job& job) {
  job([this, cid] { Leave(cid); });
}

void Roamer::Leave(const biz::IMUserID& cid) {
  const auto jobs = jobs_.find(cid);
  jobs->second.pop_front();
  if (jobs->second.empty()) {
    jobs_.erase(jobs);
    return;
  }
  // From a task of its own, so that many that fail at once do not pile up on the stack. Whoever
  // waits is answered also when the account is let go meanwhile.
  state_->runner->PostTask(FROM_HERE, [self = shared_from_this(), cid] {
    self->Begin(cid, Job(self->jobs_.at(cid).front()));
  });
}

void Roamer::LocalPage(const biz::IMUserID& cid, const biz::IMPageRequest& request,
                       biz::IMPageCallback done) {
  Enter(cid, [this, cid, request, done = std::move(done)](const auto& leave) {
    auto finish = [leave, done](const biz::ResultCode& result, biz::IMMessagePage page) {
      leave();
      done(result, std::move(page));
    };
    if (!state_->ended) state_->commit.Flush();  // what was done before is part of the page
    FillPage(std::make_shared<PageJob>(PageJob{cid, request, std::move(finish)}));
  });
}

void Roamer::FillPage(const std::shared_ptr<PageJob>& job) {
  if (state_->ended) return job->done(NotLoggedIn(), {});
  biz::IMMessagePage page;
  Completeness complete;
  biz::IMPageRequest bounded = job->request;
  bounded.ignoreboundary = false;
  const biz::ResultCode read = sqlite::Guarded([&] {
    page = state_->store.Page(job->cid, bounded);
    complete = state_->store.conversations().Complete(job->cid);
  });
  if (!read.ok() || !Lacks(complete, bounded, page)) return job->done(read, std::move(page));
  link::HistoryRequest request;
  request.peer = job->cid;
  request.position = ToLink(complete.from);
  request.count = kFetchCount;
  Fetch(request, true, [this, job](const biz::ResultCode& result, const link::History&, int) {
    if (result.ok()) return FillPage(job);
    if (state_->ended) return job->done(NotLoggedIn(), {});
    biz::IMMessagePage stored;
    sqlite::Guarded([&] { stored = state_->store.Page(job->cid, job->request); });
    const bool some = !stored.msgs.empty();
    job->done(some ? biz::ResultCode{} : result, std::move(stored));
  });
}

void Roamer::RemotePage(const biz::IMUserID& cid, const biz::IMPageRequest& request,
                        biz::IMPageCallback done) {
  Enter(cid, [this, cid, request, done = std::move(done)](const auto& leave) {
    link::HistoryRequest wanted;
    wanted.peer = cid;
    wanted.position = {request.msgtime, request.msgid};
    wanted.older = request.gohistory;
    wanted.count = CountOf(request.count);
    Fetch(wanted, request.autoroam,
          [this, leave, done](const biz::ResultCode& result, const link::History& history, int) {
            biz::IMMessagePage page;
            page.outofcache = !history.more;
            // What the account knows better: its own flags.
            const biz::ResultCode read = sqlite::Guarded([&] {
              for (const link::Message& from : history.msgs) {
                biz::IMMessage message = FromHistory(from, state_->self);
                auto own = state_->store.Find(message.cid, message.msgid);
                page.msgs.push_back(own ? std::move(*own) : std::move(message));
              }
            });
            leave();
            const biz::ResultCode& outcome = result.ok() ? read : result;
            done(outcome, outcome.ok() ? std::move(page) : biz::IMMessagePage{});
          });
  });
}

void Roamer::Roam(const biz::IMUserID& cid, const biz::IMRoamRequest& request,
                  biz::IMRoamCallback done) {
  Enter(cid, [this, cid, request, done = std::move(done)](const auto& leave) {
    const auto job = std::make_shared<RoamJob>();
    job->request = request;
    job->next.peer = cid;
    job->next.btime = request.btime;
    job->next.etime = request.etime;
    job->done = [leave, done](const biz::ResultCode& result, const biz::IMRoamed& roamed) {
      leave();
      done(result, roamed);
    };
    GoOn(job);
  });
}

void Roamer::GoOn(const std::shared_ptr<RoamJob>& job) {
  const std::int32_t left = RoamCountOf(job->request.count) - job->roamed.roamedcount;
  job->next.count = job->request.autoroam ? kFetchCount : std::min(left, kFetchCount);
  Fetch(job->next, true,
        [this, job](const biz::ResultCode& result, const link::History& history, int fresh) {
          if (!result.ok()) return job->done(result, job->roamed);
          job->roamed.roamedcount += static_cast<std::int32_t>(history.msgs.size());
          job->roamed.affectcount += fresh;
          const bool enough =
              !job->request.autoroam && job->roamed.roamedcount >= RoamCountOf(job->request.count);
          if (enough || !history.more) return job->done({}, job->roamed);
          job->next.position = {history.msgs.front().msgtime, history.msgs.front().msgid};
          GoOn(job);
        });
}

void Roamer::Clear(const biz::IMUserID& cid, biz::IMDoneCallback done) {
  Enter(cid, [this, cid, done = std::move(done)](const auto& leave) {
    if (state_->ended) {
      leave();
      return done(NotLoggedIn());
    }
    state_->commit.Add(
        [this, cid](sqlite::Database&) { state_->store.conversations().ClearComplete(cid); },
        [leave, done](const biz::ResultCode& stored) {
          leave();
          done(stored);
        });
  });
}

void Roamer::Fetch(const link::HistoryRequest& request, bool keep, Fetched done) {
  if (state_->ended) return done(NotLoggedIn(), {}, 0);
  state_->line->Ask<link::History>(
      [request](link::Session& session, link::HistoryCallback answer) {
        session.GetHistory(request, std::move(answer));
      },
      [weak = weak_from_this(), request, keep, done = std::move(done)](
          const biz::ResultCode& result, const link::History& history) {
        const auto self = weak.lock();
        if (!self) return;
        if (!result.ok() || !keep) return done(result, history, 0);
        if (history.msgs.empty() && history.more) {
          return done({biz::kEngineNoLink, 0, L"the server's answer makes no sense"}, {}, 0);
        }
        self->Keep(request, history, done);
      });
}

void Roamer::Keep(const link::HistoryRequest& request, const link::History& history, Fetched done) {
  const auto fresh = std::make_shared<int>(0);
  const auto newest = std::make_shared<std::optional<biz::IMMessage>>();
  state_->commit.Add(
      [this, request, history, fresh, newest](sqlite::Database&) {
        *fresh = 0;
        newest->reset();
        for (const link::Message& from : history.msgs) {
          biz::IMMessage message = FromHistory(from, state_->self);
          if (!state_->store.AddSynced(message, Synced::kRoamed)) continue;
          ++*fresh;
          *newest = std::move(message);
        }
        ConversationTable& table = state_->store.conversations();
        const Completeness complete = Extended(table.Complete(request.peer), request, history);
        table.SetComplete(request.peer, complete.from, complete.whole);
      },
      [this, history, fresh, newest, done = std::move(done)](const biz::ResultCode& stored) {
        if (!stored.ok()) return done(stored, {}, 0);
        if (*newest) state_->chat.AddSeen((*newest)->cid, **newest);
        done({}, history, *fresh);
      });
}

}  // namespace imsdk::account
