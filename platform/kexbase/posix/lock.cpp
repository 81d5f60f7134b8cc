#include "kexbase/lock.h"

#include <pthread.h>

#include <new>

namespace base::internal {

namespace {

pthread_mutex_t* Native(unsigned char* storage) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}

}  // namespace

LockImpl::LockImpl() {
  static_assert(sizeof(pthread_mutex_t) <= sizeof(native_));
  static_assert(alignof(pthread_mutex_t) <= alignof(LockImpl));
  pthread_mutex_init(new (native_) pthread_mutex_t, nullptr);
}

LockImpl::~LockImpl() { pthread_mutex_destroy(Native(native_)); }

void LockImpl::Lock() { pthread_mutex_lock(Native(native_)); }

void LockImpl::Unlock() { pthread_mutex_unlock(Native(native_)); }

bool LockImpl::Try() { return pthread_mutex_trylock(Native(native_)) == 0; }

}  // namespace base::internal
