// JSON forms of single-chat messages, requests and answers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/message.h"
#include "imsdk/biz/single_chat.h"
#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

template <>
struct Record<biz::IMMessageExt> {
  static constexpr auto kFields = FieldList(Field("others", &biz::IMMessageExt::others),
                                            Field("fixmsgread", &biz::IMMessageExt::fixmsgread),
                                            Field("autochatmsg", &biz::IMMessageExt::autochatmsg),
                                            Field("syschatmsg", &biz::IMMessageExt::syschatmsg));
};

template <>
struct Record<biz::IMMessage> {
  static constexpr auto kFields = FieldList(
      Field("msgid", &biz::IMMessage::msgid), Field("msgtime", &biz::IMMessage::msgtime),
      Field("cid", &biz::IMMessage::cid), Field("fromid", &biz::IMMessage::fromid),
      Field("toid", &biz::IMMessage::toid), Field("msgtype", &biz::IMMessage::msgtype),
      Field("msgstatus", &biz::IMMessage::msgstatus), Field("msgbody", &biz::IMMessage::msgbody),
      Field("svrtime", &biz::IMMessage::svrtime), Field("readflag", &biz::IMMessage::readflag),
      Field("extinfo", &biz::IMMessage::extinfo));
};

// A request that names a conversation and nothing else.
struct CidRequest {
  biz::IMUserID cid;
};
template <>
struct Record<CidRequest> {
  static constexpr auto kFields = FieldList(Field("cid", &CidRequest::cid));
};

struct CidsRequest {
  std::vector<biz::IMUserID> cids;
};
template <>
struct Record<CidsRequest> {
  static constexpr auto kFields = FieldList(Field("cids", &CidsRequest::cids));
};

// History and peek requests.
struct HisMsgRequest : biz::IMPageRequest {
  biz::IMUserID cid;
};
template <>
struct Record<HisMsgRequest> {
  static constexpr auto kFields =
      FieldList(Field("cid", &HisMsgRequest::cid), Field("msgtime", &HisMsgRequest::msgtime),
                Field("msgid", &HisMsgRequest::msgid), Field("count", &HisMsgRequest::count),
                Field("gohistory", &HisMsgRequest::gohistory),
                Field("ignoreboundary", &HisMsgRequest::ignoreboundary),
                Field("autoroam", &HisMsgRequest::autoroam));
};

// One message of a conversation.
struct MsgRequest {
  biz::IMUserID cid;
  std::int64_t msgid = 0;
};
template <>
struct Record<MsgRequest> {
  static constexpr auto kFields =
      FieldList(Field("cid", &MsgRequest::cid), Field("msgid", &MsgRequest::msgid));
};

// The page is "outofcache" and "msgs"; it is written as the engine made it.
template <>
struct Record<biz::IMMessagePage> {
  static constexpr auto kFields = FieldList(Field("outofcache", &biz::IMMessagePage::outofcache),
                                            Field("msgs", &biz::IMMessagePage::msgs));
};

struct CountAnswer {
  std::int32_t count = 0;
};
template <>
struct Record<CountAnswer> {
  static constexpr auto kFields = FieldList(Field("count", &CountAnswer::count));
};

template <>
struct Record<biz::IMUnreadCount> {
  static constexpr auto kFields =
      FieldList(Field("cid", &biz::IMUnreadCount::cid), Field("count", &biz::IMUnreadCount::count));
};

struct UnreadsAnswer {
  std::vector<biz::IMUnreadCount> unreads;
};
template <>
struct Record<UnreadsAnswer> {
  static constexpr auto kFields = FieldList(Field("unreads", &UnreadsAnswer::unreads));
};

// Notification with message records. Points to the event's own list.
struct MsgsNotify {
  const std::vector<biz::IMMessage>* msgs = nullptr;
};
template <>
struct Record<MsgsNotify> {
  static constexpr auto kFields = FieldList(Field("msgs", &MsgsNotify::msgs));
};

// A send status is an envelope with the message's own keys between.
struct SendMsgStatusNotify : biz::ResultCode {
  std::int32_t msgtype = 0;
  std::int64_t msgid = 0;
  std::int64_t svrtime = 0;
};
template <>
struct Record<SendMsgStatusNotify> {
  static constexpr auto kFields = FieldList(
      Field("code", &SendMsgStatusNotify::code), Field("subcode", &SendMsgStatusNotify::subcode),
      Field("msgtype", &SendMsgStatusNotify::msgtype), Field("msgid", &SendMsgStatusNotify::msgid),
      Field("svrtime", &SendMsgStatusNotify::svrtime), Field("result", &SendMsgStatusNotify::text));
};

struct PeerInputNotify {
  std::int32_t value = 0;
  biz::IMUserID cid;
};
template <>
struct Record<PeerInputNotify> {
  static constexpr auto kFields =
      FieldList(Field("value", &PeerInputNotify::value), Field("cid", &PeerInputNotify::cid));
};

}  // namespace imsdk::bridge
