#include "bridge_library.h"

#include <dlfcn.h>

#include <utility>

namespace imsdk::host {
namespace {

template <class I>
RefPtr<I> Create(IKexCOMFactory& factory, const char* class_name, const char* iid) {
  void* object = nullptr;
  if (factory.CreateInstance(class_name, iid, &object) != 0) return nullptr;
  return RefPtr<I>::Adopt(static_cast<I*>(object));
}

}  // namespace

std::unique_ptr<BridgeLibrary> BridgeLibrary::Load(const std::filesystem::path& file,
                                                   std::string* error) {
  void* library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* symbol = library ? ::dlsym(library, "GetKexCOMFactory") : nullptr;
  if (!symbol) {
    *error = std::string("the bridge library cannot be loaded: ") + ::dlerror();
    return nullptr;
  }
  IKexCOMFactory* factory = reinterpret_cast<GetKexCOMFactoryFn>(symbol)();
  RefPtr<bridge::IIMBridgeMgr> manager;
  if (factory) {
    manager = Create<bridge::IIMBridgeMgr>(*factory, kClassIMBridgeMgr, kIID_IIMBridgeMgr);
  }
  if (!manager || manager->Init() != 0) {
    *error = "the bridge library " + file.string() + " does not start";
    return nullptr;
  }
  return std::unique_ptr<BridgeLibrary>(new BridgeLibrary(*factory, std::move(manager)));
}

BridgeLibrary::BridgeLibrary(IKexCOMFactory& factory, RefPtr<bridge::IIMBridgeMgr> manager)
    : factory_(factory), manager_(std::move(manager)) {}

BridgeLibrary::~BridgeLibrary() { manager_->Uninit(); }

RefPtr<bridge::IIMSDKBridge> BridgeLibrary::NewBridge() const {
  return Create<bridge::IIMSDKBridge>(factory_, kClassIMSDKBridge, kIID_IIMSDKBridge);
}

}  // namespace imsdk::host
