#include "embedded/tribe_changes.h"

#include <charconv>
#include <utility>

#include "embedded/member_table.h"

namespace imsdk::embedded {

namespace {

template <class Key>
std::map<Key, std::wstring> UnpackTexts(const std::string& packed) {
  std::map<Key, std::wstring> texts;
  const char* at = packed.data();
  const char* const end = at + packed.size();
  while (at != end) {
    std::int32_t key = 0;
    std::ptrdiff_t length = 0;
    const auto first = std::from_chars(at, end, key);
    if (first.ec != std::errc() || first.ptr == end) break;
    const auto second = std::from_chars(first.ptr + 1, end, length);
    if (second.ec != std::errc() || second.ptr == end || length < 0) break;
    at = second.ptr + 1;
    if (end - at < length) break;
    texts[static_cast<Key>(key)] = base::UTF8ToWide({at, static_cast<std::size_t>(length)});
    at += length;
  }
  return texts;
}

}  // namespace

biz::IMUserID UserOf(sqlite::Database& database, std::int64_t account) {
  auto row = database.Prepare("SELECT appkey, nick FROM accounts WHERE id=?", account);
  return row.Step() ? biz::IMUserID{row.Wide(0), row.Wide(1)} : biz::IMUserID{};
}

std::string PackTexts(const std::map<std::int32_t, std::wstring>& texts) {
  std::string packed;
  for (const auto& [key, text] : texts) {
    const std::string utf8 = base::WideToUTF8(text);
    packed += std::to_string(key) + ' ' + std::to_string(utf8.size()) + ' ' + utf8;
  }
  return packed;
}

void TellTribe(MailTable& mail, Effects& effects, const TribeEntry& entry) {
  const Stream stream{Stream::Kind::kTribe, entry.conversation};
  const Position position = mail.AddEntry({stream, entry.kind, entry.conversation, 0, entry.actor,
                                           entry.numbers, 0, PackTexts(entry.texts)});
  effects.news.push_back({stream, position, 0});
}

link::TribeChange ReadChange(sqlite::Database& database, EntryKind kind,
                             std::vector<std::int64_t> numbers, const std::string& detail) {
  numbers.resize(3);
  const auto user = [&] { return UserOf(database, numbers[0]); };
  const auto count = static_cast<std::int32_t>(numbers[1]);
  switch (kind) {
    case EntryKind::kTribeJoined: {
      StoredMember member{.account = numbers[0], .user = user()};
      member.level = static_cast<biz::TribeMemberLevel>(numbers[2]);
      return link::TribeJoined{ToMember(member, biz::kMemberOffline, 0), count};
    }
    case EntryKind::kTribeLeft:
      return link::TribeLeft{user(), numbers[2] != 0, count};
    case EntryKind::kTribeLevelChanged:
      return link::TribeLevelChanged{user(), static_cast<biz::TribeMemberLevel>(count)};
    case EntryKind::kTribeTransferred:
      return link::TribeTransferred{user()};
    case EntryKind::kTribeMemberChanged:
      return link::TribeMemberChanged{user(), UnpackTexts<biz::TribeUserModifyKey>(detail)};
    case EntryKind::kTribeEnabled:
      return link::TribeEnabled{numbers[0] != 0};
    case EntryKind::kTribeVisitorsCleared:
      return link::TribeVisitorsCleared{};
    default:
      return link::TribeInfoChanged{UnpackTexts<biz::TribeModifyKey>(detail)};
  }
}

std::size_t TextOf(const link::TribeChange& change) {
  const auto* info = std::get_if<link::TribeInfoChanged>(&change);
  std::size_t text = 0;
  if (info) {
    for (const auto& [key, value] : info->detail) text += value.size() * sizeof(wchar_t);
  }
  return text;
}

}  // namespace imsdk::embedded
