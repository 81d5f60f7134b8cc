// Sending.
#include <algorithm>
#include <utility>

#include "imsdk/client/emotion_list.h"
#include "imsdk/client/picture_editor.h"
#include "kexbase/base64.h"
#include "kexbase/distinct.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgeconversation.h"
#include "source/bridge/emotiontext.h"
#include "source/bridge/jsparams/idtext.h"

namespace imsdk::bridge {
namespace {

constexpr wchar_t kEditFailed[] = L"EditImage failed!";

// The engine's callback of a send.
biz::IMCallback<> AnswerSend(Call<> call) {
  return [call = std::move(call)](const biz::ResultCode& result) { call.FinishSend(result); };
}

// Sends that are answered together, with the first refusal in their order.
class Sends {
 public:
  Sends(std::size_t count, Call<> call) : call_(std::move(call)), open_(count), statuses_(count) {}

  // Any thread.
  void Answer(std::size_t index, const biz::ResultCode& status) {
    {
      base::AutoLock hold(lock_);
      statuses_[index] = status;
      if (--open_ != 0) return;
    }
    const auto refused = std::find_if(statuses_.begin(), statuses_.end(),
                                      [](const biz::ResultCode& of) { return of.code < 0; });
    call_.FinishSend(refused == statuses_.end() ? biz::ResultCode() : *refused);
  }

 private:
  const Call<> call_;
  base::Lock lock_;
  std::size_t open_;
  std::vector<biz::ResultCode> statuses_;
};

// Sends one message to each of `receivers`, however often it is named. One refusal does not keep
// the message from the others.
void SendToEach(biz::IIMChatMgr& mgr, const std::vector<biz::IMConversationID>& receivers,
                const biz::IMSendRequest& message, Call<> call) {
  const std::vector<biz::IMConversationID> cids = base::Distinct(receivers);
  if (cids.empty()) return call.FinishSend({E_INVALIDARG, 0, L"nobody to send to"});
  const auto sends = std::make_shared<Sends>(cids.size(), std::move(call));
  for (std::size_t i = 0; i < cids.size(); ++i) {
    const RefPtr<biz::IIMConversation> chat = mgr.GetConversation(cids[i]);
    if (!chat) {
      sends->Answer(i, {E_UNEXPECTED, 0, L"GetConversation failed!!"});
      continue;
    }
    chat->SendMsg(message, [sends, i](const biz::ResultCode& result) { sends->Answer(i, result); });
  }
}

}  // namespace

biz::IMBody CBridgeConversation::ToEngine(const std::vector<BodyItem>& items,
                                          const CallBase& call) const {
  std::vector<biz::IMBodyItem> body;
  body.reserve(items.size());
  for (const BodyItem& it : items) {
    biz::IMBodyItem made{it.type, it.jvale, it.value, it.filepath, {}};
    const bool good = base::Base64Decode(base::WideToUTF8(it.filecontent), &made.filecontent);
    if (!good) made.filecontent.clear();
    if (!good || (kind_.traces_files && !it.filecontent.empty())) {
      call.Trace(good ? ns_log::kRoutine : ns_log::kWarning, L"json")
          .Brief("_brief_,it->filecontent", it.filecontent);
    }
    body.push_back(std::move(made));
  }
  return std::make_shared<const std::vector<biz::IMBodyItem>>(std::move(body));
}

void CBridgeConversation::Send(const In<SendMsgRequest>& request, bool autoreply, Chat chat,
                               Call<> call) const {
  chat->SendMsg({.body = ToEngine(request.msgbody, call),
                 .autosend = request.autosend,
                 .autoreply = autoreply,
                 .tribeat = request.tribeat},
                AnswerSend(call));
}

void CBridgeConversation::SendBroadcastMsg(const BroadcastMsgRequest& request, ChatMgr mgr,
                                           Call<> call) {
  SendToEach(*mgr, request.cids, {.body = ToEngine(request.msgbody, call)}, call);
}

void CBridgeConversation::ForwardChatMsg(const ForwardMsgRequest& request, ChatMgr mgr,
                                         Call<> call) {
  SendToEach(*mgr, request.cids,
             {.body = ToEngine(request.msgbody, call),
              .forward_msgid = request.msgid,
              .forward_msgtype = request.msgtype},
             call);
}

void CBridgeConversation::ReSend(const biz::IMResendRequest& request, Chat chat, Call<> call) {
  chat->ReSendMsg(request, AnswerSend(std::move(call)));
}

void CBridgeConversation::EditPic2SendMsg(const EditPicRequest& request, ChatMgr mgr, Call<> call) {
  if (request.filepath.empty()) return call.Fail(E_INVALIDARG, L"invalid filepath");
  for (const biz::IMConversationID& cid : request.cids) {
    if (mgr->GetConversation(cid)) continue;
    constexpr wchar_t kInvalid[] = L"IsInvalid cid";
    call.Trace(ns_log::kError, kInvalid).Brief("_brief_,cid", ConversationText(cid));
    return call.Finish({E_INVALIDARG, 0, kInvalid});
  }
  if (request.cids.empty()) return SendToEach(*mgr, {}, {}, call);
  call.Trace(ns_log::kRoutine, L"EditImage")
      .Brief("_brief_,vecCIDs", Joined(request.cids, ConversationText));
  const auto editor = kexcore::GetService<client::IPictureEditorService>();
  if (!editor) return call.Fail(E_UNEXPECTED, kEditFailed);
  editor->EditImage(
      request.filepath, request.fileMD5,
      [mgr, cids = request.cids, call](const biz::ResultCode& result,
                                       const base::FilePath& edited) {
        if (!result.ok()) return call.Fail({result.code, result.subcode, kEditFailed}, kEditFailed);
        const biz::IMBodyItem picture{biz::kMsgPicture, {}, {}, edited, {}};
        SendToEach(*mgr, cids,
                   {.body = std::make_shared<const std::vector<biz::IMBodyItem>>(1, picture)},
                   call);
      });
}

void CBridgeConversation::ConvertMsgText2Emotion(const EmotionText& request,
                                                 Call<EmotionText> call) {
  std::vector<client::IMEmotion> emotions;
  if (const auto service = kexcore::GetService<client::IEmotionListService>()) {
    emotions = service->GetEmotions();
  }
  EmotionText converted = request;
  converted.value = TextToEmotion(request.value, emotions);
  call.Succeed(converted);
}

}  // namespace imsdk::bridge
