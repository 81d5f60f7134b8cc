// The notifications of "im.singlemsg" and the feed that they come from.
#pragma once

#include "source/bridge/accountfeed.h"

namespace imsdk::bridge {

extern const NotifyList kSingleNotifications;
std::shared_ptr<CAccountFeed> MakeSingleFeed(RefPtr<biz::IIMAccount> account);

}  // namespace imsdk::bridge
