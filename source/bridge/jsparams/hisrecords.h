// JSON forms of history: read state, withdrawal, search, pictures, roaming.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/history.h"
#include "source/bridge/jsparams/messagerecords.h"

namespace imsdk::bridge {

template <>
struct Record<biz::IMMsgPosition> {
  static constexpr auto kFields = FieldList(Field("msgtime", &biz::IMMsgPosition::msgtime),
                                            Field("msgid", &biz::IMMsgPosition::msgid));
};

// Several messages of a conversation.
struct MsgsRequest {
  biz::IMUserID cid;
  std::vector<std::int64_t> msgids;
};
template <>
struct Record<MsgsRequest> {
  static constexpr auto kFields =
      FieldList(Field("cid", &MsgsRequest::cid), Field("msgids", &MsgsRequest::msgids));
};

struct DeleteMsgRequest : MsgsRequest {
  bool all = false;
};
template <>
struct Record<DeleteMsgRequest> {
  static constexpr auto kFields =
      FieldList(Field("cid", &DeleteMsgRequest::cid), Field("msgids", &DeleteMsgRequest::msgids),
                Field("all", &DeleteMsgRequest::all));
};

template <>
struct Record<biz::IMFlagMsgReaded> {
  static constexpr auto kFields = FieldList(Field("cid", &biz::IMFlagMsgReaded::cid),
                                            Field("msgid", &biz::IMFlagMsgReaded::msgid),
                                            Field("msgtime", &biz::IMFlagMsgReaded::msgtime),
                                            Field("readflag", &biz::IMFlagMsgReaded::readflag));
};

// Flags of messages, as an answer and as a notification.
struct ReadFlags {
  std::vector<biz::IMFlagMsgReaded> items;
};
template <>
struct Record<ReadFlags> {
  static constexpr auto kFields = FieldList(Field("items", &ReadFlags::items));
};

struct WithdrawRequest : MsgRequest {
  std::int64_t msgtime = 0;
  std::int64_t svrtime = 0;
};
template <>
struct Record<WithdrawRequest> {
  static constexpr auto kFields = FieldList(
      Field("cid", &WithdrawRequest::cid), Field("msgid", &WithdrawRequest::msgid),
      Field("msgtime", &WithdrawRequest::msgtime), Field("svrtime", &WithdrawRequest::svrtime));
};

template <>
struct Record<biz::IMMsgWithdraw> {
  static constexpr auto kFields = FieldList(
      Field("cid", &biz::IMMsgWithdraw::cid), Field("fromid", &biz::IMMsgWithdraw::fromid),
      Field("msgid", &biz::IMMsgWithdraw::msgid), Field("msgtime", &biz::IMMsgWithdraw::msgtime),
      Field("svrtime", &biz::IMMsgWithdraw::svrtime));
};

struct WithdrawNotify : biz::ResultCode {
  std::vector<biz::IMMsgWithdraw> withdraws;
};
template <>
struct Record<WithdrawNotify> {
  static constexpr auto kFields = FieldList(
      Field("code", &WithdrawNotify::code), Field("subcode", &WithdrawNotify::subcode),
      Field("result", &WithdrawNotify::text), Field("withdraws", &WithdrawNotify::withdraws));
};

// SearchDBMsg, SearchDBMsg2; SearchDBMsgCid uses those keys of it that do not page.
struct SearchRequest : biz::IMSearchRequest {
  biz::IMUserID cid;
};
template <>
struct Record<SearchRequest> {
  static constexpr auto kFields = FieldList(
      Field("cid", &SearchRequest::cid), Field("keywords", &SearchRequest::keywords),
      Field("msgtypes", &SearchRequest::msgtypes), Field("btime", &SearchRequest::btime),
      Field("etime", &SearchRequest::etime), Field("msgtime", &SearchRequest::msgtime),
      Field("msgid", &SearchRequest::msgid), Field("gohistory", &SearchRequest::gohistory),
      Field("ignoreboundary", &SearchRequest::ignoreboundary),
      Field("count", &SearchRequest::count), Field("needpage", &SearchRequest::needpage),
      Field("page", &SearchRequest::page));
};

struct SearchAnswer : biz::IMSearchPage {
  biz::IMUserID cid;
  std::vector<std::wstring> keywords;
  std::vector<std::int32_t> msgtypes;
};
template <>
struct Record<SearchAnswer> {
  static constexpr auto kFields = FieldList(
      Field("cid", &SearchAnswer::cid), Field("keywords", &SearchAnswer::keywords),
      Field("msgtypes", &SearchAnswer::msgtypes), Field("currentpage", &SearchAnswer::currentpage),
      Field("totalpage", &SearchAnswer::totalpage), Field("totalcount", &SearchAnswer::totalcount),
      Field("msgs", &SearchAnswer::msgs));
};

struct SearchCidAnswer {
  std::vector<std::int32_t> msgtypes;
  std::vector<biz::IMUserID> cids;
};
template <>
struct Record<SearchCidAnswer> {
  static constexpr auto kFields = FieldList(Field("msgtypes", &SearchCidAnswer::msgtypes),
                                            Field("cids", &SearchCidAnswer::cids));
};

struct PictureRequest : biz::IMPictureRequest {
  biz::IMUserID cid;
};
template <>
struct Record<PictureRequest> {
  static constexpr auto kFields = FieldList(
      Field("cid", &PictureRequest::cid), Field("btime", &PictureRequest::btime),
      Field("etime", &PictureRequest::etime), Field("msgtime", &PictureRequest::msgtime),
      Field("pictureid", &PictureRequest::pictureid),
      Field("ignoreboundary", &PictureRequest::ignoreboundary),
      Field("gohistory", &PictureRequest::gohistory), Field("count", &PictureRequest::count));
};

// The time is "mgstime" and the extra data "extInfo": so pages know them.
template <>
struct Record<biz::IMMsgPicture> {
  static constexpr auto kFields = FieldList(
      Field("pictureid", &biz::IMMsgPicture::pictureid), Field("url", &biz::IMMsgPicture::url),
      Field("msgid", &biz::IMMsgPicture::msgid), Field("index", &biz::IMMsgPicture::index),
      Field("mgstime", &biz::IMMsgPicture::mgstime), Field("fromid", &biz::IMMsgPicture::fromid),
      Field("toid", &biz::IMMsgPicture::toid), Field("extInfo", &biz::IMMsgPicture::extInfo));
};

struct PicturesAnswer {
  std::vector<biz::IMMsgPicture> pictures;
};
template <>
struct Record<PicturesAnswer> {
  static constexpr auto kFields = FieldList(Field("pictures", &PicturesAnswer::pictures));
};

struct RoamRequest : biz::IMRoamRequest {
  biz::IMUserID cid;
};
template <>
struct Record<RoamRequest> {
  static constexpr auto kFields =
      FieldList(Field("cid", &RoamRequest::cid), Field("btime", &RoamRequest::btime),
                Field("etime", &RoamRequest::etime), Field("count", &RoamRequest::count),
                Field("autoroam", &RoamRequest::autoroam));
};

template <>
struct Record<biz::IMRoamed> {
  static constexpr auto kFields = FieldList(Field("roamedcount", &biz::IMRoamed::roamedcount),
                                            Field("affectcount", &biz::IMRoamed::affectcount));
};

template <>
struct Record<biz::IMRoamStatus> {
  static constexpr auto kFields = FieldList(Field("opentime", &biz::IMRoamStatus::opentime),
                                            Field("roamstatus", &biz::IMRoamStatus::roamstatus));
};

struct SetRoamRequest {
  std::int32_t roamstatus = biz::kRoamingOff;
};
template <>
struct Record<SetRoamRequest> {
  static constexpr auto kFields = FieldList(Field("roamstatus", &SetRoamRequest::roamstatus));
};

struct MaxCacheRequest {
  std::int32_t maxmsgcount = 0;
};
template <>
struct Record<MaxCacheRequest> {
  static constexpr auto kFields = FieldList(Field("maxmsgcount", &MaxCacheRequest::maxmsgcount));
};

}  // namespace imsdk::bridge
