// Turns typed emotion shortcuts into the tokens of a message body.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "imsdk/client/emotion_list.h"

namespace imsdk::bridge {

// The token of a built-in emotion, "pic:imemotion|ID?filepath=…&shortcut=…" with escaped values.
std::wstring EmotionToken(const client::IMEmotion& emotion);

// `text` with each shortcut of the list replaced by its token. Every shortcut begins with "/:"; of
// several that fit at one place the longest wins. Everything else stays as it is.
std::wstring TextToEmotion(std::wstring_view text, const std::vector<client::IMEmotion>& emotions);

}  // namespace imsdk::bridge
