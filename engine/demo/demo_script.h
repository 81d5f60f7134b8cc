// What the people of the demo set have written to each other.
#pragma once

#include <cstdint>
#include <span>

#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/message.h"

namespace imsdk::demo {

struct ScriptLine {
  std::int64_t minutes_ago = 0;
  const wchar_t* from = L"";
  const wchar_t* to = L"";    // empty: the tribe
  const wchar_t* text = L"";  // for a file: its name
  biz::IMMsgType kind = biz::kMsgText;
  bool unread = false;  // by the receivers
  biz::IMCIDType sender = biz::kCIDUser;
};

// Oldest first within each conversation.
std::span<const ScriptLine> Script();

// The tribe's name.
const wchar_t* TribeName();

// The content of the text file that is sent.
const char* FileText();

}  // namespace imsdk::demo
