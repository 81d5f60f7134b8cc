// Checks that a single-chat message belongs to the conversation it came in.
#pragma once

#include <string_view>
#include <vector>

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

// The same for each message, in order.
void CheckSenders(const std::vector<biz::IMMessage>& msgs, const ns_log::TraceSite& site,
                  std::wstring_view text, const char* brief);

// Checks new messages on their way to the page.
void CheckNewMsgs(const std::vector<biz::IMMessage>& msgs, const ns_log::TraceSite& site);
// Traces and checks what a fetch brought, if it did.
void CheckFetchedMsgs(const biz::ResultCode& result, const std::vector<biz::IMMessage>& msgs,
                      const ns_log::TraceSite& site);

// How traces name what identifies a message that came by an event.
inline constexpr char kEventBrief[] = "_brief_,msg.cid, msg.toid, msg.fromid, msg.msgtime";

}  // namespace imsdk::bridge
