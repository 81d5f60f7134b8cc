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

// How traces name what identifies a message that was fetched, and one that came by an event.
inline constexpr char kFetchedBrief[] = "_brief_,it->cid, it->toid, it->fromid, it->msgtime";
inline constexpr char kEventBrief[] = "_brief_,msg.cid, msg.toid, msg.fromid, msg.msgtime";

}  // namespace imsdk::bridge
