// The value sets of tribes.
#pragma once

#include "imsdk/biz/tribe.h"
#include "source/bridge/jsparams/record.h"

namespace imsdk::bridge {

inline constexpr Values kTribeType{
    Value<biz::kNormalTribe>("A tribe."),
    Value<biz::kMultiChat>("A multi-chat: made ad hoc, everybody may invite."),
};

inline constexpr Values kTribeMemberLevel{
    Value<biz::kTribeNobody>("No member."),
    Value<biz::kTribeMember>("A member."),
    Value<biz::kTribeManager>("An administrator."),
    Value<biz::kTribeOwner>("The owner."),
};

inline constexpr Values kTribeMemberBasicStatus{
    Value<biz::kMemberOffline>("Not logged in."),
    Value<biz::kMemberOnline>("Logged in."),
};

inline constexpr Values kTribeVerifyType{
    Value<biz::kVerifyJoinAsked>("A request to join that waits for a decision."),
    Value<biz::kVerifyInvited>("An invitation that waits for a decision."),
    Value<biz::kVerifyJoinAllowed>("A request that was allowed."),
    Value<biz::kVerifyJoinRefused>("A request that was refused."),
    Value<biz::kVerifyInviteAccepted>("An invitation that was accepted."),
    Value<biz::kVerifyInviteRefused>("An invitation that was refused."),
};

inline constexpr Values kTribeModifyKey{
    Value<biz::kTribeKeyName>("The name."),
    Value<biz::kTribeKeyDescription>("The description."),
    Value<biz::kTribeKeyPortrait>("The picture."),
    Value<biz::kTribeKeyClass>("The class."),
    Value<biz::kTribeKeyBulletin>("The bulletin."),
    Value<biz::kTribeKeyAuthType>("Who may join."),
    Value<biz::kTribeKeyJoinPassword>("The password to join by; the value is not told."),
    Value<biz::kTribeKeyOpenHistory>("Whether members see what was written before they joined."),
    Value<biz::kTribeKeyVisitors>("Whether it takes visitors."),
    Value<biz::kTribeKeyAtAll>("Who may mention all members at once."),
    Value<biz::kTribeKeyLevel>("The tribe's level."),
    Value<biz::kTribeKeyNtfImage>("The picture beside its notices."),
    Value<biz::kTribeKeyBusinessImage>("The mark of a business."),
};

}  // namespace imsdk::bridge
