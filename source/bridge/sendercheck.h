// Checks that a single-chat message belongs to the conversation it came in.
#pragma once

#include <string_view>

#include "imsdk/biz/message.h"
#include "trace/traceproxy.h"

namespace imsdk::bridge {

// The main-account part of a nick: what stands before its first ":", the whole nick when there is
// none or it stands first.
std::wstring_view MainNick(std::wstring_view nick);

// Writes the trace point "imsdk_bc_msg_fromid_check" with `text` and `brief` when the message's
// conversation is neither its sender nor its receiver, sub-accounts counting as their main
// account. `brief` names conversation, receiver, sender and time. The check only reports.
void CheckSender(const biz::IMMessage& msg, const ns_log::TraceSite& site, std::wstring_view text,
                 const char* brief);

}  // namespace imsdk::bridge
