// JSON forms of messages in tribes: the form of tribes' conversations, and the records that have
// keys of their own there.
#pragma once

#include "source/bridge/jsparams/hisrecords.h"
#include "source/bridge/jsparams/mentionrecords.h"
#include "source/bridge/jsparams/sendrecords.h"

namespace imsdk::bridge {

inline constexpr Values kTribeCIDType{
    Value<biz::kCIDTribe>("A tribe."),
};

// Conversations named by a tribe.
struct TribeForm : PlainForm {
  using Id = biz::IMConversationID;
  static constexpr biz::IMCIDType kType = biz::kCIDTribe;
  static constexpr auto kIdFields = FieldList(
      Field("tribeid", Path(&InConversation::cid, &Id::tribe, &biz::IMTribeID::id), "The tribe."));
  static constexpr auto kId =
      FieldList(Field("tribeid", Path(&Id::tribe, &biz::IMTribeID::id), "The tribe."),
                Field("type", &Id::type, "What the conversation is held with.", &kTribeCIDType));
};

template <>
struct FormRecord<biz::IMMessage, TribeForm> {
  using R = biz::IMMessage;
  static constexpr auto kFields = FieldList(
      Field("msgid", &R::msgid, kMsgIdSays), Field("msgtime", &R::msgtime, kMsgTimeSays),
      Field("cid", &R::cid, kCidSays), Field("fromid", &R::fromid, kFromIdSays),
      Field("msgtype", &R::msgtype, kMsgTypeSays, &kMsgType),
      Field("tribeat", &R::tribeat, "Whom it mentions."),
      Field("msgstatus", &R::msgstatus, kMsgStatusSays, &kMsgStatus),
      Field("msgbody", &R::msgbody, kMsgBodySays), Field("svrtime", &R::svrtime, kSvrTimeSays),
      Field("extinfo", &R::extinfo, kExtInfoSays));
};

// Two senders of a tribe may have the same identifier.
template <>
struct FormRecord<biz::IMMsgRequest, TribeForm> {
  using R = biz::IMMsgRequest;
  static constexpr auto kFields = FieldList(Field("msgid", &R::msgid, kMsgIdSays),
                                            Field("fromid", &R::fromid, kWhichSenderSays));
};

template <>
struct FormRecord<SendMsgRequest, TribeForm> {
  static constexpr auto kFields = std::tuple_cat(
      SendMsgRequest::kFields,
      FieldList(Field("tribeat", &SendMsgRequest::tribeat, "Whom to mention; nobody without it.")));
};

// A sent message, with its body as it was handed over.
struct SentMsgRequest : biz::IMMsgRequest {
  std::vector<BodyItem> msgbody;
};
template <>
struct FormRecord<SentMsgRequest, TribeForm> {
  static constexpr auto kFields =
      std::tuple_cat(FormRecord<biz::IMMsgRequest, TribeForm>::kFields,
                     FieldList(Field("msgbody", &SentMsgRequest::msgbody,
                                     "Its body as it was handed over; only traced.")));
};

inline constexpr char kFromIdsSays[] = "The senders of messages that fit; all when empty.";
inline constexpr char kAtRelationsSays[] =
    "How messages that fit relate to the account; all when empty.";

// What a search by filters says, in the order of requests.
template <class R>
constexpr auto FilterFields() {
  return FieldList(Field("fromids", &R::fromids, kFromIdsSays),
                   Field("atrelations", &R::atrelations, kAtRelationsSays, &kTribeAtRelation),
                   Field("keywords", &R::keywords, kKeywordsSays),
                   Field("msgtypes", &R::msgtypes, kMsgTypesSays, &kMsgType),
                   Field("btime", &R::btime, kBTimeSays), Field("etime", &R::etime, kETimeSays));
}

template <>
struct FormRecord<In<biz::IMSearchRequest>, TribeForm> {
  using R = In<biz::IMSearchRequest>;
  static constexpr auto kFields =
      std::tuple_cat(FieldList(Field("cid", &InConversation::cid, kCidSays)),
                     FilterFields<biz::IMSearchRequest>(), kSearchPageFields);
  static void Complete(R* in) { in->cid.type = TribeForm::kType; }
};

template <>
struct FormRecord<SearchCidRequest, TribeForm> {
  static constexpr auto kFields = FilterFields<biz::IMSearchRequest>();
};

template <>
struct FormRecord<SearchAnswer, TribeForm> {
  using R = SearchAnswer;
  static constexpr auto kFields = std::tuple_cat(
      FieldList(Field("cid", &InConversation::cid, kCidSays),
                Field("fromids", &R::fromids, kFromIdsSays),
                Field("keywords", &R::keywords, kKeywordsSays),
                Field("msgtypes", &R::msgtypes, kMsgTypesSays, &kMsgType),
                Field("atrelations", &R::atrelations, kAtRelationsSays, &kTribeAtRelation)),
      kFoundFields);
};

// Notifications.

struct OfflineMsgsNotify : MsgsNotify {
  std::wstring result = L"success";

  static constexpr auto kFields = std::tuple_cat(
      FieldList(Field("result", &OfflineMsgsNotify::result, "\"success\".")), MsgsNotify::kFields);
};

struct TribeAtReadedNotify {
  biz::IMTribeID tribeid;
  biz::IMAtReaded readed;

  static constexpr auto kFields = FieldList(
      Field("tribeid", Path(&TribeAtReadedNotify::tribeid, &biz::IMTribeID::id), "The tribe."),
      Field("readers", Path(&TribeAtReadedNotify::readed, &biz::IMAtReaded::readers),
            "Who has read: other members, or the account itself."),
      Field("counts", Path(&TribeAtReadedNotify::readed, &biz::IMAtReaded::counts),
            "The messages, with how far they were read; 0 and 0 for those of others."));
};

}  // namespace imsdk::bridge
