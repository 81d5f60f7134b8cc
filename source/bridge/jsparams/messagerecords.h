// JSON forms of messages, of requests for them and of their answers.
#pragma once

#include "imsdk/biz/chat_mgr.h"
#include "source/bridge/jsparams/form.h"

namespace imsdk::bridge {

inline constexpr Values kMsgType{
    Value<biz::kMsgText>("Text, with pictures and emotions as tokens."),
    Value<biz::kMsgPicture>("A picture."),
    Value<biz::kMsgAudio>("An audio recording."),
    Value<biz::kMsgFile>("A file."),
    Value<biz::kMsgEmotion>("An emotion."),
    Value<biz::kMsgShake>("A window shake, without text."),
    Value<biz::kMsgInputStatus>("The sender's typing state; never stored."),
};

inline constexpr Values kMsgStatus{
    Value<biz::kMsgSending>("On its way."),
    Value<biz::kMsgSent>("It is in the server's archive."),
    Value<biz::kMsgFailed>("It was not sent and may be sent again."),
    Value<biz::kMsgReceived>("A message from somebody else."),
    Value<biz::kMsgWithdrawn>("Its sender took it back; the body is empty."),
};

inline constexpr Values kReadFlag{
    Value<biz::kMsgUnread>("Not read yet."),
    Value<biz::kMsgRead>("Read; of an own message, that the peer reported so."),
};

inline constexpr Values kInputStatus{
    Value<biz::kInputStopped>("The peer does not type."),
    Value<biz::kInputTyping>("The peer types."),
};

// Sentences of keys that many records have.
inline constexpr char kMsgIdSays[] = "Identifier of the message, unique for its sender.";
inline constexpr char kMsgTimeSays[] = "Time of the message by its sender's clock, milliseconds.";
inline constexpr char kSvrTimeSays[] = "Time of the message by the server's clock, 0 if not known.";
inline constexpr char kCidSays[] = "The conversation.";
inline constexpr char kFromIdSays[] = "The sender.";
inline constexpr char kToIdSays[] = "The receiver.";
inline constexpr char kMsgsSays[] = "The messages, oldest first.";
inline constexpr char kMsgTypeSays[] = "Kind of the message.";
inline constexpr char kMsgStatusSays[] = "State of the message.";
inline constexpr char kMsgBodySays[] = "Text, with pictures, files and emotions as tokens.";
inline constexpr char kExtInfoSays[] = "Extra information.";
inline constexpr char kWhichSenderSays[] =
    "Its sender, as two may have the same identifier; may be empty.";
inline constexpr char kFromTimeSays[] =
    "Position where the page starts: time; empty for the newest.";
inline constexpr char kFromMsgSays[] =
    "Position where the page starts: message; empty for the newest.";
inline constexpr char kCountSays[] = "At most this many; 0 lets the engine choose.";
inline constexpr char kGoHistorySays[] = "1: towards older messages.";
inline constexpr char kIgnoreBoundarySays[] =
    "1: goes on behind the point from which on the store is complete.";

template <>
struct Record<biz::IMMessageExt> {
  using R = biz::IMMessageExt;
  static constexpr auto kFields = FieldList(
      Field("others", &R::others, "Free data carried with the message."),
      Field("fixmsgread", &R::fixmsgread, "1: the read state is fixed, it is not reported again."),
      Field("autochatmsg", &R::autochatmsg, "1: an automatic reply."),
      Field("syschatmsg", &R::syschatmsg, "1: a note of the client."));
};

template <>
struct Record<biz::IMMessage> {
  using R = biz::IMMessage;
  static constexpr auto kFields = FieldList(
      Field("msgid", &R::msgid, kMsgIdSays), Field("msgtime", &R::msgtime, kMsgTimeSays),
      Field("cid", &R::cid, kCidSays), Field("fromid", &R::fromid, kFromIdSays),
      Field("toid", &R::toid, kToIdSays), Field("msgtype", &R::msgtype, kMsgTypeSays, &kMsgType),
      Field("msgstatus", &R::msgstatus, kMsgStatusSays, &kMsgStatus),
      Field("msgbody", &R::msgbody, kMsgBodySays), Field("svrtime", &R::svrtime, kSvrTimeSays),
      Field("readflag", &R::readflag, "Whether it was read.", &kReadFlag),
      Field("extinfo", &R::extinfo, kExtInfoSays));
};

template <>
struct Record<biz::IMConversations> {
  static constexpr auto kFields =
      FieldList(Field("cids", &biz::IMConversations::cids, "The conversations."));
};

template <>
struct Record<biz::IMPageRequest> {
  using R = biz::IMPageRequest;
  static constexpr auto kFields = FieldList(
      Field("msgtime", &R::msgtime, kFromTimeSays), Field("msgid", &R::msgid, kFromMsgSays),
      Field("count", &R::count, kCountSays), Field("gohistory", &R::gohistory, kGoHistorySays),
      Field("ignoreboundary", &R::ignoreboundary, kIgnoreBoundarySays),
      Field("autoroam", &R::autoroam, "1: fetches from the server what the store lacks."));
};

template <>
struct Record<biz::IMMessagePage> {
  using R = biz::IMMessagePage;
  static constexpr auto kFields = FieldList(
      Field("outofcache", &R::outofcache, "1: nothing further there, or messages were dropped."),
      Field("msgs", &R::msgs, kMsgsSays));
};

template <>
struct Record<biz::IMMsgRequest> {
  static constexpr auto kFields = FieldList(Field("msgid", &biz::IMMsgRequest::msgid, kMsgIdSays));
};

template <>
struct Record<biz::IMCount> {
  static constexpr auto kFields =
      FieldList(Field("count", &biz::IMCount::count, "The number of messages."));
};

template <>
struct Record<biz::IMUnreadCount> {
  using R = biz::IMUnreadCount;
  static constexpr auto kFields =
      FieldList(Field("cid", &R::cid, kCidSays),
                Field("count", &R::count, "The number of its unread messages."));
};

template <>
struct Record<biz::IMUnreads> {
  static constexpr auto kFields =
      FieldList(Field("unreads", &biz::IMUnreads::unreads, "Unread counts by conversation."));
};

template <>
struct Record<biz::IMMaxCacheRequest> {
  static constexpr auto kFields =
      FieldList(Field("maxmsgcount", &biz::IMMaxCacheRequest::maxmsgcount,
                      "At most this many new messages are kept in memory."));
};

// Notification with message records. Points to the event's own list.
struct MsgsNotify {
  const std::vector<biz::IMMessage>* msgs = nullptr;

  static constexpr auto kFields = FieldList(Field("msgs", &MsgsNotify::msgs, kMsgsSays));
};

// A send status is an envelope with the message's own keys between.
struct SendMsgStatusNotify : biz::ResultCode {
  std::int32_t msgtype = 0;
  std::int64_t msgid = 0;
  std::int64_t svrtime = 0;

  static constexpr auto kFields = FieldList(
      Field("code", &SendMsgStatusNotify::code, "0 when the message was sent, else why not."),
      Field("subcode", &SendMsgStatusNotify::subcode, "A code that tells more of a failure."),
      Field("msgtype", &SendMsgStatusNotify::msgtype, kMsgTypeSays, &kMsgType),
      Field("msgid", &SendMsgStatusNotify::msgid, kMsgIdSays),
      Field("svrtime", &SendMsgStatusNotify::svrtime, kSvrTimeSays),
      Field("result", &SendMsgStatusNotify::text, "\"success\", \"failed\", or why it failed."));
};

struct PeerInputNotify {
  biz::InputStatus value = biz::kInputStopped;
  biz::IMUserID cid;

  static constexpr auto kFields =
      FieldList(Field("value", &PeerInputNotify::value,
                      "The typing state; over after some seconds.", &kInputStatus),
                Field("cid", &PeerInputNotify::cid, "The peer."));
};

}  // namespace imsdk::bridge
