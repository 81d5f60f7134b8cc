// Callbacks that do not keep their object alive.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace base {

// A copyable callable that calls `f` on the object behind `object`, or does nothing when that
// object is gone. `f` is a member function of T or a callable whose first argument is T&; the
// callable's own arguments follow. The result must be void.
//
//   runner->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), &CThing::Refresh));
//   event.connect(base::BindWeak(weak, [](CThing& thing, int count) { thing.Count(count); }));
//
// Threads: may be called on any thread; `f` runs there. The object is held while `f` runs, so when
// every other owner lets go meanwhile it is destroyed on the calling thread, after `f`.
template <class T, class F>
auto BindWeak(std::weak_ptr<T> object, F f) {
  return [object = std::move(object), f = std::move(f)]<class... Args>(Args&&... args) -> void {
    static_assert(std::is_void_v<std::invoke_result_t<const F&, T&, Args...>>,
                  "a weak callback has nothing to answer when its object is gone");
    if (std::shared_ptr<T> held = object.lock()) {
      std::invoke(f, *held, std::forward<Args>(args)...);
    }
  };
}

}  // namespace base
