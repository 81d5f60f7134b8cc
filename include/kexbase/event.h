// Multicast events: the engine raises, any number of subscribers listen.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace base {

namespace internal {

// One connected handler. `connected` turns false once and stays false.
struct EventSlot {
  virtual ~EventSlot() = default;
  std::atomic<bool> connected{true};
};

// The handlers of one event. A list is never changed once others can see it: adding and removing
// replace it, so a raise walks the list it began with and holds no lock. The functions are virtual
// so that the module that made the event allocates its lists, whichever module connects.
class EventSlots {
 public:
  using List = std::vector<std::shared_ptr<EventSlot>>;

  virtual ~EventSlots() = default;
  // Null when there are no handlers.
  virtual std::shared_ptr<const List> Snapshot() const = 0;
  virtual void Add(std::shared_ptr<EventSlot> slot) = 0;
  virtual void Remove(const EventSlot& slot) = 0;
  // Disconnects every slot.
  virtual void RemoveAll() = 0;
};

std::shared_ptr<EventSlots> MakeEventSlots();

}  // namespace internal

// Names one connection of a handler to an event, whatever the event's signature. Copies name the
// same connection and compare equal; handles that name nothing compare equal to each other. May
// outlive the event and does not keep the handler alive. Letting go of a handle does not
// disconnect.
//
// Threads: disconnect() and connected() may be called from any thread, also from a handler.
class event_handle {
 public:
  event_handle() = default;

  // The handler is not called again, also not by a raise under way that has not reached it. A call
  // of the handler that another thread is in the middle of goes on: what a handler touches is held
  // by a weak reference (see BindWeak). Nothing happens when there is no such connection any more.
  void disconnect();

  // False for a handle that names nothing, after disconnect() and after the end of the event.
  bool connected() const;

  friend bool operator==(const event_handle& a, const event_handle& b) {
    return !a.slot_.owner_before(b.slot_) && !b.slot_.owner_before(a.slot_);
  }

 private:
  template <class Sig>
  friend class event;

  event_handle(std::weak_ptr<internal::EventSlots> slots, std::weak_ptr<internal::EventSlot> slot)
      : slots_(std::move(slots)), slot_(std::move(slot)) {}

  std::weak_ptr<internal::EventSlots> slots_;
  std::weak_ptr<internal::EventSlot> slot_;
};

template <class Sig>
class event;

// An event with the signature of its handlers, for example event<void(const Message&)>.
//
// Threads: connect and raise may be called from any thread, and from a handler while the event is
// being raised. Handlers run on the raising thread, in the order in which they were connected. A
// handler connected during a raise is called from the next raise on.
// Destroying an event disconnects every handler; a handler may destroy it, the rest of that raise
// is then skipped.
// Errors: an exception from a handler is swallowed, the handlers after it are called.
template <class R, class... Args>
class event<R(Args...)> {
  static_assert(std::is_void_v<R>, "handlers of an event answer nothing");
  static_assert(!(std::is_rvalue_reference_v<Args> || ...),
                "several handlers cannot take the same argument over");

 public:
  event() = default;
  ~event() { slots_->RemoveAll(); }

  event(const event&) = delete;
  event& operator=(const event&) = delete;

  // Adds `handler` and returns its handle. An empty handler is not added; its handle names nothing.
  // The event owns the handler until it is disconnected. The same handler connected twice is called
  // twice.
  event_handle connect(std::function<R(Args...)> handler) {
    if (!handler) return {};
    auto slot = std::make_shared<Slot>(std::move(handler));
    event_handle handle(slots_, slot);
    slots_->Add(std::move(slot));
    return handle;
  }

  // Raises the event: calls every connected handler once.
  void operator()(Args... args) const {
    const std::shared_ptr<const internal::EventSlots::List> list = slots_->Snapshot();
    if (!list) return;
    for (const auto& slot : *list) {
      if (!slot->connected.load(std::memory_order_acquire)) continue;
      try {
        static_cast<const Slot&>(*slot).handler(args...);
      } catch (...) {  // one subscriber's failure is not another's
      }
    }
  }

 private:
  struct Slot final : internal::EventSlot {
    explicit Slot(std::function<R(Args...)> h) : handler(std::move(h)) {}
    const std::function<R(Args...)> handler;
  };

  const std::shared_ptr<internal::EventSlots> slots_ = internal::MakeEventSlots();
};

}  // namespace base
