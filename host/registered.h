// Services of the host in the component registry.
#pragma once

#include "kexcom/ref_counted.h"
#include "kexcore/kexcom.h"

namespace imsdk::host {

// A service that is in the component registry as long as this lives.
template <class I>
class Registered {
 public:
  explicit Registered(const RefPtr<I>& service) {
    GetKexCOM()->RegisterService(I::kServiceId, service.get());
  }
  ~Registered() { GetKexCOM()->UnregisterService(I::kServiceId); }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;
};

}  // namespace imsdk::host
