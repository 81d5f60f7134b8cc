// The notifications of "im.tribemsg" and the feed that they come from.
#pragma once

#include "source/bridge/accountfeed.h"

namespace imsdk::bridge {

extern const NotifyList kTribeMsgNotifications;
std::shared_ptr<CAccountFeed> MakeTribeMsgFeed(RefPtr<biz::IIMAccount> account);

}  // namespace imsdk::bridge
