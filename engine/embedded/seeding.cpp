#include "embedded/seeding.h"

#include <utility>

#include "embedded/contact_desk.h"
#include "embedded/file_room.h"

namespace imsdk::embedded {

namespace {

std::int64_t Known(ServerStore& store, const biz::IMUserID& user) {
  const auto account = store.accounts().Find(user);
  if (!account) throw sqlite::Error("the past names an unknown account");
  return account->id;
}

void WriteContacts(ServerStore& store, const Seeding& seeding) {
  for (const PastProfile& past : seeding.profiles) {
    store.contacts().SetProfile({Known(store, past.user),
                                 {.userid = past.user,
                                  .display = past.profile.display,
                                  .portrait = past.profile.portrait}});
  }
  Effects unheard;
  for (const PastContacts& past : seeding.contacts) {
    const std::int64_t owner = Known(store, past.owner);
    std::int64_t gid = biz::kRootGroup;
    if (!past.group.empty()) gid = store.contacts().AddGroup(owner, {.name = past.group});
    for (const biz::IMUserID& contact : past.contacts) {
      PutContact(store, unheard, {owner, Known(store, contact), gid});
    }
  }
}

}  // namespace

std::vector<link::Message> WritePast(ServerStore& store, TribeDesk& tribes, const Seeding& seeding,
                                     const std::vector<std::string>& password_hashes) {
  if (store.accounts().Any()) throw sqlite::Error("the server has accounts already");
  for (std::size_t i = 0; i < seeding.users.size(); ++i) {
    store.accounts().Add(seeding.users[i], password_hashes[i]);
  }
  WriteContacts(store, seeding);
  for (const NewTribe& tribe : seeding.tribes) {
    if (!tribes.Answer({}, tribe).result.ok()) throw sqlite::Error("a tribe cannot be made");
  }
  std::vector<link::Message> written;
  std::map<std::pair<std::int64_t, std::int64_t>, std::int64_t> last;  // by conversation, sender
  for (const PastMessage& past : seeding.messages) {
    link::Message message = past.message;
    if (past.kind != biz::kCIDUser) store.accounts().Add(message.from, {}, past.kind);
    Sending sending{0, Known(store, message.from), 0};
    if (message.cid.is_tribe()) {
      const auto tribe = store.tribes().Find(message.cid.tribe);
      if (!tribe) throw sqlite::Error("a message of the past names an unknown tribe");
      sending.conversation = tribe->conversation;
    } else {
      sending.conversation =
          store.conversations().MakePair(sending.sender, Known(store, message.cid.user));
    }
    for (link::File& file : message.files) {
      file.address = DigestOf(file);
      store.files().AddUpload(sending.sender, file.address, static_cast<std::int64_t>(file.size));
    }
    const Position position = store.mail().Add(sending, message);
    message.place = std::to_string(position);
    message.previous = std::exchange(last[{sending.conversation, sending.sender}], message.msgid);
    if (!message.cid.is_tribe()) {
      const std::int64_t receiver = Known(store, message.cid.user);
      store.mail().AddEntry({{Stream::Kind::kAccount, receiver},
                             EntryKind::kMessage,
                             sending.conversation,
                             position});
    }
    written.push_back(std::move(message));
  }
  store.accounts().SetAllAcknowledged(store.mail().newest());
  return written;
}

}  // namespace imsdk::embedded
