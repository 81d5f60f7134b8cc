// JSON forms of history: read state, withdrawal, search, pictures, roaming.
#pragma once

#include "source/bridge/jsparams/messagerecords.h"

namespace imsdk::bridge {

inline constexpr Values kRoaming{
    Value<biz::kRoamingOff>("The server does not hand out history."),
    Value<biz::kRoamingOn>("The server hands out history."),
};

inline constexpr char kMsgIdsSays[] = "Identifiers of messages.";
inline constexpr char kBTimeSays[] = "From this time on, milliseconds; empty: from the beginning.";
inline constexpr char kETimeSays[] = "Up to and with this time, milliseconds; empty: to the end.";
inline constexpr char kKeywordsSays[] = "A message fits when it contains every one of these.";
inline constexpr char kMsgTypesSays[] = "Kinds of message that fit; all when empty.";
inline constexpr char kRoamStatusSays[] = "Whether history is roamed.";

template <>
struct Record<biz::IMMsgPosition> {
  using R = biz::IMMsgPosition;
  static constexpr auto kFields =
      FieldList(Field("msgtime", &R::msgtime, kMsgTimeSays), Field("msgid", &R::msgid, kMsgIdSays));
};

template <>
struct Record<biz::IMMsgsRequest> {
  static constexpr auto kFields =
      FieldList(Field("msgids", &biz::IMMsgsRequest::msgids, kMsgIdsSays));
};

template <>
struct Record<biz::IMDeleteRequest> {
  using R = biz::IMDeleteRequest;
  static constexpr auto kFields =
      FieldList(Field("msgids", &R::msgids, kMsgIdsSays),
                Field("all", &R::all, "1: all messages of the conversation."));
};

template <>
struct Record<biz::IMFlagMsgReaded> {
  using R = biz::IMFlagMsgReaded;
  static constexpr auto kFields =
      FieldList(Field("cid", &R::cid, kCidSays), Field("msgid", &R::msgid, kMsgIdSays),
                Field("msgtime", &R::msgtime, kMsgTimeSays),
                Field("readflag", &R::readflag, "Whether the peer has read it.", &kReadFlag));
};

// Flags of messages, as an answer and as a notification.
template <>
struct Record<biz::IMReadFlags> {
  static constexpr auto kFields =
      FieldList(Field("items", &biz::IMReadFlags::items, "Messages and their flags."));
};

template <>
struct Record<biz::IMWithdrawRequest> {
  using R = biz::IMWithdrawRequest;
  static constexpr auto kFields =
      FieldList(Field("msgid", &R::msgid, kMsgIdSays), Field("msgtime", &R::msgtime, kMsgTimeSays),
                Field("svrtime", &R::svrtime, kSvrTimeSays));
};

template <>
struct Record<biz::IMMsgWithdraw> {
  using R = biz::IMMsgWithdraw;
  static constexpr auto kFields =
      FieldList(Field("cid", &R::cid, kCidSays), Field("fromid", &R::fromid, kFromIdSays),
                Field("msgid", &R::msgid, kMsgIdSays), Field("msgtime", &R::msgtime, kMsgTimeSays),
                Field("svrtime", &R::svrtime, kSvrTimeSays));
};

struct WithdrawNotify : biz::ResultCode {
  std::vector<biz::IMMsgWithdraw> withdraws;

  static constexpr auto kFields = std::tuple_cat(
      Record<biz::ResultCode>::kFields,
      FieldList(Field("withdraws", &WithdrawNotify::withdraws, "The messages taken back.")));
};

// Which of the messages that fit are wanted.
inline constexpr auto kSearchPageFields = [] {
  using R = biz::IMSearchRequest;
  return FieldList(
      Field("msgtime", &R::msgtime, kFromTimeSays), Field("msgid", &R::msgid, kFromMsgSays),
      Field("gohistory", &R::gohistory, kGoHistorySays),
      Field("ignoreboundary", &R::ignoreboundary, kIgnoreBoundarySays),
      Field("count", &R::count, kCountSays),
      Field("needpage", &R::needpage, "1: by page number, with totals, not by position."),
      Field("page", &R::page, "Number of the page from 1, the newest messages on the first."));
}();

// What a search was asked to find, as far as its answer repeats it.
struct SearchFilters {
  std::vector<std::wstring> keywords;
  std::vector<std::int32_t> msgtypes;
  std::vector<biz::IMUserID> fromids;
  std::vector<std::int32_t> atrelations;
};

struct SearchAnswer : InConversation, biz::IMSearchPage, SearchFilters {};

// What was found.
inline constexpr auto kFoundFields = [] {
  using R = biz::IMSearchPage;
  return FieldList(
      Field("currentpage", &R::currentpage, "Number of this page; 0 by position."),
      Field("totalpage", &R::totalpage, "Number of pages; 0 by position."),
      Field("totalcount", &R::totalcount, "Number of messages that fit; 0 by position."),
      Field("msgs", &R::msgs, kMsgsSays));
}();

// A search for conversations does not page.
struct SearchCidRequest : biz::IMSearchRequest {};
template <>
struct Record<SearchCidRequest> {
  using R = biz::IMSearchRequest;
  static constexpr auto kFields =
      FieldList(Field("keywords", &R::keywords, kKeywordsSays),
                Field("msgtypes", &R::msgtypes, kMsgTypesSays, &kMsgType),
                Field("btime", &R::btime, kBTimeSays), Field("etime", &R::etime, kETimeSays));
};

template <>
struct Record<biz::IMSearchRequest> {
  static constexpr auto kFields =
      std::tuple_cat(Record<SearchCidRequest>::kFields, kSearchPageFields);
};

template <class Form>
requires IsConversationForm<Form>
struct FormRecord<SearchAnswer, Form> {
  using R = SearchAnswer;
  static constexpr auto kFields =
      std::tuple_cat(Form::kIdFields,
                     FieldList(Field("keywords", &R::keywords, kKeywordsSays),
                               Field("msgtypes", &R::msgtypes, kMsgTypesSays, &kMsgType)),
                     kFoundFields);
};

struct SearchCidAnswer : biz::IMConversations {
  std::vector<std::int32_t> msgtypes;
};
template <class Form>
struct FormRecord<SearchCidAnswer, Form> {
  static constexpr auto kFields = std::tuple_cat(
      FieldList(Field("msgtypes", &SearchCidAnswer::msgtypes, kMsgTypesSays, &kMsgType)),
      RecordIn<biz::IMConversations, Form>::kFields);
};

template <>
struct Record<biz::IMPictureRequest> {
  using R = biz::IMPictureRequest;
  static constexpr auto kFields = FieldList(
      Field("btime", &R::btime, kBTimeSays), Field("etime", &R::etime, kETimeSays),
      Field("msgtime", &R::msgtime, kFromTimeSays),
      Field("pictureid", &R::pictureid, "Position where the page starts: picture."),
      Field("ignoreboundary", &R::ignoreboundary, kIgnoreBoundarySays),
      Field("gohistory", &R::gohistory, kGoHistorySays), Field("count", &R::count, kCountSays));
};

// The time is "mgstime" and the extra data "extInfo": so pages know them.
template <>
struct Record<biz::IMMsgPicture> {
  using R = biz::IMMsgPicture;
  static constexpr auto kFields =
      FieldList(Field("pictureid", &R::pictureid, "Identifier of the picture in its conversation."),
                Field("url", &R::url, "The file's path as in the message's token."),
                Field("msgid", &R::msgid, kMsgIdSays),
                Field("index", &R::index, "Place among the pictures of the message, from 0."),
                Field("mgstime", &R::mgstime, kMsgTimeSays),
                Field("fromid", &R::fromid, kFromIdSays), Field("toid", &R::toid, kToIdSays),
                Field("extInfo", &R::extInfo, "Free data carried with the message."));
};

template <>
struct Record<biz::IMPictures> {
  static constexpr auto kFields =
      FieldList(Field("pictures", &biz::IMPictures::pictures, "The pictures, oldest first."));
};

template <>
struct Record<biz::IMRoamRequest> {
  using R = biz::IMRoamRequest;
  static constexpr auto kFields =
      FieldList(Field("btime", &R::btime, kBTimeSays), Field("etime", &R::etime, kETimeSays),
                Field("count", &R::count, kCountSays),
                Field("autoroam", &R::autoroam,
                      "1: goes on until the range is fetched, whatever \"count\"."));
};

template <>
struct Record<biz::IMRoamed> {
  using R = biz::IMRoamed;
  static constexpr auto kFields = FieldList(
      Field("roamedcount", &R::roamedcount, "The number of messages that came."),
      Field("affectcount", &R::affectcount, "Of them those that the store did not have."));
};

template <>
struct Record<biz::IMRoamStatus> {
  using R = biz::IMRoamStatus;
  static constexpr auto kFields =
      FieldList(Field("opentime", &R::opentime, "No history from before this time, milliseconds."),
                Field("roamstatus", &R::roamstatus, kRoamStatusSays, &kRoaming));
};

template <>
struct Record<biz::IMSetRoamRequest> {
  static constexpr auto kFields = FieldList(
      Field("roamstatus", &biz::IMSetRoamRequest::roamstatus, kRoamStatusSays, &kRoaming));
};

}  // namespace imsdk::bridge
