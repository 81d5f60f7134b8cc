// The notifications of "im.tribemgr" and the feed that they come from.
#pragma once

#include "source/bridge/accountfeed.h"

namespace imsdk::bridge {

extern const NotifyList kTribeNotifications;
std::shared_ptr<CAccountFeed> MakeTribeFeed(RefPtr<biz::IIMAccount> account);

}  // namespace imsdk::bridge
