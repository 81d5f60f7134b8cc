#include <pthread.h>

#include "kexbase/os.h"

namespace base::internal {

void SetCurrentThreadName(const std::string& utf8) {
  constexpr size_t kLongest = 15;  // what Linux takes, it refuses longer names
  pthread_setname_np(pthread_self(), utf8.substr(0, kLongest).c_str());
}

}  // namespace base::internal
