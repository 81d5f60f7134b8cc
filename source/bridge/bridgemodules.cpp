#include "source/bridge/bridgemodules.h"

namespace imsdk::bridge {
ModuleTable MakeBridgeModules(const ModuleContext& context) {
  // Routed to, but without methods yet: each answers E_NOTIMPL.
  const auto no_methods = [&] { return std::make_shared<CBridgeBase>(context); };
  return {
      {L"im.singlemsg", MakeBridgeSingleMsg(context)},
      {L"im.tribemsg", MakeBridgeTribeMsg(context)},
      {L"im.tribemgr", MakeBridgeTribeMgr(context)},
      {L"im.bizutil", no_methods()},
      {L"im.contact", MakeBridgeContact(context)},
      {L"im.filetransfer", MakeBridgeFileTransfer(context)},
      {L"im.login", MakeBridgeIMLogin(context)},
      {L"im.virtualmsg", MakeBridgeVritualMsg(context)},
      // No call can name these: the path of every call begins with "im.".
      {L"sysmsg", MakeBridgeSysMsg(context)},
      {L"subscribemsg", MakeBridgeSubscribeMsg(context)},
  };
}

}  // namespace imsdk::bridge
