#include "source/bridge/sendercheck.h"

#include <string>

#include "kexbase/guid.h"
#include "kexcom/result.h"
#include "source/bridge/jsparams/idtext.h"
#include "source/bridge/tracepoint.h"

namespace imsdk::bridge {
namespace {

bool SameMainAccount(const biz::IMUserID& a, const biz::IMUserID& b) {
  return a.appkey == b.appkey && MainNick(a.nick) == MainNick(b.nick);
}

constexpr char kFetchedBrief[] = "_brief_,it->cid, it->toid, it->fromid, it->msgtime";

}  // namespace

std::wstring_view MainNick(std::wstring_view nick) {
  const std::size_t colon = nick.find(L':');
  return colon == 0 ? nick : nick.substr(0, colon);
}

void CheckSender(const biz::IMMessage& msg, const ns_log::TraceSite& site, std::wstring_view text,
                 const char* brief) {
  const biz::IMUserID& cid = msg.cid.user;
  if (SameMainAccount(cid, msg.fromid) || SameMainAccount(cid, msg.toid)) return;
  Mark(ns_log::CTraceProxy(ns_log::kError, site, text)
           .Brief(brief, IdText(cid), IdText(msg.toid), IdText(msg.fromid), msg.msgtime),
       {.node_name = "imsdk_bc_msg_fromid_check",
        .unique_id = base::UTF8ToWide(base::GenerateGUID()),
        .result_code = E_INVALIDARG,
        .session_id = IdText(cid),
        .imsdk_msgid = msg.msgid});
}

void CheckSenders(const std::vector<biz::IMMessage>& msgs, const ns_log::TraceSite& site,
                  std::wstring_view text, const char* brief) {
  for (const biz::IMMessage& msg : msgs) CheckSender(msg, site, text, brief);
}

void CheckNewMsgs(const std::vector<biz::IMMessage>& msgs, const ns_log::TraceSite& site) {
  CheckSenders(msgs, site, L"new msg. fromid is invalid!!", kFetchedBrief);
}

void CheckFetchedMsgs(const biz::ResultCode& result, const std::vector<biz::IMMessage>& msgs,
                      const ns_log::TraceSite& site) {
  if (!result.ok()) return;
  ns_log::CTraceProxy(ns_log::kRoutine, site, L"response msgs.")
      .Brief("_brief_,msgids", MsgIdsText(msgs));
  CheckSenders(msgs, site, L"rsp msg. fromid is invalid!!", kFetchedBrief);
}

}  // namespace imsdk::bridge
