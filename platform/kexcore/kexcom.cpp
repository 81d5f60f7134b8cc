#include "kexcore/kexcom.h"

#include <map>
#include <string>
#include <string_view>

#include "kexbase/lock.h"

namespace {

// References are given back outside the lock: a service may use the registry as it is destroyed.
class Registry final : public IKexCOM {
 public:
  void RegisterService(const char* id, IKexCOMRefCounted* service) override {
    if (!id || !service) return;
    RefPtr<IKexCOMRefCounted> held(service);
    base::AutoLock hold(lock_);
    std::swap(services_[id], held);
  }

  void UnregisterService(const char* id) override {
    if (!id) return;
    RefPtr<IKexCOMRefCounted> held;
    base::AutoLock hold(lock_);
    const auto found = services_.find(std::string_view(id));
    if (found == services_.end()) return;
    std::swap(found->second, held);
    services_.erase(found);
  }

  IKexCOMRefCounted* QueryService(const char* id) override {
    if (!id) return nullptr;
    base::AutoLock hold(lock_);
    const auto found = services_.find(std::string_view(id));
    if (found == services_.end()) return nullptr;
    found->second->AddRef();
    return found->second.get();
  }

 private:
  base::Lock lock_;
  std::map<std::string, RefPtr<IKexCOMRefCounted>, std::less<>> services_;
};

}  // namespace

extern "C" IKexCOM* GetKexCOM() {
  // Never destroyed: modules that are unloaded late still find it.
  static Registry* const registry = new Registry;
  return registry;
}
