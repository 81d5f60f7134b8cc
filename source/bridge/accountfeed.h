// Feeds: the events of one account, subscribed once for all views that work for it.
#pragma once

#include <memory>
#include <vector>

#include "imsdk/biz/account.h"
#include "kexbase/callback.h"
#include "kexbase/lock.h"
#include "source/bridge/notification.h"
#include "source/bridge/sdkeventmgr.h"

namespace imsdk::bridge {

// What the modules of one class hear of one account. It begins with the first view of the account
// and ends with the last one; a notification's text is made once and handed to all that want it.
//
// Any thread. Engine callbacks hold it weakly, so the last owner may also be an engine thread that
// is raising an event.
class CAccountFeed : public std::enable_shared_from_this<CAccountFeed> {
 public:
  using Make = std::shared_ptr<CAccountFeed> (*)(RefPtr<biz::IIMAccount> account);

  virtual ~CAccountFeed() = default;
  CAccountFeed(const CAccountFeed&) = delete;
  CAccountFeed& operator=(const CAccountFeed&) = delete;

  // The feed that `make` makes of `account`, subscribed; there is one at a time.
  static std::shared_ptr<CAccountFeed> Of(const RefPtr<biz::IIMAccount>& account, Make make);

  // A listener may be added several times; it hears everything once, until it is removed as often.
  void Add(std::shared_ptr<Listener> listener);
  void Remove(const Listener& listener);

 protected:
  CAccountFeed(RefPtr<biz::IIMAccount> account, NotifyList rows)
      : account_(std::move(account)), rows_(rows) {}

  // Subscribes to what is not subscribed yet. Called once for every view that comes, one call at a
  // time: a service of the client may come later than the first view.
  virtual void Update() = 0;

  biz::IIMAccount& account() const { return *account_; }
  CSdkEventMgr& events() { return events_; }

  // Connects `handler(F&, …)` of feed `F` to an event for as long as the feed lives.
  template <class F, class Sig, class Handler>
  void Subscribe(base::event<Sig>& event, Handler handler) {
    events_.Holder(event)->Connect(base::BindWeak(
        std::weak_ptr(std::static_pointer_cast<F>(shared_from_this())), std::move(handler)));
  }
  // The same for a member function.
  template <class F, class Sig, class... Args>
  void Subscribe(base::event<Sig>& event, void (F::*handler)(Args...)) {
    Subscribe<F, Sig, void (F::*)(Args...)>(event, handler);
  }

  template <class Payload, class Form>
  void Notify(const Notification<Payload, Form>& row, const Payload& payload) const {
    const auto views = Views();
    const std::uint64_t bit = Listener::BitOf(rows_, row);
    std::shared_ptr<const Notice> notice;
    for (const View& view : *views) {
      if (!view.listener->Wants(bit)) continue;
      if (!notice) {
        notice = std::make_shared<const Notice>(Notice{std::wstring(row.name), row.Text(payload)});
      }
      view.listener->Notify(bit, notice);
    }
  }

 private:
  struct View {
    std::shared_ptr<Listener> listener;
    int added;
  };
  using ViewList = std::vector<View>;

  std::shared_ptr<const ViewList> Views() const;

  const RefPtr<biz::IIMAccount> account_;  // keeps the events
  const NotifyList rows_;
  CSdkEventMgr events_;
  mutable base::Lock lock_;
  // Under lock_; replaced, never changed, so that an event walks the list it began with.
  std::shared_ptr<const ViewList> views_ = std::make_shared<ViewList>();
};

// What one module of a view hears of its account: `make` is null when it hears nothing.
struct FeedSource {
  std::shared_ptr<Listener> listener;
  CAccountFeed::Make make;
};

// A view's places in the feeds of an account, until this is destroyed. Any thread.
class Attachment {
 public:
  // `engine` is the account, null while it is not logged in; it is heard of then by nobody.
  Attachment(RefPtr<biz::IIMAccount> engine, const std::vector<FeedSource>& sources);
  ~Attachment();
  Attachment(const Attachment&) = delete;
  Attachment& operator=(const Attachment&) = delete;

  biz::IIMAccount* engine() const { return engine_.get(); }

 private:
  struct Seat {
    std::shared_ptr<CAccountFeed> feed;
    std::shared_ptr<Listener> listener;
  };
  const RefPtr<biz::IIMAccount> engine_;
  std::vector<Seat> seats_;
};

}  // namespace imsdk::bridge
