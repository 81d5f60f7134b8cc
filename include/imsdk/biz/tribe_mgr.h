// The tribes of one account, but for their messages.
#pragma once

#include "imsdk/biz/callback.h"
#include "imsdk/biz/user_id.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// Counted, any thread.
class IIMTribeMgr : public IKexCOMRefCounted {
 protected:
  ~IIMTribeMgr() = default;
};

}  // namespace imsdk::biz
