// The page side of the bridge, implemented by the host.
#pragma once

#include <string>

namespace imsdk::bridge {

// Receives the answers and notifications of one browser view. The order of the operations is part
// of the contract.
//
// Threads: `DeliverAnswer` and `Notify` run on the view's task runner. The texts live during the
// call. Implementations must not throw; what they throw is swallowed.
class IPageHandler {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // Delivers the answer of one call: the page's identity (`browserId`), the call's sequence
  // identifier, whether the call failed (its code is not 0), and the JSON text (may be empty).
  virtual void DeliverAnswer(const std::wstring& page, const std::wstring& seq, bool failed,
                             const std::wstring& payload) = 0;
  // Not used by the bridge.
  virtual void Reserved() = 0;
  // Raises an event on the page: its name and its JSON text.
  virtual void Notify(const std::wstring& event, const std::wstring& json) = 0;

 protected:
  ~IPageHandler() = default;
};

}  // namespace imsdk::bridge
