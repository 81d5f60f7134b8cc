// Counted objects of this library: how a creatable class becomes one, and its runtime record.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "kexcom/factory.h"
#include "kexcom/ref_counted.h"

namespace imsdk::component {

// The reference count of the library's objects: every change happens under the policy's lock, by
// an interlocked add.
class CCOMThreadSafeRefPolicy : public ThreadSafeRefPolicy {};

// The counted-object half of a creatable object.
template <class Policy>
class CKexCOMRootObject : public RefPtrCounted<IKexCOMRefCounted, Policy> {};

// A `T` that counts its references. `T` implements an interface with `AddRef` and `Release` of its
// own and leaves both to this class. Its memory is zero before construction.
template <class T>
class CKexCOMObject final : public CKexCOMRootObject<CCOMThreadSafeRefPolicy>, public T {
 public:
  using Root = CKexCOMRootObject<CCOMThreadSafeRefPolicy>;

  void AddRef() override { Root::AddRef(); }
  void Release() override { Root::Release(); }

  static void* operator new(std::size_t size) {
    void* memory = std::calloc(1, size);
    if (!memory) throw std::bad_alloc();
    return memory;
  }
  static void operator delete(void* memory) { std::free(memory); }
};

// Makes and describes the objects of class `T`, which names its identifiers: `kClassName`,
// `kClassId`, `kInterfaceId` and `Interface`.
template <class T>
class CKexCOMObjectRuntime final : public IKexCOMCreator {
 public:
  std::int32_t Create(const char* iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    const bool root = iid && std::strcmp(iid, kIID_IKexCOMRefCounted) == 0;
    if (!root && (!iid || std::strcmp(iid, T::kInterfaceId) != 0)) return E_NOINTERFACE;
    try {
      auto* made = new CKexCOMObject<T>;
      made->AddRef();
      *object = root ? static_cast<void*>(static_cast<IKexCOMRefCounted*>(made))
                     : static_cast<void*>(static_cast<typename T::Interface*>(made));
      return 0;
    } catch (...) {
      return E_OUTOFMEMORY;
    }
  }
  const char* ClassId() const override { return T::kClassId; }
  const char* ProgId() const override { return ClassName(); }
  const char* ClassName() const override { return T::kClassName; }
  const KexCOMClassInfo& ClassInfo() const override {
    static constexpr KexCOMClassInfo kNoTexts;
    return kNoTexts;
  }
};

}  // namespace imsdk::component
