// The tribes of one account, but for their messages.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/callback.h"
#include "imsdk/biz/user_id.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// A class that tribes can have.
struct IMTribeClass {
  std::int32_t index = 0;
  std::wstring name;
};

struct IMTribeClasses {
  std::vector<IMTribeClass> classlist;
};

// A tribe and a text for it.
struct IMTribeText {
  IMTribeID tribeid;
  std::wstring str;
};

// Counted, any thread.
class IIMTribeMgr : public IKexCOMRefCounted {
 public:
  // The classes that there are, in the order in which to offer them.
  virtual void GetAllClass(const IMNothing& request, IMCallback<IMTribeClasses> done) = 0;
  // Renames a tribe; only its owner may. `kEngineEmpty` without a name, `kEngineTooLarge` for one
  // of over 128 UTF-16 code units.
  virtual void SetTribeName(const IMTribeText& request, IMCallback<> done) = 0;

 protected:
  ~IIMTribeMgr() = default;
};

}  // namespace imsdk::biz
