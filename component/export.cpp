// The library's one door.

#include "component/export.h"
#include "component/comfactory.h"
#include "component/comobject.h"
#include "source/bridge/imbridgemgr.h"
#include "source/bridge/imsdkbridge.h"

namespace imsdk::component {
namespace {

template <class T>
IKexCOMCreator* Runtime() {
  static CKexCOMObjectRuntime<T> runtime;
  return &runtime;
}

}  // namespace
}  // namespace imsdk::component

KEXCOM_EXPORT IKexCOMFactory* GetKexCOMFactory() try {
  using imsdk::component::Runtime;
  static imsdk::component::CKexCOMFactory factory(
      "bridge", "bridge",
      {{kClassIMBridgeMgr, Runtime<imsdk::bridge::CIMBridgeMgr>()},
       {kClassIMSDKBridge, Runtime<imsdk::bridge::CIMSDKBridge>()}});
  return &factory;
} catch (...) {
  return nullptr;
}
