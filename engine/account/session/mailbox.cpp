#include "account/session/mailbox.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "account/conversations/link_message.h"
#include "account/files/file_tokens.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

// Whether another message of the batch is the one before `message`.
bool BringsPrevious(const link::Batch& batch, const link::Message& message) {
  return std::any_of(batch.entries.begin(), batch.entries.end(), [&](const link::Entry& entry) {
    const auto* other = std::get_if<link::Message>(&entry);
    return other && other->msgid == message.previous && other->from == message.from &&
           other->cid == message.cid;
  });
}

std::vector<biz::IMTribeID> Tribes(const std::vector<biz::IMMessage>& messages) {
  std::vector<biz::IMTribeID> tribes;
  for (const auto& message : messages) tribes.push_back(message.cid.tribe);
  return tribes;
}

std::vector<biz::IMUserID> Users(const std::vector<biz::IMMessage>& messages) {
  std::vector<biz::IMUserID> users;
  for (const auto& message : messages) users.push_back(message.cid.user);
  return users;
}

}  // namespace

Incoming Mailbox::FromServer(const link::Message& from) const {
  Incoming incoming{FromLink(from, state_.self), from.place, from.previous};
  biz::IMMessage& message = incoming.message;
  // What does not count in its tribe is not unread; it is told all the same.
  if (message.cid.is_tribe() && message.msgstatus == biz::kMsgReceived &&
      state_.store.tribes().Remind(message.cid.tribe) == biz::kRemindNothing) {
    message.readflag = biz::kMsgRead;
  }
  if (from.files.empty()) return incoming;
  std::vector<std::string> names;
  for (const link::File& file : from.files) {
    if (IsFileName(base::UTF8ToWide(file.name))) names.push_back(file.name);
  }
  message.msgbody = WithFolder(message.msgbody, state_.files_in_tokens, names);
  return incoming;
}

void Mailbox::KeepFiles(const link::Message& from) {
  for (const link::File& file : from.files) {
    if (!IsFileName(base::UTF8ToWide(file.name))) continue;
    state_.store.files().Put({file, from.from == state_.self});
  }
}

Mailbox::Happenings Mailbox::Store(const link::Batch& batch) {
  Happenings happenings;
  for (const link::Entry& entry : batch.entries) {
    std::visit([&](const auto& what) { Keep(batch, what, happenings); }, entry);
  }
  state_.store.SetLinkPosition(batch.position);
  return happenings;
}

void Mailbox::Keep(const link::Batch& batch, const link::Message& from, Happenings& happenings) {
  Incoming incoming = FromServer(from);
  biz::IMMessage& message = incoming.message;
  KeepFiles(from);
  if (state_.store.MissesPrevious(incoming) && !BringsPrevious(batch, from)) {
    state_.store.OpenHole(incoming);
    happenings.push_back(Wanting{message.cid});
  }
  const bool own = from.from == state_.self;
  const bool shielded = !own && from.ext.autochatmsg != 0 &&
                        state_.store.conversations().ShieldsAutoReply(message.cid);
  if (shielded) message.readflag = biz::kMsgRead;
  const auto arrival = state_.store.AddLive(incoming);
  if (!arrival) return KeepNews(from, happenings);
  if (!from.files.empty() && !from.withdrawn) happenings.push_back(FilesCame{from});
  if (own) {
    happenings.push_back(Sent{std::move(message)});
  } else if (shielded || from.withdrawn) {
    happenings.push_back(Quiet{std::move(message)});
  } else {
    happenings.push_back(New{std::move(message), *arrival, batch.offline});
  }
}

void Mailbox::KeepNews(const link::Message& from, Happenings& happenings) {
  if (from.withdrawn) {
    Keep({}, link::Withdrawal{from.cid, from.from, from.msgid, from.msgtime, from.svrtime},
         happenings);
  }
  if (from.from != state_.self) return;
  Keep({}, link::Archived{from.cid, from.msgid, from.svrtime, from.place}, happenings);
  if (from.read) Keep({}, link::PeerRead{from.cid, from.cid.user, {from.msgid}}, happenings);
}

void Mailbox::Keep(const link::Batch&, const link::Archived& from, Happenings& happenings) {
  auto was = state_.store.SetArchived(from.cid, from.msgid, from.svrtime, from.place);
  if (was) happenings.push_back(Archived{std::move(*was), from.svrtime});
}

void Mailbox::Keep(const link::Batch&, const link::Withdrawal& from, Happenings& happenings) {
  auto was = state_.store.Withdraw(from.cid, from.from, from.msgid);
  if (!was) return;
  happenings.push_back(Withdrawn{{from.cid, from.from, from.msgid, from.msgtime, from.svrtime},
                                 std::move(was->unread)});
}

void Mailbox::Keep(const link::Batch&, const link::PeerRead& from, Happenings& happenings) {
  auto flags = state_.store.SetPeerRead(from.cid, from.msgids);
  if (!flags.empty()) happenings.push_back(PeerRead{from.cid, std::move(flags)});
}

void Mailbox::Keep(const link::Batch&, const link::ReadElsewhere& from, Happenings& happenings) {
  auto messages = state_.store.MarkReadUpTo(from.cid, {from.upto.msgtime, from.upto.msgid});
  if (!messages.empty()) happenings.push_back(ReadElsewhere{from.cid, std::move(messages)});
}

Mailbox::Happenings Mailbox::StoreHistory(Walk& walk, const link::GetHistory& request,
                                          const link::History& history, std::int32_t* fresh) {
  Happenings happenings;
  std::vector<Incoming> messages;
  for (const link::Message& from : history.msgs) {
    KeepFiles(from);
    KeepNews(from, happenings);
    messages.push_back(FromServer(from));
  }
  KeptHistory kept = state_.store.AddHistory(walk, request, history.next, messages);
  for (Arrived& missed : kept.missed) {
    if (missed.message.fromid == state_.self) {
      happenings.push_back(Sent{std::move(missed.message)});
    } else {
      happenings.push_back(New{std::move(missed)});
    }
  }
  if (kept.newest) happenings.push_back(Quiet{std::move(*kept.newest)});
  *fresh = kept.fresh;
  return happenings;
}

Mailbox::Happenings Mailbox::StoreScattered(const std::vector<link::Message>& messages) {
  Happenings happenings;
  std::vector<Incoming> incoming;
  for (const link::Message& from : messages) {
    KeepFiles(from);
    KeepNews(from, happenings);
    incoming.push_back(FromServer(from));
  }
  KeptHistory kept = state_.store.AddScattered(incoming);
  if (kept.newest) happenings.push_back(Quiet{std::move(*kept.newest)});
  return happenings;
}

void Mailbox::MakeKnown(const link::Batch& batch, Happenings happenings) {
  Tell(std::move(happenings), batch.offline, batch.more);
  if (batch.more) return;
  // Whoever was told that more follow hears when that is over, whatever became of the rest.
  if (std::exchange(more_single_told_, false)) {
    state_.events.on_receive_offline_msg(false, {}, {});
  }
  if (std::exchange(more_tribe_told_, false)) {
    state_.tribe_events.on_receive_offline_msg(false, {}, {});
  }
}

void Mailbox::MakeKnown(Happenings happenings) { Tell(std::move(happenings), false, false); }

void Mailbox::Tell(Happenings happenings, bool offline, bool more) {
  for (std::size_t at = 0; at < happenings.size();) {
    if (!std::holds_alternative<New>(happenings[at])) {
      std::visit(
          [this]<class What>(const What& what) {
            if constexpr (!std::is_same_v<What, New>) Raise(what);
          },
          happenings[at++]);
      continue;
    }
    const biz::IMCIDType type = std::get<New>(happenings[at]).message.cid.type;
    const auto of_type = [type](Happening& one) {
      auto* arrived = std::get_if<New>(&one);
      return arrived && arrived->message.cid.type == type ? arrived : nullptr;
    };
    std::vector<New> news;
    for (; at < happenings.size(); ++at) {
      New* one = of_type(happenings[at]);
      if (!one) break;
      news.push_back(std::move(*one));
    }
    const bool more_here =
        std::any_of(happenings.begin() + static_cast<std::ptrdiff_t>(at), happenings.end(),
                    [&](Happening& one) { return of_type(one) != nullptr; });
    RaiseNew(std::move(news), offline, more || more_here);
  }
}

void Mailbox::RaiseNew(std::vector<New> news, bool offline, bool more) {
  std::vector<biz::IMMessage> messages;
  std::vector<New> unread;
  for (New& one : news) {
    messages.push_back(one.message);
    if (one.message.readflag == biz::kMsgRead) {
      state_.chat.AddSeen(one.message);
    } else {
      unread.push_back(std::move(one));
    }
  }
  state_.chat.AddIncoming(std::move(unread));
  switch (messages.front().cid.type) {
    case biz::kCIDSystem:
      return state_.virtual_events.on_receive_sys_msg(messages);
    case biz::kCIDSubscribe:
      return state_.virtual_events.on_receive_subscribe_msg(messages);
    case biz::kCIDTribe:
      if (!offline) return state_.tribe_events.on_receive_new_msg(Tribes(messages), messages);
      more_tribe_told_ = more;
      return state_.tribe_events.on_receive_offline_msg(more, Tribes(messages), messages);
    case biz::kCIDUser:
      break;
  }
  if (offline) {
    more_single_told_ = more;
    return state_.events.on_receive_offline_msg(more, Users(messages), messages);
  }
  state_.events.on_receive_new_msg(Users(messages), messages);
  for (const biz::IMMessage& message : messages) {
    if (message.msgtype == biz::kMsgShake) state_.events.on_shake_msg(message.cid.user);
  }
}

void Mailbox::Raise(const Sent& sent) {
  state_.chat.AddSeen(sent.message);
  state_.RaiseSent(sent.message);
}

void Mailbox::Raise(const Quiet& quiet) { state_.chat.AddSeen(quiet.message); }

void Mailbox::Raise(const Archived& archived) {
  hooks_.archived(archived.message, archived.svrtime);
}

void Mailbox::Raise(const Withdrawn& withdrawn) {
  state_.chat.Forget(withdrawn.what.cid, withdrawn.unread);
  state_.RaiseWithdrawn(withdrawn.what);
}

void Mailbox::Raise(const PeerRead& read) {
  if (read.cid.is_user()) state_.events.on_flag_my_msg_readed(read.cid.user, read.flags);
}

void Mailbox::Keep(const link::Batch&, const link::FileDeleted& from, Happenings& happenings) {
  happenings.push_back(from);
}

void Mailbox::Raise(const FilesCame& came) { hooks_.files_came(came.message); }

void Mailbox::Raise(const link::FileDeleted& deleted) { hooks_.file_deleted(deleted); }

void Mailbox::Raise(const Contact& contact) { hooks_.contact(contact.what, contact.offline); }

void Mailbox::Raise(const ReadElsewhere& read) { state_.chat.Forget(read.cid, read.messages); }

}  // namespace imsdk::account
