// The notifications of "im.contact" and the feed that they come from.
#pragma once

#include "source/bridge/accountfeed.h"

namespace imsdk::bridge {

extern const NotifyList kContactNotifications;
std::shared_ptr<CAccountFeed> MakeContactFeed(RefPtr<biz::IIMAccount> account);

}  // namespace imsdk::bridge
