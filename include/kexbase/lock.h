// Mutual exclusion.
#pragma once

namespace base {

namespace internal {

// The operating system's lock for the threads of one process, not recursive. The system's own
// object lives in `native_`, so that this header needs no system header.
class LockImpl {
 public:
  LockImpl();
  ~LockImpl();

  LockImpl(const LockImpl&) = delete;
  LockImpl& operator=(const LockImpl&) = delete;

  // Waits until no thread holds the lock, then holds it.
  void Lock();

  // Called by the thread that holds the lock.
  void Unlock();

  // Takes the lock if it is free; true when taken. Never waits.
  bool Try();

 private:
  // A number of its own: on 32-bit Windows std::max_align_t depends on what was included before.
  alignas(8) unsigned char native_[64];
};

}  // namespace internal

// A lock, not recursive: taking it twice on one thread hangs. Usable with std::lock_guard and with
// std::unique_lock (hence the lower-case names).
class Lock {
 public:
  Lock() = default;

  void Acquire() { impl_.Lock(); }
  void Release() { impl_.Unlock(); }
  bool Try() { return impl_.Try(); }

  void lock() { impl_.Lock(); }
  void unlock() { impl_.Unlock(); }
  bool try_lock() { return impl_.Try(); }

 private:
  internal::LockImpl impl_;
};

// Holds a lock for as long as it lives. The lock must live longer.
class [[nodiscard]] AutoLock {
 public:
  explicit AutoLock(Lock& lock) : lock_(lock) { lock_.Acquire(); }
  ~AutoLock() { lock_.Release(); }

  AutoLock(const AutoLock&) = delete;
  AutoLock& operator=(const AutoLock&) = delete;

 private:
  Lock& lock_;
};

}  // namespace base
