// The bridge manager: starts and stops the business layer.
#pragma once

#include "bridge/imbridgemgr.h"
#include "kexcom/factory.h"

namespace imsdk::bridge {

class CIMBridgeMgr : public IIMBridgeMgr {
 public:
  using Interface = IIMBridgeMgr;
  static constexpr const char* kClassName = kClassIMBridgeMgr;
  static constexpr const char* kClassId = kCLSID_IMBridgeMgr;
  static constexpr const char* kInterfaceId = kIID_IIMBridgeMgr;

  std::int32_t Init() override;
  void Uninit() override;
  std::int32_t Describe(TextSink sink, void* context) override;
  std::int32_t ReadCoreRecord(const char* text, std::size_t size, CoreRecord* record) override;
  std::int32_t WriteCoreRecord(const CoreRecord& record, TextSink sink, void* context) override;

  // Whether the business layer runs. Any thread.
  static bool Started();

 protected:
  ~CIMBridgeMgr() = default;
};

}  // namespace imsdk::bridge
