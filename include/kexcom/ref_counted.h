// Counted objects: the base of everything that crosses a module boundary by pointer.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "kexbase/lock.h"

// The counted-object interface. Its four operations stand first in the function table of every
// interface derived from it, in this order.
//
// Threads: `AddRef` and `Release` may be called on any thread. The object is destroyed on the
// thread of the last `Release`.
class IKexCOMRefCounted {
 public:
  // Takes one more reference. Never fails.
  virtual void AddRef() = 0;
  // Gives one reference back; at zero the object destroys itself.
  virtual void Release() = 0;
  // Ends the object whatever its count is. Only `Release` calls it. It is an ordinary operation
  // and no C++ destructor, because compilers disagree on how many table entries a destructor has.
  virtual void Destroy() = 0;
  // Does nothing; keeps the table's fourth entry.
  virtual void Reserved() = 0;

 protected:
  ~IKexCOMRefCounted() = default;
};

// A reference count (32-bit signed) that may be changed from any thread. The lock orders a change
// with everything else the policy's owner does under it; the interlocked add keeps the count
// readable without the lock.
class ThreadSafeRefPolicy {
 public:
  // Returns the new count.
  std::int32_t Add() { return Change(+1); }
  std::int32_t Release() { return Change(-1); }
  std::int32_t count() const { return count_.load(std::memory_order_acquire); }

 private:
  std::int32_t Change(std::int32_t by) {
    base::AutoLock hold(lock_);
    return count_.fetch_add(by, std::memory_order_acq_rel) + by;
  }

  base::Lock lock_;
  std::atomic<std::int32_t> count_{0};
};

// Implements the counted-object operations of interface `I`. A new object has count 0: hand it to
// a `RefPtr` at once.
//
//   class Clock : public RefPtrCounted<IClock, ThreadSafeRefPolicy> { ... };
//   RefPtr<IClock> clock(new Clock);
template <class I, class Policy = ThreadSafeRefPolicy>
class RefPtrCounted : public I {
 public:
  void AddRef() override { policy_.Add(); }
  void Release() override {
    if (policy_.Release() == 0) Destroy();
  }
  void Destroy() override { delete this; }
  void Reserved() override {}

  RefPtrCounted(const RefPtrCounted&) = delete;
  RefPtrCounted& operator=(const RefPtrCounted&) = delete;

 protected:
  RefPtrCounted() = default;
  virtual ~RefPtrCounted() = default;

 private:
  Policy policy_;
};

// Owns one reference to a counted object, or nothing. Copies take a reference each. `T` is any
// type with `AddRef` and `Release`. One `RefPtr` is not for two threads at once; the object is.
template <class T>
class RefPtr {
 public:
  RefPtr() = default;
  RefPtr(std::nullptr_t) {}
  explicit RefPtr(T* object) : object_(object) {
    if (object_) object_->AddRef();
  }
  RefPtr(const RefPtr& other) : RefPtr(other.object_) {}
  RefPtr(RefPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  RefPtr(const RefPtr<U>& other) : RefPtr(other.get()) {}
  RefPtr& operator=(RefPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~RefPtr() {
    if (object_) object_->Release();
  }

  // Takes over the reference that the caller owns, for instance one made by `CreateInstance`.
  static RefPtr Adopt(T* object) {
    RefPtr adopted;
    adopted.object_ = object;
    return adopted;
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};
