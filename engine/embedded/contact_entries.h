// What an account is told of its contacts, as it is stored in its stream. An entry says whom or
// what it is about; what that is like is looked up when it is read, so that an account that was
// away hears the latest.
#pragma once

#include <cstdint>
#include <vector>

#include "embedded/mail_table.h"
#include "embedded/outcome.h"
#include "link/message.h"

namespace imsdk::embedded {

// Put it into the account's stream. Throw `sqlite::Error`.
void TellContact(MailTable& mail, Effects& effects, std::int64_t account, std::int64_t contact);
void TellGroups(MailTable& mail, Effects& effects, std::int64_t account);
void TellVerify(MailTable& mail, Effects& effects, std::int64_t account, std::int64_t verify);

// What an entry of `viewer`'s stream tells now. Throws `sqlite::Error`.
link::Entry ReadContactEntry(sqlite::Database& database, EntryKind kind, std::int64_t viewer,
                             std::int64_t number);

}  // namespace imsdk::embedded
