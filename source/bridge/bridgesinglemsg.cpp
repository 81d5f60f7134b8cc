// Business module "im.singlemsg": one-to-one chats.
#include <utility>

#include "imsdk/client/translation.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/bridgesinglefeed.h"
#include "source/bridge/conversationform.h"
#include "source/bridge/conversationrows.h"

namespace imsdk::bridge {
namespace {

constexpr wchar_t kAudio2textRemind[] =
    L"Audio messages can be shown as text. The settings have a switch for it.";

class CBridgeSingleMsg final : public ConversationModule<SingleForm> {
 public:
  static constexpr Name kName = "CBridgeSingleMsg";

  explicit CBridgeSingleMsg(ModuleContext context)
      : ConversationModule(std::move(context), kPeerKind<&biz::IIMAccount::GetIMSingleChatMgr>,
                           kSingleNotifications, &MakeSingleFeed,
                           {"CBridgeSingleMsg::OnAccountChanged", L"GetIMSingleChatMgr."}) {}

  std::span<const MethodRow> Methods() const override;
  void OwnerPreConstruct() override {
    translation_ = kexcore::GetService<client::ITranslationService>();
  }

  void AddAudio2textSettingRemind(const In<biz::IMNothing>&, Chat chat, Call<> call) {
    chat->AddSysMsg({kAudio2textRemind}, std::move(call));
  }
  void GetTranslateSetting(const biz::IMNothing&, Call<TranslateSetting> call) {
    call.Succeed({translation_ && translation_->IsEnabled() ? 1 : 0});
  }
  void GetTranslateMsg(const TranslateMsg& request, Call<TranslateMsg> call) {
    if (!translation_) return call.Fail(E_UNEXPECTED, L"no translation is set up");
    translation_->Translate(
        Account(), request.msgid, request.msgcontent,
        [call, msgid = request.msgid](const biz::ResultCode& result, const std::wstring& text) {
          call.Finish(result, {msgid, text});
        });
  }

 private:
  RefPtr<client::ITranslationService> translation_;  // or null
};

using M = CBridgeSingleMsg;
using Rows = ConversationRows<M>;
constexpr MethodRow kMethods[] = {
    Rows::kGetNewMsg,
    Rows::kGetOfflineMsg,
    Rows::kPeekNewMsg,
    Rows::kPeekOfflineMsg,
    Rows::kGetRemoteHisMsg,
    Rows::kGetLocalHisMsg,
    Rows::kGetUnreadCount,
    Rows::kGetUnreadCountInBulk,
    Rows::kSetMsgRead,
    Rows::kGetReadedBoundary,
    Rows::kDeleteLocalMsg,
    Rows::kFastReSendChatMsg,
    Rows::kReSendChatMsg,
    Rows::kForwardChatMsg,
    Row<M, "SendBroadcastMsg", &M::SendBroadcastMsg>("Sends a message to several conversations."),
    Row<M, "SendNormalChatMsg", &M::SendMsg<false>>(
        "Sends a message; how it went on comes as onSendMsgStatus."),
    Row<M, "SendAutoReplyMsg", &M::SendMsg<true>>("Sends an automatic reply."),
    Row<M, "GetFlagsMyMsgReaded", &biz::IIMConversation::GetFlagsMyMsgReaded>(
        "Whether own messages were read; of the newest 200 when none are named."),
    Row<M, "SetFlagsPeerMsgReaded", &biz::IIMConversation::SetFlagsPeerMsgReaded>(
        "Tells the peer that its messages were read; all that are when none are named."),
    Rows::kDoChatMsgWithdraw,
    Rows::kSearchMsgByID,
    Rows::kSearchDBMsg,
    Rows::kSearchDBMsg2,
    Rows::kSearchDBMsgCid,
    Rows::kGetMsgPicture<"GetMsgPicture">,
    Rows::kRoamMsg,
    Rows::kClearRoamedTime,
    Rows::kGetRoamStatus,
    Rows::kSetRoamStatus,
    Row<M, "ShieldAutoReply", &biz::IIMConversation::ShieldAutoReply>(
        "Sets whether the peer's automatic replies are ignored."),
    Rows::kEditPic2SendMsg,
    Rows::kConvertMsgText2Emotion,
    Rows::kSetNewMsgMaxCache,
    Rows::kGetDynamicMsg,
    Row<M, "AddAudio2textSettingRemind", &M::AddAudio2textSettingRemind>(
        "Adds a note to the conversation that audio can be shown as text."),
    Row<M, "GetTranslateSetting", &M::GetTranslateSetting>("Whether messages are translated."),
    Row<M, "GetTranslateMsg", &M::GetTranslateMsg>("Translates the text of a message."),
};

std::span<const MethodRow> CBridgeSingleMsg::Methods() const { return kMethods; }

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeSingleMsg(const ModuleContext& context) {
  return std::make_shared<CBridgeSingleMsg>(context);
}

}  // namespace imsdk::bridge
