// What the people of the demo set have written to each other.
#pragma once

#include <cstdint>
#include <span>

#include "imsdk/biz/message.h"
#include "link/server_link.h"

namespace imsdk::demo {

struct ScriptLine {
  std::int64_t minutes_ago = 0;
  const wchar_t* from = L"";
  const wchar_t* to = L"";
  const wchar_t* text = L"";  // for a file: its name
  biz::IMMsgType kind = biz::kMsgText;
  bool unread = false;  // by the receiver
  link::Channel channel = link::Channel::kSingleChat;
};

// Oldest first within each pair.
std::span<const ScriptLine> Script();

// The content of the text file that is sent.
const char* FileText();

}  // namespace imsdk::demo
