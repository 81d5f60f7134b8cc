// The module table: routing path to business module.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "source/bridge/bridgebase.h"

namespace imsdk::bridge {

using ModuleTable = std::map<std::wstring, std::shared_ptr<CBridgeBase>>;

// Makes the eight modules of one bridge, and those that only send notifications.
ModuleTable MakeBridgeModules(const ModuleContext& context);

// The modules, each in its own file.
std::shared_ptr<CBridgeBase> MakeBridgeContact(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeFileTransfer(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeIMLogin(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeSingleMsg(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeTribeMgr(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeTribeMsg(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeVritualMsg(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeSysMsg(const ModuleContext& context);
std::shared_ptr<CBridgeBase> MakeBridgeSubscribeMsg(const ModuleContext& context);

}  // namespace imsdk::bridge
