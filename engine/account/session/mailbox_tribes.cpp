// What the server tells of tribes besides their messages.
#include <algorithm>
#include <limits>

#include "account/session/mailbox.h"

namespace imsdk::account {

void Mailbox::Keep(const link::Batch&, const link::Membership& from, Happenings& happenings) {
  const biz::IMConversationID cid(from.tribe);
  if (!state_.store.conversations().SetMember(cid, from.member) || !from.member) return;
  // Whoever comes back has missed what was said meanwhile.
  const std::int64_t conversation = state_.store.conversations().Find(cid);
  state_.store.parts().OpenHole(conversation);
  state_.store.conversations().SetWanting(conversation, true);
  happenings.push_back(Wanting{cid});
  happenings.push_back(Joined{from.tribe});
}

void Mailbox::Keep(const link::Batch& batch, const link::TribeHappening& from,
                   Happenings& happenings) {
  happenings.push_back(Tribal{from, batch.offline});
}

void Mailbox::Keep(const link::Batch&, const link::MentionsRead& from, Happenings& happenings) {
  biz::IMAtReaded readed;
  readed.readers = {from.reader};
  if (from.reader == state_.self) {
    std::vector<link::MessageName> names;
    for (const auto& count : from.counts) names.push_back({from.sender, count.msgid});
    const biz::IMConversationID cid(from.tribe);
    for (const auto& name : state_.store.mentions().SetTold(cid, names)) {
      readed.counts.push_back({name.msgid});
    }
    if (!readed.counts.empty()) happenings.push_back(MentionsRead{from.tribe, std::move(readed)});
    return;
  }
  // Many read one message: a batch tells of each message once, with the latest counts.
  readed.counts = from.counts;
  auto* before = happenings.empty() ? nullptr : std::get_if<MentionsRead>(&happenings.back());
  if (!before || before->tribe != from.tribe || before->what.readers.front() == state_.self) {
    happenings.push_back(MentionsRead{from.tribe, std::move(readed)});
    return;
  }
  auto& readers = before->what.readers;
  if (std::find(readers.begin(), readers.end(), from.reader) == readers.end()) {
    readers.push_back(from.reader);
  }
  for (const biz::IMAtReadCounts& count : readed.counts) {
    auto& counts = before->what.counts;
    const auto known = std::find_if(counts.begin(), counts.end(),
                                    [&](const auto& one) { return one.msgid == count.msgid; });
    if (known == counts.end()) {
      counts.push_back(count);
    } else {
      *known = count;
    }
  }
}

void Mailbox::Keep(const link::Batch&, const link::RemindChanged& from, Happenings& happenings) {
  StoreRemind(from.tribe, from.type);
  happenings.push_back(Reminded{from.tribe, from.type});
}

void Mailbox::StoreRemind(biz::IMTribeID tribe, biz::TribeMsgRemindType type) {
  state_.store.tribes().SetRemind(tribe, type);
  // What does not count is not left unread either.
  if (type != biz::kRemindNothing) return;
  state_.store.MarkRead(biz::IMConversationID(tribe), std::numeric_limits<std::int64_t>::max());
}

void Mailbox::Raise(const Wanting& wanting) {
  state_.chat.AddConversation(wanting.cid);
  hooks_.wanting(wanting.cid);
}

void Mailbox::Raise(const Tribal& tribal) { hooks_.tribal(tribal.what, tribal.offline); }

void Mailbox::Raise(const Joined& joined) { hooks_.joined(joined.tribe); }

void Mailbox::Raise(const MentionsRead& read) {
  state_.tribe_events.on_tribe_at_msg_readed(read.tribe, read.what);
}

void Mailbox::Raise(const Reminded& reminded) { hooks_.reminded(reminded.tribe, reminded.type); }

}  // namespace imsdk::account
