#include "kexbase/lock.h"

#include <windows.h>

#include <new>

namespace base::internal {

namespace {

SRWLOCK* Native(unsigned char* storage) {
  return std::launder(reinterpret_cast<SRWLOCK*>(storage));
}

}  // namespace

LockImpl::LockImpl() {
  static_assert(sizeof(SRWLOCK) <= sizeof(native_));
  InitializeSRWLock(new (native_) SRWLOCK);
}

LockImpl::~LockImpl() = default;

void LockImpl::Lock() { AcquireSRWLockExclusive(Native(native_)); }

void LockImpl::Unlock() { ReleaseSRWLockExclusive(Native(native_)); }

bool LockImpl::Try() { return TryAcquireSRWLockExclusive(Native(native_)) != 0; }

}  // namespace base::internal
