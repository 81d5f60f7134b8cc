#include "kexbase/event.h"

#include <algorithm>

#include "kexbase/lock.h"

namespace base {

namespace internal {

namespace {

class EventSlotsImpl final : public EventSlots {
 public:
  std::shared_ptr<const List> Snapshot() const override {
    AutoLock hold(lock_);
    return list_;
  }

  void Add(std::shared_ptr<EventSlot> slot) override {
    std::shared_ptr<const List> old;  // let go outside the lock, as everything replaced below
    AutoLock hold(lock_);
    auto list = std::make_shared<List>();
    list->reserve((list_ ? list_->size() : 0) + 1);
    if (list_) *list = *list_;
    list->push_back(std::move(slot));
    old = std::exchange(list_, std::move(list));
  }

  void Remove(const EventSlot& slot) override {
    const auto is_slot = [&slot](const auto& other) { return other.get() == &slot; };
    std::shared_ptr<const List> old;
    AutoLock hold(lock_);
    if (!list_ || std::none_of(list_->begin(), list_->end(), is_slot)) return;
    std::shared_ptr<List> list;
    if (list_->size() > 1) {
      list = std::make_shared<List>();
      list->reserve(list_->size() - 1);
      std::remove_copy_if(list_->begin(), list_->end(), std::back_inserter(*list), is_slot);
    }
    old = std::exchange(list_, std::move(list));
  }

  void RemoveAll() override {
    std::shared_ptr<const List> old;
    {
      AutoLock hold(lock_);
      old.swap(list_);
    }
    if (!old) return;
    for (const auto& slot : *old) slot->connected.store(false, std::memory_order_release);
  }

 private:
  mutable Lock lock_;
  std::shared_ptr<const List> list_;
};

}  // namespace

std::shared_ptr<EventSlots> MakeEventSlots() { return std::make_shared<EventSlotsImpl>(); }

}  // namespace internal

void event_handle::disconnect() {
  const std::shared_ptr<internal::EventSlot> slot = slot_.lock();
  if (!slot || !slot->connected.exchange(false, std::memory_order_acq_rel)) return;
  if (const auto slots = slots_.lock()) slots->Remove(*slot);
}

bool event_handle::connected() const {
  const std::shared_ptr<internal::EventSlot> slot = slot_.lock();
  return slot && slot->connected.load(std::memory_order_acquire);
}

}  // namespace base
