// The notifications of "im.filetransfer" and the feed that they come from.
#pragma once

#include "source/bridge/accountfeed.h"

namespace imsdk::bridge {

extern const NotifyList kFileNotifications;
std::shared_ptr<CAccountFeed> MakeFileTransferFeed(RefPtr<biz::IIMAccount> account);

}  // namespace imsdk::bridge
