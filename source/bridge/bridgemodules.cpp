#include "source/bridge/bridgemodules.h"

#include "source/bridge/bridgeimlogin.h"
#include "source/bridge/bridgesinglemsg.h"
#include "source/bridge/bridgevirtualmsg.h"

namespace imsdk::bridge {
namespace {

// A module that is routed to but has no methods yet: each answers E_NOTIMPL.
class MethodlessModule : public CBridgeBase {
 public:
  using CBridgeBase::CBridgeBase;

 protected:
  std::span<const MethodRow> Methods() const override { return {}; }
};

struct CBridgeTribeMsg final : MethodlessModule {
  using MethodlessModule::MethodlessModule;
};
struct CBridgeTribeMgr final : MethodlessModule {
  using MethodlessModule::MethodlessModule;
};
struct CBridgeBizUtil final : MethodlessModule {
  using MethodlessModule::MethodlessModule;
};
struct CBridgeContact final : MethodlessModule {
  using MethodlessModule::MethodlessModule;
};
struct CBridgeFileTransfer final : MethodlessModule {
  using MethodlessModule::MethodlessModule;
};
}  // namespace

ModuleTable MakeBridgeModules(const ModuleContext& context) {
  return {
      {L"im.singlemsg", std::make_shared<CBridgeSingleMsg>(context)},
      {L"im.tribemsg", std::make_shared<CBridgeTribeMsg>(context)},
      {L"im.tribemgr", std::make_shared<CBridgeTribeMgr>(context)},
      {L"im.bizutil", std::make_shared<CBridgeBizUtil>(context)},
      {L"im.contact", std::make_shared<CBridgeContact>(context)},
      {L"im.filetransfer", std::make_shared<CBridgeFileTransfer>(context)},
      {L"im.login", std::make_shared<CBridgeIMLogin>(context)},
      {L"im.virtualmsg", std::make_shared<CBridgeVritualMsg>(context)},
      // No call can name these: the path of every call begins with "im.".
      {L"sysmsg", std::make_shared<CBridgeSysMsg>(context)},
      {L"subscribemsg", std::make_shared<CBridgeSubscribeMsg>(context)},
  };
}

}  // namespace imsdk::bridge
