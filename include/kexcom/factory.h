// The class factory that a component library hands to its host, its enumerator, and the class and
// interface identifiers of the bridge library.
//
// The order of the operations is part of the contract: hosts call through the function table.
#pragma once

#include <cstdint>

#include "kexcom/ref_counted.h"
#include "kexcom/result.h"

// Interface identifiers understood by `IKexCOMFactory::CreateInstance`.
inline constexpr char kIID_IIMBridgeMgr[] = "{C10810CF-3577-4E5B-BA64-635B98931082}";
inline constexpr char kIID_IIMSDKBridge[] = "{50ED7546-371E-4025-A59A-8A4327BF7B95}";
inline constexpr char kIID_IKexCOMRefCounted[] = "{8D0890E0-9AFB-4426-A830-48A27EB4475A}";

// Class names and class identifiers of the bridge library.
inline constexpr char kClassIMBridgeMgr[] = "IMBridgeMgr";
inline constexpr char kClassIMSDKBridge[] = "IMSDKBridge";
inline constexpr char kCLSID_IMBridgeMgr[] = "{D895EEAD-C80D-4FBA-920B-D6826E5516CD}";
inline constexpr char kCLSID_IMSDKBridge[] = "{9FAD7EAB-6A8F-4C2F-8DF0-ED5BE44B6FB0}";

// Descriptive texts of a class. All texts are static, UTF-8 and may be empty.
struct KexCOMClassInfo {
  const char* description = "";
  const char* vendor = "";
  const char* version = "";
};

// Makes the objects of one class. Creators are static: nobody owns or counts them.
class IKexCOMCreator {
 public:
  // Makes an object and stores its interface `iid` in `*object` with a count of 1, owned by the
  // caller. Returns 0, E_POINTER without an `object`, E_NOINTERFACE for an unknown `iid`, or
  // E_OUTOFMEMORY; on failure `*object` is null and nothing was made.
  virtual std::int32_t Create(const char* iid, void** object) = 0;
  virtual const char* ClassId() const = 0;
  // The class name, as `ClassName`.
  virtual const char* ProgId() const = 0;
  virtual const char* ClassName() const = 0;
  virtual const KexCOMClassInfo& ClassInfo() const = 0;

 protected:
  ~IKexCOMCreator() = default;
};

// A snapshot of a factory's classes in name order, with a cursor. Counted; one thread at a time.
class IKexCOMEnum : public IKexCOMRefCounted {
 public:
  // Moves to the next class and gives its name and creator, or returns false at the end. The name
  // lives as long as the enumerator.
  virtual bool Next(const char** class_name, IKexCOMCreator** creator) = 0;
  // Puts the cursor before the first class again.
  virtual void Reset() = 0;

 protected:
  ~IKexCOMEnum() = default;
};

// The factory of one library. Lives until the library is unloaded. Any thread.
class IKexCOMFactory {
 public:
  // The component's name, "bridge"; both names are the same text.
  virtual const char* Name() const = 0;
  virtual const char* SecondName() const = 0;
  // A new enumerator with a count of 1, owned by the caller. Null when memory has run out.
  virtual IKexCOMEnum* Enumerate() = 0;
  // Makes an object of the class with exactly this name. `iid` and `object` pass through to the
  // class's creator and its result is returned. A name that is not registered returns
  // `kKexCOMUnknownClass` and makes nothing.
  virtual std::int32_t CreateInstance(const char* class_name, const char* iid, void** object) = 0;
  // Registers a creator under a class name, replacing one that is there. Null names or creators
  // are ignored.
  virtual void Register(const char* class_name, IKexCOMCreator* creator) = 0;

 protected:
  ~IKexCOMFactory() = default;
};

// The type of the one function that the library exports, under the name "GetKexCOMFactory". It
// may be called from any thread and returns the same factory each time, or null when the factory
// could not be made.
using GetKexCOMFactoryFn = IKexCOMFactory* (*)();
