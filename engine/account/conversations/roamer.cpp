#include "account/conversations/roamer.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <vector>

#include "account/conversations/page_limits.h"

namespace imsdk::account {

namespace {

constexpr std::int32_t kFetchCount = 200;  // messages that are fetched at a time
constexpr std::size_t kRememberedPlaces = 256;

// A request to roam is no page: however many it names, they come part by part.
std::int32_t RoamCountOf(std::int32_t wanted) {
  return CountOf(wanted, std::numeric_limits<std::int32_t>::max());
}

}  // namespace

struct Roamer::PageJob {
  biz::IMPageRequest request;
  biz::IMCallback<biz::IMMessagePage> done;
  std::shared_ptr<Descent> descent;
};

struct Roamer::RoamJob {
  biz::IMRoamRequest request;
  link::GetHistory next;
  biz::IMRoamed roamed;
  biz::IMCallback<biz::IMRoamed> done;
  std::shared_ptr<Walk> walk = std::make_shared<Walk>();
};

void Roamer::Enter(const biz::IMConversationID& cid, Job job) {
  std::deque<Job>& jobs = jobs_[cid];
  jobs.push_back(std::move(job));
  if (jobs.size() == 1) Begin(cid, Job(jobs.front()));
}

void Roamer::Begin(const biz::IMConversationID& cid, const Job& job) {
  job([this, cid] { Leave(cid); });
}

void Roamer::Leave(const biz::IMConversationID& cid) {
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

void Roamer::LocalPage(const biz::IMConversationID& cid, const biz::IMPageRequest& request,
                       biz::IMCallback<biz::IMMessagePage> done) {
  Enter(cid, [this, cid, request, done = std::move(done)](const auto& leave) {
    auto finish = [leave, done](const biz::ResultCode& result, const biz::IMMessagePage& page) {
      leave();
      done(result, page);
    };
    if (!state_->ended) state_->commit.Flush();  // what was done before is part of the page
    FillPage(std::make_shared<PageJob>(
        PageJob{request, std::move(finish), std::make_shared<Descent>(Descent{cid})}));
  });
}

void Roamer::FillPage(const std::shared_ptr<PageJob>& job) {
  if (state_->ended) return job->done(NotLoggedIn(), {});
  const biz::IMConversationID& cid = job->descent->cid;
  biz::IMMessagePage page;
  Part part;
  biz::IMPageRequest bounded = job->request;
  bounded.ignoreboundary = false;
  const biz::ResultCode read = sqlite::Guarded([&] {
    page = state_->store.Page(cid, bounded);
    part = state_->store.parts().Current(state_->store.conversations().Find(cid));
  });
  if (!read.ok() || !Lacks(part, bounded, page)) return job->done(read, page);
  Descend(job->descent, [this, job](const biz::ResultCode& result, const link::History&, auto) {
    if (result.ok()) return FillPage(job);
    if (state_->ended) return job->done(NotLoggedIn(), {});
    biz::IMMessagePage stored;
    sqlite::Guarded([&] { stored = state_->store.Page(job->descent->cid, job->request); });
    stored.roamcode = result.code;
    if (!stored.msgs.empty()) return job->done({}, stored);
    job->done(result, {});
  });
}

void Roamer::Descend(const std::shared_ptr<Descent>& descent, Fetched done) {
  Part part;
  const biz::ResultCode read = sqlite::Guarded([&] {
    part = state_->store.parts().Current(state_->store.conversations().Find(descent->cid));
  });
  if (!read.ok()) return done(read, {}, 0);
  // What has come since may have cut the walk off from the part.
  const bool goes_on = descent->walk.joined == part.number && !descent->next.empty();
  link::GetHistory request;
  request.cid = descent->cid;
  request.place = goes_on ? descent->next : part.edge;
  request.count = kFetchCount;
  const auto walk = std::make_shared<Walk>(descent->walk);
  Fetch(request, walk,
        [descent, walk, done = std::move(done)](const biz::ResultCode& result,
                                                const link::History& history, std::int32_t fresh) {
          if (result.ok()) {
            descent->walk = *walk;
            descent->next = history.next;
          }
          done(result, history, fresh);
        });
}

link::GetHistory Roamer::Wanted(const biz::IMConversationID& cid,
                                const biz::IMPageRequest& request) {
  const Position at{request.msgtime, request.msgid};
  link::GetHistory wanted;
  wanted.cid = cid;
  wanted.older = request.gohistory || at.is_end();
  wanted.count = CountOf(request.count);
  if (at.is_end()) return wanted;
  const auto turn = places_.find({cid, at, wanted.older});
  if (turn != places_.end()) {
    wanted.place = turn->second;
  } else {
    const Part part = state_->store.parts().Current(state_->store.conversations().Find(cid));
    wanted.place = wanted.older && at == part.reach ? part.edge : std::string();
    if (wanted.place.empty()) wanted.place = state_->store.ServerPlace(cid, at);
  }
  if (wanted.place.empty()) wanted.time = request.msgtime;
  return wanted;
}

void Roamer::Remember(const Turn& turn, const std::string& place) {
  if (place.empty() || !places_.insert_or_assign(turn, place).second) return;
  places_order_.push_back(turn);
  if (places_order_.size() <= kRememberedPlaces) return;
  places_.erase(places_order_.front());
  places_order_.pop_front();
}

void Roamer::Remember(const link::GetHistory& request, const link::History& history) {
  if (history.msgs.empty()) return;
  const auto remember = [&](const link::Message& edge, bool older) {
    const std::string& place =
        older == request.older && !history.next.empty() ? history.next : edge.place;
    Remember({request.cid, {edge.msgtime, edge.msgid}, older}, place);
  };
  remember(history.msgs.front(), true);
  remember(history.msgs.back(), false);
}

void Roamer::RemotePage(const biz::IMConversationID& cid, const biz::IMPageRequest& request,
                        biz::IMCallback<biz::IMMessagePage> done) {
  Enter(cid, [this, cid, request, done = std::move(done)](const auto& leave) {
    auto finish = [leave, done](const biz::ResultCode& result, const biz::IMMessagePage& page) {
      leave();
      done(result, page);
    };
    if (state_->ended) return finish(NotLoggedIn(), {});
    link::GetHistory wanted;
    const biz::ResultCode read = sqlite::Guarded([&] { wanted = Wanted(cid, request); });
    if (!read.ok()) return finish(read, {});
    Fetch(wanted, request.autoroam ? std::make_shared<Walk>() : nullptr,
          [this, wanted, finish, kept = request.autoroam](const biz::ResultCode& result,
                                                          const link::History& history, auto) {
            if (!result.ok()) return finish(result, {});
            if (!kept) KeepFiles(history);
            Remember(wanted, history);
            biz::IMMessagePage page;
            page.outofcache = history.next.empty();
            const biz::ResultCode found = Show(history.msgs, &page);
            finish(found, found.ok() ? page : biz::IMMessagePage{});
          });
  });
}

biz::ResultCode Roamer::Show(const std::vector<link::Message>& messages, biz::IMMessagePage* page) {
  return sqlite::Guarded([&] {
    for (const link::Message& from : messages) {
      biz::IMMessage message = mailbox_->FromServer(from).message;
      if (message.msgstatus == biz::kMsgReceived) message.readflag = biz::kMsgRead;
      auto own = state_->store.Find(message.cid, message.msgid, message.fromid);
      page->msgs.push_back(own ? std::move(*own) : std::move(message));
    }
  });
}

void Roamer::Roam(const biz::IMConversationID& cid, const biz::IMRoamRequest& request,
                  biz::IMCallback<biz::IMRoamed> done) {
  Enter(cid, [this, cid, request, done = std::move(done)](const auto& leave) {
    const auto job = std::make_shared<RoamJob>();
    job->request = request;
    job->next.cid = cid;
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
  Fetch(
      job->next, job->walk,
      [this, job](const biz::ResultCode& result, const link::History& history, std::int32_t fresh) {
        if (!result.ok()) return job->done(result, job->roamed);
        job->roamed.roamedcount += static_cast<std::int32_t>(history.msgs.size());
        job->roamed.affectcount += fresh;
        const bool enough =
            !job->request.autoroam && job->roamed.roamedcount >= RoamCountOf(job->request.count);
        if (enough || history.next.empty()) return job->done({}, job->roamed);
        job->next.place = history.next;
        GoOn(job);
      });
}

void Roamer::Clear(const biz::IMConversationID& cid, biz::IMCallback<> done) {
  Enter(cid, [this, cid, done = std::move(done)](const auto& leave) {
    if (state_->ended) {
      leave();
      return done(NotLoggedIn());
    }
    state_->commit.Add([this, cid](sqlite::Database&) { state_->store.ClearComplete(cid); },
                       [leave, done](const biz::ResultCode& stored) {
                         leave();
                         done(stored);
                       });
  });
}

void Roamer::Fetch(const link::GetHistory& request, std::shared_ptr<Walk> walk, Fetched done) {
  state_->line->Ask(request, [weak = weak_from_this(), request, walk, done = std::move(done)](
                                 const biz::ResultCode& result, const link::History& history) {
    const auto self = weak.lock();
    if (!self) return;
    if (!result.ok()) return done(result, {}, 0);
    const bool stands_still = !history.next.empty() && history.next == request.place;
    if (stands_still) {
      return done({biz::kEngineNoLink, 0, L"the server's answer makes no sense"}, {}, 0);
    }
    if (!walk) return done(result, history, 0);
    self->Keep(request, history, walk, done);
  });
}

void Roamer::Keep(const link::GetHistory& request, const link::History& history,
                  std::shared_ptr<Walk> walk, Fetched done) {
  struct Outcome {
    Walk walk;
    std::int32_t fresh = 0;
    Mailbox::Happenings happenings;
  };
  const auto outcome = std::make_shared<Outcome>();
  state_->commit.Add(
      [this, request, history, walk, outcome](sqlite::Database&) {
        *outcome = {*walk, 0, {}};
        outcome->happenings =
            mailbox_->StoreHistory(outcome->walk, request, history, &outcome->fresh);
      },
      [this, history, walk, outcome, done = std::move(done)](const biz::ResultCode& stored) {
        if (!stored.ok()) return done(stored, {}, 0);
        *walk = outcome->walk;
        mailbox_->MakeKnown(std::move(outcome->happenings));
        done({}, history, outcome->fresh);
      });
}

void Roamer::KeepFiles(const link::History& history) {
  const bool some = std::any_of(history.msgs.begin(), history.msgs.end(),
                                [](const link::Message& one) { return !one.files.empty(); });
  if (!some) return;
  state_->commit.Add(
      [this, history](sqlite::Database&) {
        for (const link::Message& from : history.msgs) mailbox_->KeepFiles(from);
      },
      [](const biz::ResultCode&) {});
}

}  // namespace imsdk::account
