// The value sets of tribes.
#pragma once

#include "imsdk/biz/tribe.h"
#include "source/bridge/jsparams/record.h"

namespace imsdk::bridge {

inline constexpr NamedValue kTribeTypeValues[] = {
    {biz::kNormalTribe, "kNormalTribe", "A tribe."},
    {biz::kMultiChat, "kMultiChat", "A multi-chat: made ad hoc, everybody may invite."},
};
inline constexpr ValueSet kTribeType{"IMTribeType", kTribeTypeValues};

inline constexpr NamedValue kTribeMemberLevelValues[] = {
    {biz::kTribeNobody, "kTribeNobody", "No member."},
    {biz::kTribeMember, "kTribeMember", "A member."},
    {biz::kTribeManager, "kTribeManager", "An administrator."},
    {biz::kTribeOwner, "kTribeOwner", "The owner."},
};
inline constexpr ValueSet kTribeMemberLevel{"TribeMemberLevel", kTribeMemberLevelValues};

inline constexpr NamedValue kTribeMemberBasicStatusValues[] = {
    {biz::kMemberOffline, "kMemberOffline", "Not logged in."},
    {biz::kMemberOnline, "kMemberOnline", "Logged in."},
};
inline constexpr ValueSet kTribeMemberBasicStatus{"TribeMemberBasicStatus",
                                                  kTribeMemberBasicStatusValues};

inline constexpr NamedValue kTribeVerifyTypeValues[] = {
    {biz::kVerifyJoinAsked, "kVerifyJoinAsked", "A request to join that waits for a decision."},
    {biz::kVerifyInvited, "kVerifyInvited", "An invitation that waits for a decision."},
    {biz::kVerifyJoinAllowed, "kVerifyJoinAllowed", "A request that was allowed."},
    {biz::kVerifyJoinRefused, "kVerifyJoinRefused", "A request that was refused."},
    {biz::kVerifyInviteAccepted, "kVerifyInviteAccepted", "An invitation that was accepted."},
    {biz::kVerifyInviteRefused, "kVerifyInviteRefused", "An invitation that was refused."},
};
inline constexpr ValueSet kTribeVerifyType{"TribeVerifyType", kTribeVerifyTypeValues};

inline constexpr NamedValue kTribeModifyKeyValues[] = {
    {biz::kTribeKeyName, "kTribeKeyName", "The name."},
    {biz::kTribeKeyDescription, "kTribeKeyDescription", "The description."},
    {biz::kTribeKeyPortrait, "kTribeKeyPortrait", "The picture."},
    {biz::kTribeKeyClass, "kTribeKeyClass", "The class."},
    {biz::kTribeKeyBulletin, "kTribeKeyBulletin", "The bulletin."},
    {biz::kTribeKeyAuthType, "kTribeKeyAuthType", "Who may join."},
    {biz::kTribeKeyJoinPassword, "kTribeKeyJoinPassword",
     "The password to join by; the value is not told."},
    {biz::kTribeKeyOpenHistory, "kTribeKeyOpenHistory",
     "Whether members see what was written before they joined."},
    {biz::kTribeKeyVisitors, "kTribeKeyVisitors", "Whether it takes visitors."},
    {biz::kTribeKeyAtAll, "kTribeKeyAtAll", "Who may mention all members at once."},
    {biz::kTribeKeyLevel, "kTribeKeyLevel", "The tribe's level."},
    {biz::kTribeKeyNtfImage, "kTribeKeyNtfImage", "The picture beside its notices."},
    {biz::kTribeKeyBusinessImage, "kTribeKeyBusinessImage", "The mark of a business."},
};
inline constexpr ValueSet kTribeModifyKey{"TribeModifyKey", kTribeModifyKeyValues};

}  // namespace imsdk::bridge
