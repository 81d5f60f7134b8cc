// Keeps a module's subscriptions to the engine's events, so that all of them end with the module.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "kexbase/event.h"

namespace imsdk::bridge {

// One module's subscriptions. Used on one thread at a time.
class CSdkEventMgr {
 public:
  using Handle = base::event_handle;

  // What is common to the holders of all events.
  class IEvent {
   public:
    virtual ~IEvent() = default;
    virtual void DisconnectAll() = 0;
    // Disconnects one subscription and takes it from the list. A handle that is not in the list is
    // disconnected all the same.
    virtual void Disconnect(Handle handle) = 0;
    // Appends a subscription and returns it.
    virtual Handle Add(Handle handle) = 0;
  };

  template <class Event>
  class CEvent;

  // The subscriptions made on one event of a signature.
  template <class Sig>
  class CEvent<base::event<Sig>> final : public IEvent {
   public:
    explicit CEvent(base::event<Sig>& event) : event_(event) {}

    void DisconnectAll() override {
      for (Handle& handle : handles_) handle.disconnect();
      handles_.clear();
    }
    void Disconnect(Handle handle) override {
      handle.disconnect();
      std::erase(handles_, handle);
    }
    Handle Add(Handle handle) override { return handles_.emplace_back(handle); }

    Handle Connect(std::function<Sig> handler) { return Add(event_.connect(std::move(handler))); }

   private:
    base::event<Sig>& event_;
    std::vector<Handle> handles_;
  };

  CSdkEventMgr() = default;
  ~CSdkEventMgr() { DisconnectAll(); }
  CSdkEventMgr(const CSdkEventMgr&) = delete;
  CSdkEventMgr& operator=(const CSdkEventMgr&) = delete;

  // The holder of `event`, made on first use. It may not be used once the event is gone.
  template <class Sig>
  std::shared_ptr<CEvent<base::event<Sig>>> Holder(base::event<Sig>& event) {
    std::shared_ptr<IEvent>& holder = holders_[&event];
    if (!holder) holder = std::make_shared<CEvent<base::event<Sig>>>(event);
    return std::static_pointer_cast<CEvent<base::event<Sig>>>(holder);
  }

  // Ends every subscription and forgets the events.
  void DisconnectAll() {
    for (auto& [event, holder] : holders_) holder->DisconnectAll();
    holders_.clear();
  }

 private:
  std::map<const void*, std::shared_ptr<IEvent>> holders_;
};

}  // namespace imsdk::bridge
