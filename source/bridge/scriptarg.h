// Reads the arguments of a script call as texts.
#pragma once

#include <string>

#include "bridge/imsdkbridge.h"

namespace imsdk::bridge {

// The text of argument `index`, empty when it is missing. An argument that is no text is turned
// into one in `*made`; the result refers to `*made`, or to `param` itself.
const std::wstring& ArgText(const SdkParam& param, std::size_t index, std::wstring* made);

}  // namespace imsdk::bridge
