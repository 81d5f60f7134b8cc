// Users named by one text: a site's prefix of eight characters, then the nick.
#pragma once

#include <string>

#include "imsdk/biz/contact.h"

namespace imsdk::bridge {

// Splits a long identifier into the flag of its site and the identifier that the engine takes.
// What is too short for a prefix, or bears that of no site, is of an unknown one.
biz::IMLongUserID SplitLongUserId(const std::wstring& text);

}  // namespace imsdk::bridge
