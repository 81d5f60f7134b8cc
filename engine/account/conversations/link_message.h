// A message of the link as the account sees it.
#pragma once

#include "account/conversations/chat_key.h"
#include "imsdk/biz/message.h"
#include "link/server_link.h"

namespace imsdk::account {

inline ChatKind KindOf(link::Channel channel) {
  return static_cast<ChatKind>(static_cast<std::int32_t>(channel));
}

// A received message is unread, unless it was taken back.
inline biz::IMMessage FromLink(const link::Message& from, const biz::IMUserID& self) {
  const bool outgoing = from.from == self;
  biz::IMMessage message{from.msgid,
                         from.msgtime,
                         outgoing ? from.to : from.from,
                         from.from,
                         from.to,
                         from.msgtype,
                         outgoing ? biz::kMsgSent : biz::kMsgReceived,
                         from.body,
                         from.svrtime,
                         biz::kMsgUnread,
                         from.ext};
  if (from.withdrawn) message.msgstatus = biz::kMsgWithdrawn;
  if (from.withdrawn || (outgoing && from.read)) message.readflag = biz::kMsgRead;
  if (!outgoing && from.read) message.extinfo.fixmsgread = 1;
  return message;
}

// The same out of the server's history, where nothing is new.
inline biz::IMMessage FromHistory(const link::Message& from, const biz::IMUserID& self) {
  biz::IMMessage message = FromLink(from, self);
  if (message.msgstatus == biz::kMsgReceived) message.readflag = biz::kMsgRead;
  return message;
}

}  // namespace imsdk::account
