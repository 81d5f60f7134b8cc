// Sending in single chat.
#include <algorithm>
#include <utility>

#include "imsdk/client/emotion_list.h"
#include "imsdk/client/picture_editor.h"
#include "kexbase/base64.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgesinglemsg.h"
#include "source/bridge/emotiontext.h"
#include "source/bridge/jsparams/idtext.h"

namespace imsdk::bridge {
namespace {

using ns_log::CTraceProxy;

// The engine's form of a body item. Content that is no Base64 is left out, and traced.
biz::IMBodyItem ToEngine(const BodyItem& item, const CallBase& call) {
  biz::IMBodyItem made{item.type, item.jvale, item.value, base::FilePath(item.filepath), {}};
  if (!base::Base64Decode(base::WideToUTF8(item.filecontent), &made.filecontent)) {
    CTraceProxy(ns_log::kWarning, call.site(), L"json")
        .Brief("_brief_,it->filecontent", item.filecontent);
    made.filecontent.clear();
  }
  return made;
}

std::vector<biz::IMBodyItem> ToEngine(const std::vector<BodyItem>& items, const CallBase& call) {
  std::vector<biz::IMBodyItem> body;
  body.reserve(items.size());
  for (const BodyItem& item : items) body.push_back(ToEngine(item, call));
  return body;
}

// Sends one message to each of `cids`. One refusal does not keep the message from the others;
// returns the first one.
std::int32_t SendToEach(biz::IIMSingleChatMgr& mgr, const std::vector<biz::IMUserID>& cids,
                        const std::vector<biz::IMBodyItem>& body,
                        const biz::IMSendOptions& options) {
  std::int32_t status = cids.empty() ? E_INVALIDARG : 0;
  for (const biz::IMUserID& cid : cids) {
    const RefPtr<biz::IIMConversation> chat = mgr.GetConversation(cid);
    const std::int32_t sent = chat ? chat->SendMsg(body, options) : E_UNEXPECTED;
    if (status >= 0) status = std::min(sent, 0);
  }
  return status;
}

}  // namespace

void CBridgeSingleMsg::SendNormalChatMsg(const SendMsgRequest& request, Conversation chat,
                                         Call<NoKeys> call) {
  call.FinishSend(
      chat->SendMsg(ToEngine(request.msgbody, call), {.autosend = request.autosend != 0}));
}

void CBridgeSingleMsg::SendAutoReplyMsg(const SendMsgRequest& request, Conversation chat,
                                        Call<NoKeys> call) {
  call.FinishSend(chat->SendMsg(ToEngine(request.msgbody, call),
                                {.autosend = request.autosend != 0, .autoreply = true}));
}

void CBridgeSingleMsg::SendBroadcastMsg(const BroadcastMsgRequest& request, ChatMgr mgr,
                                        Call<NoKeys> call) {
  call.FinishSend(SendToEach(*mgr, request.cids, ToEngine(request.msgbody, call), {}));
}

void CBridgeSingleMsg::ForwardChatMsg(const ForwardMsgRequest& request, ChatMgr mgr,
                                      Call<NoKeys> call) {
  const biz::IMSendOptions options{.forward_msgid = request.msgid,
                                   .forward_msgtype = request.msgtype};
  call.FinishSend(SendToEach(*mgr, request.cids, ToEngine(request.msgbody, call), options));
}

void CBridgeSingleMsg::ReSendChatMsg(const MsgRequest& request, Conversation chat,
                                     Call<NoKeys> call) {
  call.FinishSend(chat->ReSendMsg(request.msgid, false));
}

void CBridgeSingleMsg::FastReSendChatMsg(const MsgRequest& request, Conversation chat,
                                         Call<NoKeys> call) {
  call.FinishSend(chat->ReSendMsg(request.msgid, true));
}

void CBridgeSingleMsg::EditPic2SendMsg(const EditPicRequest& request, ChatMgr mgr,
                                       Call<NoKeys> call) {
  const auto refuse = [](const Call<NoKeys>& refused, std::int32_t code, const wchar_t* text) {
    CTraceProxy(ns_log::kError, refused.site(), text);
    refused.Fail(code, text);
  };
  if (request.filepath.empty()) return refuse(call, E_INVALIDARG, L"invalid filepath");
  for (const biz::IMUserID& cid : request.cids) {
    if (mgr->GetConversation(cid)) continue;
    CTraceProxy(ns_log::kError, call.site(), L"IsInvalid cid").Brief("_brief_,cid", IdText(cid));
    return call.Fail(E_INVALIDARG, L"IsInvalid cid");
  }
  if (request.cids.empty()) return call.FinishSend(E_INVALIDARG);
  CTraceProxy(ns_log::kRoutine, call.site(), L"EditImage")
      .Brief("_brief_,vecCIDs", Joined(request.cids, IdText));
  const auto editor = kexcore::GetService<client::IPictureEditorService>();
  if (!editor) return refuse(call, E_UNEXPECTED, L"EditImage failed!");
  editor->EditImage(
      base::FilePath(request.filepath), request.fileMD5,
      [refuse, mgr, cids = request.cids, call](const biz::ResultCode& result,
                                               const base::FilePath& edited) {
        if (!result.ok()) return refuse(call, result.code, L"EditImage failed!");
        call.FinishSend(SendToEach(*mgr, cids, {{biz::kMsgPicture, {}, {}, edited, {}}}, {}));
      });
}

void CBridgeSingleMsg::ShieldAutoReply(const ShieldRequest& request, Conversation chat,
                                       Call<NoKeys> call) {
  chat->ShieldAutoReply(request.setignore != 0, std::move(call));
}

void CBridgeSingleMsg::ConvertMsgText2Emotion(const EmotionText& request, Call<EmotionText> call) {
  EmotionText converted = request;
  if (const auto service = kexcore::GetService<client::IEmotionListService>()) {
    converted.value = TextToEmotion(request.value, service->GetEmotions());
  }
  call.Succeed(converted);
}

}  // namespace imsdk::bridge
