#include "source/bridge/accountfeed.h"

#include <algorithm>
#include <map>
#include <utility>

namespace imsdk::bridge {
namespace {

// The feeds there are. A feed keeps its account, so an address names one as long as its feed lives.
struct Feeds {
  base::Lock lock;
  std::map<std::pair<CAccountFeed::Make, const biz::IIMAccount*>, std::weak_ptr<CAccountFeed>> all;
};

Feeds& TheFeeds() {
  static Feeds feeds;
  return feeds;
}

}  // namespace

std::shared_ptr<CAccountFeed> CAccountFeed::Of(const RefPtr<biz::IIMAccount>& account, Make make) {
  Feeds& feeds = TheFeeds();
  base::AutoLock hold(feeds.lock);
  std::shared_ptr<CAccountFeed> feed = feeds.all[{make, account.get()}].lock();
  if (!feed) {
    std::erase_if(feeds.all, [](const auto& entry) { return entry.second.expired(); });
    feed = make(account);
    feeds.all[{make, account.get()}] = feed;
  }
  feed->Update();
  return feed;
}

void CAccountFeed::Add(std::shared_ptr<Listener> listener) {
  base::AutoLock hold(lock_);
  auto views = std::make_shared<ViewList>(*views_);
  const auto same = std::find_if(views->begin(), views->end(),
                                 [&](const View& view) { return view.listener == listener; });
  if (same == views->end()) {
    views->push_back({std::move(listener), 1});
  } else {
    ++same->added;
  }
  views_ = std::move(views);
}

void CAccountFeed::Remove(const Listener& listener) {
  base::AutoLock hold(lock_);
  auto views = std::make_shared<ViewList>(*views_);
  std::erase_if(*views,
                [&](View& view) { return view.listener.get() == &listener && --view.added == 0; });
  views_ = std::move(views);
}

std::shared_ptr<const CAccountFeed::ViewList> CAccountFeed::Views() const {
  base::AutoLock hold(lock_);
  return views_;
}

Attachment::Attachment(RefPtr<biz::IIMAccount> engine, const std::vector<FeedSource>& sources)
    : engine_(std::move(engine)) {
  if (!engine_) return;
  for (const FeedSource& source : sources) {
    if (!source.make) continue;
    seats_.push_back({CAccountFeed::Of(engine_, source.make), source.listener});
    seats_.back().feed->Add(source.listener);
  }
}

Attachment::~Attachment() {
  for (const Seat& seat : seats_) seat.feed->Remove(*seat.listener);
}

}  // namespace imsdk::bridge
