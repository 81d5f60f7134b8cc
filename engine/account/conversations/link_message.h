// A message of the link as the account sees it.
#pragma once

#include <algorithm>

#include "imsdk/biz/message.h"
#include "link/message.h"

namespace imsdk::account {

// The mention as the account `self` sees it, `own` when it is the sender.
inline biz::IMTribeAt MentionFromLink(const link::Mention& from, bool own,
                                      const biz::IMUserID& self) {
  const auto relation = [&] {
    if (from.type == biz::kAtNobody || (from.before && !own)) return biz::kAtRelationNone;
    if (own) return biz::kAtRelationSender;
    if (from.type == biz::kAtAll) return biz::kAtRelationAll;
    return std::find(from.members.begin(), from.members.end(), self) != from.members.end()
               ? biz::kAtRelationMember
               : biz::kAtRelationNone;
  };
  return {from.read ? biz::kMsgRead : biz::kMsgUnread, from.type, relation(), from.members};
}

// A received message is unread, unless it was taken back. The body's tokens are as they crossed the
// link.
inline biz::IMMessage FromLink(const link::Message& from, const biz::IMUserID& self) {
  const bool own = from.from == self;
  biz::IMMessage message;
  message.msgid = from.msgid;
  message.msgtime = from.msgtime;
  message.cid = from.cid;
  message.fromid = from.from;
  if (!from.cid.is_tribe()) message.toid = own ? from.cid.user : self;
  message.msgtype = from.msgtype;
  message.msgstatus = own ? biz::kMsgSent : biz::kMsgReceived;
  message.msgbody = from.withdrawn ? std::wstring() : from.body;
  message.svrtime = from.svrtime;
  message.extinfo = from.ext;
  message.tribeat = MentionFromLink(from.at, own, self);
  if (from.withdrawn) {
    message.msgstatus = biz::kMsgWithdrawn;
    message.extinfo.others.clear();
    message.tribeat = {};
  }
  if (from.withdrawn || (own && from.read)) message.readflag = biz::kMsgRead;
  if (!own && from.read) message.extinfo.fixmsgread = 1;
  return message;
}

}  // namespace imsdk::account
