// Makes a message body out of typed text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "imsdk/client/emotion_list.h"

namespace imsdk::bridge {

// The message body of a typed text, with each shortcut of the list replaced by its token. Every
// shortcut begins with "/:"; of several that fit at one place the longest wins. Everything else
// arrives as it was typed, also what looks like a token.
std::wstring TextToEmotion(std::wstring_view text, const std::vector<client::IMEmotion>& emotions);

}  // namespace imsdk::bridge
