// The client's emotions, implemented by the host.
#pragma once

#include <string>
#include <vector>

#include "kexcom/ref_counted.h"

namespace imsdk::client {

// One emotion of the client.
struct IMEmotion {
  std::wstring shortcut;  // what a person types, for instance "/:smile"
  std::wstring path;      // the image
};

// Lists the emotions. Found in the component registry; without it no shortcut is replaced. Any
// thread; must not wait.
class IEmotionListService : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "imsdk.client.IEmotionListService";

  virtual std::vector<IMEmotion> GetEmotions() = 0;

 protected:
  ~IEmotionListService() = default;
};

}  // namespace imsdk::client
