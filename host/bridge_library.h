// The bridge library, loaded from its file.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "bridge/imbridgemgr.h"
#include "bridge/imsdkbridge.h"
#include "kexcom/factory.h"
#include "kexcom/ref_counted.h"

namespace imsdk::host {

// The loaded library with its business layer started. The file is never unloaded: an engine thread
// may be inside it as long as the process lives.
class BridgeLibrary {
 public:
  // Loads `file`, gets its factory and starts the bridge manager. Null when that fails; `*error`
  // then says why.
  static std::unique_ptr<BridgeLibrary> Load(const std::filesystem::path& file, std::string* error);
  // Stops the business layer.
  ~BridgeLibrary();
  BridgeLibrary(const BridgeLibrary&) = delete;
  BridgeLibrary& operator=(const BridgeLibrary&) = delete;

  // The description of the protocol to pages, JSON in UTF-8; empty when it cannot be had.
  std::string Describe() const;

  // Reads a record of the messaging core from its JSON text, UTF-8: what the text lacks stays as it
  // is there. Any thread.
  void ReadCore(std::string_view json, bridge::CoreRecord* record) const;

  // A new bridge, or null when none can be made. Any thread.
  RefPtr<bridge::IIMSDKBridge> NewBridge() const;

 private:
  BridgeLibrary(IKexCOMFactory& factory, RefPtr<bridge::IIMBridgeMgr> manager);

  IKexCOMFactory& factory_;
  RefPtr<bridge::IIMBridgeMgr> manager_;
};

}  // namespace imsdk::host
