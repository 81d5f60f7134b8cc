// The component registry: where the host, the engine and the bridge library find each other.
#pragma once

#include "kexcom/ref_counted.h"

// kexcore is the one shared library among the host libraries, because a process has one registry.
// Its build defines KEXCORE_API to export the function; everybody else links its import library.
#ifndef KEXCORE_API
#define KEXCORE_API
#endif

// The registry. Any thread. Services are counted objects under a text identifier, the
// `kServiceId` of their interface.
class IKexCOM {
 public:
  // Registers `service` under `id`, taking a reference; replaces a service that is there.
  virtual void RegisterService(const char* id, IKexCOMRefCounted* service) = 0;
  // Drops the service under `id` and its reference. An unknown id is ignored.
  virtual void UnregisterService(const char* id) = 0;
  // The service under `id` with one reference for the caller, or null.
  virtual IKexCOMRefCounted* QueryService(const char* id) = 0;

 protected:
  ~IKexCOM() = default;
};

// The registry of the process. Never null; lives until the process ends.
extern "C" KEXCORE_API IKexCOM* GetKexCOM();

namespace kexcore {

// The registered service of interface `I`, or null. `I` derives singly from `IKexCOMRefCounted`
// and names itself by `I::kServiceId`.
template <class I>
RefPtr<I> GetService() {
  return RefPtr<I>::Adopt(static_cast<I*>(GetKexCOM()->QueryService(I::kServiceId)));
}

}  // namespace kexcore
