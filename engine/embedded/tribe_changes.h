// What happens in tribes besides messages, as it is stored in their streams.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "embedded/mail_table.h"
#include "embedded/outcome.h"
#include "kexbase/strings.h"
#include "link/tribe.h"

namespace imsdk::embedded {

// Texts by their numbers, each with its length in front.
std::string PackTexts(const std::map<std::int32_t, std::wstring>& texts);

// The entry of a change. `numbers` of it:
//   kTribeJoined        account, members, level
//   kTribeLeft          account, members, 1 when it was kicked
//   kTribeLevelChanged  account, level
//   kTribeTransferred   account
//   kTribeInfoChanged   none; the texts by `TribeModifyKey`
//   kTribeMemberChanged account; the texts by `TribeUserModifyKey`
//   kTribeEnabled       1 or 0
struct TribeEntry {
  std::int64_t conversation = 0;
  EntryKind kind = EntryKind::kTribeInfoChanged;
  std::int64_t actor = 0;  // an account
  std::vector<std::int64_t> numbers{};
  std::map<std::int32_t, std::wstring> texts{};
};
// Puts it into the tribe's stream, for everybody who sees that. Throws `sqlite::Error`.
void TellTribe(MailTable& mail, Effects& effects, const TribeEntry& entry);

// The user of an account's number; empty for none. Throws `sqlite::Error`.
biz::IMUserID UserOf(sqlite::Database& database, std::int64_t account);

// The change that an entry holds. Throws `sqlite::Error`.
link::TribeChange ReadChange(sqlite::Database& database, EntryKind kind,
                             std::vector<std::int64_t> numbers, const std::string& detail);

// The text that it carries, in bytes.
std::size_t TextOf(const link::TribeChange& change);

}  // namespace imsdk::embedded
