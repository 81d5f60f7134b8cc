#include "account/session/mailbox.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "account/conversations/link_message.h"

namespace imsdk::account {

std::vector<Mailbox::Happening> Mailbox::Store(const link::Batch& batch) {
  Happenings happenings;
  for (const link::Entry& entry : batch.entries) {
    std::visit([&](const auto& what) { Keep(batch, what, happenings); }, entry);
  }
  return happenings;
}

void Mailbox::Keep(const link::Batch& batch, const link::Message& from, Happenings& happenings) {
  biz::IMMessage message = FromLink(from, state_.self);
  if (from.from == state_.self) {
    if (state_.store.AddSynced(message, Synced::kLive)) {
      happenings.push_back(Sent{std::move(message)});
    }
    return;
  }
  const ChatKey key(message.cid, KindOf(from.channel));
  if (from.ext.autochatmsg != 0 && state_.store.conversations().ShieldsAutoReply(key)) {
    message.readflag = biz::kMsgRead;
  }
  const auto arrival = state_.store.AddIncoming(message, key.kind);
  if (!arrival) return;
  if (message.readflag == biz::kMsgRead) {
    happenings.push_back(Quiet{key, std::move(message)});
  } else {
    happenings.push_back(New{std::move(message), *arrival, key.kind, batch.offline});
  }
}

void Mailbox::Keep(const link::Batch&, const link::Withdrawal& from, Happenings& happenings) {
  const biz::IMUserID& cid = from.from == state_.self ? from.to : from.from;
  auto was = state_.store.Withdraw(cid, from.from, from.msgid);
  if (!was) return;
  happenings.push_back(
      Withdrawn{{cid, from.from, from.msgid, from.msgtime, from.svrtime}, std::move(was->unread)});
}

void Mailbox::Keep(const link::Batch&, const link::PeerRead& from, Happenings& happenings) {
  auto flags = state_.store.SetPeerRead(from.peer, from.msgids);
  if (!flags.empty()) happenings.push_back(PeerRead{from.peer, std::move(flags)});
}

void Mailbox::Keep(const link::Batch&, const link::ReadElsewhere& from, Happenings& happenings) {
  const ChatKey key(from.cid, KindOf(from.channel));
  auto messages = state_.store.MarkReadUpTo(key, {from.upto.msgtime, from.upto.msgid});
  if (!messages.empty()) happenings.push_back(ReadElsewhere{key, std::move(messages)});
}

void Mailbox::MakeKnown(const link::Batch& batch, std::vector<Happening> happenings) {
  for (std::size_t at = 0; at < happenings.size();) {
    if (!std::holds_alternative<New>(happenings[at])) {
      std::visit(
          [this]<class What>(const What& what) {
            if constexpr (!std::is_same_v<What, New>) Raise(what);
          },
          happenings[at++]);
      continue;
    }
    const ChatKind kind = std::get<New>(happenings[at]).kind;
    std::vector<New> news;
    for (; at < happenings.size(); ++at) {
      auto* one = std::get_if<New>(&happenings[at]);
      if (!one || one->kind != kind) break;
      news.push_back(std::move(*one));
    }
    const bool more =
        std::any_of(happenings.begin() + static_cast<std::ptrdiff_t>(at), happenings.end(),
                    [](const Happening& one) { return std::holds_alternative<New>(one); });
    RaiseNew(std::move(news), batch.offline, batch.more || more);
  }
  // Whoever was told that more follow hears when that is over, whatever became of the rest.
  if (more_told_ && !batch.more) {
    more_told_ = false;
    state_.events.on_receive_offline_msg(false, {}, {});
  }
}

void Mailbox::RaiseNew(std::vector<New> news, bool offline, bool more) {
  const ChatKind kind = news.front().kind;
  std::vector<biz::IMUserID> cids;
  std::vector<biz::IMMessage> messages;
  for (const New& one : news) {
    cids.push_back(one.message.cid);
    messages.push_back(one.message);
  }
  state_.chat.AddIncoming(std::move(news));
  if (kind == kSystemChat) return state_.virtual_events.on_receive_sys_msg(messages);
  if (kind == kSubscribeChat) return state_.virtual_events.on_receive_subscribe_msg(messages);
  if (offline) {
    more_told_ = more;
    return state_.events.on_receive_offline_msg(more, cids, messages);
  }
  state_.events.on_receive_new_msg(cids, messages);
  for (const biz::IMMessage& message : messages) {
    if (message.msgtype == biz::kMsgShake) state_.events.on_shake_msg(message.cid);
  }
}

void Mailbox::Raise(const Sent& sent) {
  state_.chat.AddOutgoing(sent.message);
  state_.events.on_send_new_msg({sent.message.cid}, {sent.message});
}

void Mailbox::Raise(const Quiet& quiet) { state_.chat.AddSeen(quiet.key, quiet.message); }

void Mailbox::Raise(const Withdrawn& withdrawn) {
  state_.chat.Forget(withdrawn.what.cid, withdrawn.unread);
  state_.events.on_msg_withdraw(withdrawn.what.cid, withdrawn.what, {});
}

void Mailbox::Raise(const PeerRead& read) {
  state_.events.on_flag_my_msg_readed(read.peer, read.flags);
}

void Mailbox::Raise(const ReadElsewhere& read) { state_.chat.Forget(read.key, read.messages); }

}  // namespace imsdk::account
