#include "embedded/contact_entries.h"

#include <utility>

#include "embedded/contact_table.h"
#include "embedded/contact_verify_table.h"

namespace imsdk::embedded {

namespace {

void Tell(MailTable& mail, Effects& effects, EntryKind kind, std::int64_t account,
          std::int64_t number) {
  NewEntry entry{{Stream::Kind::kAccount, account}, kind};
  entry.numbers = {number};
  effects.news.push_back({entry.stream, mail.AddEntry(entry), 0});
}

}  // namespace

void TellContact(MailTable& mail, Effects& effects, std::int64_t account, std::int64_t contact) {
  Tell(mail, effects, EntryKind::kContactChanged, account, contact);
}

void TellGroups(MailTable& mail, Effects& effects, std::int64_t account) {
  Tell(mail, effects, EntryKind::kContactGroupsChanged, account, 0);
}

void TellVerify(MailTable& mail, Effects& effects, std::int64_t account, std::int64_t verify) {
  Tell(mail, effects, EntryKind::kContactVerifyTold, account, verify);
}

link::Entry ReadContactEntry(sqlite::Database& database, EntryKind kind, std::int64_t viewer,
                             std::int64_t number) {
  ContactTable contacts(database);
  switch (kind) {
    case EntryKind::kContactGroupsChanged:
      return link::ContactGroupsChanged{contacts.Groups(viewer)};
    case EntryKind::kContactVerifyTold:
      return link::ContactVerifyTold{ContactVerifyTable(database).Message(number)};
    default:
      break;
  }
  if (auto contact = contacts.Find(viewer, number)) {
    return link::ContactChanged{std::move(contact->listed)};
  }
  link::ContactChanged changed;
  if (auto user = contacts.User(number)) changed.contact.contact = std::move(user->shown);
  changed.removed = number != viewer;
  return changed;
}

}  // namespace imsdk::embedded
