// The bridge manager: starts and stops the library's business layer.
#pragma once

#include <cstdint>

namespace imsdk::bridge {

// Made once by the host through the factory. Any one thread. The order of the operations is part
// of the contract.
class IIMBridgeMgr {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // Starts the business layer; before it, bridges cannot be bound. Returns 0; a second call does
  // nothing and returns 0.
  virtual std::int32_t Init() = 0;
  // Stops the business layer. Bridges that are still bound keep serving; no new ones can be bound.
  virtual void Uninit() = 0;

 protected:
  ~IIMBridgeMgr() = default;
};

}  // namespace imsdk::bridge
