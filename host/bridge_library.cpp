#include "bridge_library.h"

#include <utility>

#include "kexbase/native_library.h"

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
  std::string reason = "it does not export GetKexCOMFactory";
  const auto library = base::NativeLibrary::Open(base::FilePath::FromUTF8(file.string()), &reason);
  const auto get_factory = library.Function<IKexCOMFactory*()>("GetKexCOMFactory");
  if (!get_factory) {
    *error = "the bridge library cannot be loaded: " + reason;
    return nullptr;
  }
  IKexCOMFactory* factory = get_factory();
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

std::string BridgeLibrary::Describe() const {
  std::string document;
  const bridge::TextSink take = [](void* context, const char* text, std::size_t size) {
    static_cast<std::string*>(context)->assign(text, size);
  };
  manager_->Describe(take, &document);
  return document;
}

void BridgeLibrary::ReadCore(std::string_view json, bridge::CoreRecord* record) const {
  manager_->ReadCoreRecord(json.data(), json.size(), record);
}

RefPtr<bridge::IIMSDKBridge> BridgeLibrary::NewBridge() const {
  return Create<bridge::IIMSDKBridge>(factory_, kClassIMSDKBridge, kIID_IIMSDKBridge);
}

}  // namespace imsdk::host
