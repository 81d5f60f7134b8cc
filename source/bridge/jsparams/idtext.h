// Identifiers as traces show them.
#pragma once

#include <string>

#include "imsdk/biz/user_id.h"

namespace imsdk::bridge {

// The long user identifier: application key, then nick.
inline std::wstring IdText(const biz::IMUserID& id) { return id.appkey + id.nick; }

}  // namespace imsdk::bridge
