#include "account/conversations/conversation.h"

namespace imsdk::account {
namespace {

// No server keeps mentions yet.
template <class... Answer>
void NoMentions(const biz::IMCallback<Answer...>& done) {
  done({biz::kEngineUnsupported, 0, L"the server keeps no mentions"}, Answer{}...);
}

}  // namespace

void Conversation::AtTribeMember(const biz::IMAtMemberRequest&,
                                 biz::IMCallback<biz::IMAtMember> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

void Conversation::GetSendMsgTribeAtInfo(const biz::IMMsgRequest&,
                                         biz::IMCallback<biz::IMTribeAt> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

void Conversation::GetTribeAtMsgUnreadCount(const biz::IMMsgsRequest&,
                                            biz::IMCallback<biz::IMAtUnread> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

void Conversation::GetTribeAtMsgUnreadUsers(const biz::IMMsgRequest&,
                                            biz::IMCallback<biz::IMAtReaders> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

void Conversation::RoamTribeAtMsgs(const biz::IMPageRequest&,
                                   biz::IMCallback<biz::IMMessagePage> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

void Conversation::RoamTribeAtMsgContext(const biz::IMAtContextRequest&,
                                         biz::IMCallback<biz::IMMessagePage> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

void Conversation::SetTribeAtMsgsReaded(const biz::IMMsgsRequest&, biz::IMCallback<> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

void Conversation::SearchAttentionMsg(const biz::IMSearchRequest&,
                                      biz::IMCallback<biz::IMSearchPage> done) {
  if (!Refuses(Ability::kMention, done)) NoMentions(done);
}

}  // namespace imsdk::account
