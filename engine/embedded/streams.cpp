#include "embedded/streams.h"

#include <utility>

#include "embedded/contact_entries.h"
#include "embedded/mail_table.h"
#include "embedded/message_row.h"
#include "embedded/tribe_changes.h"
#include "kexbase/strings.h"

namespace imsdk::embedded {

namespace {

constexpr int kEntryDetailColumn = kMessageColumns + 6;

biz::IMUserID ActorOf(const sqlite::Statement& row) {
  return {row.Wide(kMessageColumns + 2), row.Wide(kMessageColumns + 3)};
}

link::MentionsRead ReadMentions(sqlite::Database& database, const sqlite::Statement& row,
                                std::int64_t viewer, const std::vector<std::int64_t>& numbers) {
  link::MentionsRead read{ReadCid(row, viewer).tribe, ActorOf(row), {}, {}};
  if (numbers.empty()) return read;
  read.sender = UserOf(database, numbers[0]);
  for (std::size_t i = 3; i < numbers.size(); i += 3) {
    read.counts.push_back({numbers[i - 2], static_cast<std::int32_t>(numbers[i - 1]),
                           static_cast<std::int32_t>(numbers[i])});
  }
  return read;
}

link::Entry ReadEntry(sqlite::Database& database, const sqlite::Statement& row,
                      std::int64_t viewer) {
  std::vector<std::int64_t> numbers = SplitNumbers(row.Text(kMessageColumns + 1));
  switch (static_cast<EntryKind>(row.Int32(kMessageColumns))) {
    case EntryKind::kMessage:
      break;
    case EntryKind::kWithdrawal: {
      link::Message message = ReadMessage(database, row, viewer);
      return link::Withdrawal{std::move(message.cid), std::move(message.from), message.msgid,
                              message.msgtime, message.svrtime};
    }
    case EntryKind::kPeerRead:
      return link::PeerRead{ReadCid(row, viewer), ActorOf(row), std::move(numbers)};
    case EntryKind::kReadElsewhere:
      numbers.resize(2);
      return link::ReadElsewhere{ReadCid(row, viewer), {numbers[0], numbers[1]}};
    case EntryKind::kMentionsRead:
      return ReadMentions(database, row, viewer, numbers);
    case EntryKind::kRemindChanged:
      numbers.resize(1);
      return link::RemindChanged{ReadCid(row, viewer).tribe,
                                 static_cast<biz::TribeMsgRemindType>(numbers[0])};
    case EntryKind::kFileDeleted:
      numbers.resize(1);
      return link::FileDeleted{ReadCid(row, viewer), numbers[0]};
    case EntryKind::kContactChanged:
    case EntryKind::kContactGroupsChanged:
    case EntryKind::kContactVerifyTold:
      numbers.resize(1);
      return ReadContactEntry(database, static_cast<EntryKind>(row.Int32(kMessageColumns)), viewer,
                              numbers[0]);
    case EntryKind::kMembership:
      numbers.resize(1);
      return link::Membership{ReadCid(row, viewer).tribe, numbers[0] != 0};
    case EntryKind::kTribeJoined:
    case EntryKind::kTribeLeft:
    case EntryKind::kTribeLevelChanged:
    case EntryKind::kTribeTransferred:
    case EntryKind::kTribeInfoChanged:
    case EntryKind::kTribeMemberChanged:
    case EntryKind::kTribeEnabled:
    case EntryKind::kTribeVisitorsCleared:
      return link::TribeHappening{
          ReadCid(row, viewer).tribe, ActorOf(row),
          ReadChange(database, static_cast<EntryKind>(row.Int32(kMessageColumns)), numbers,
                     row.Text(kEntryDetailColumn))};
  }
  return ReadMessage(database, row, viewer);
}

// A tribe's own happenings stand beside those of accounts.
std::int64_t NumberOf(const Stream& stream) {
  return stream.kind == Stream::Kind::kTribe ? -stream.id : stream.id;
}

constexpr const char* kEntries =
    "SELECT " MESSAGE_COLUMNS
    "e.kind, e.numbers, r.appkey, r.nick, e.position, e.device, e.detail FROM entries e " CID_JOINS(
        "e.conversation") "LEFT JOIN messages m ON m.position=e.message " MESSAGE_JOINS
                          "LEFT JOIN accounts r ON r.id=e.actor WHERE e.stream=?1 AND "
                          "e.position>=?2 AND "
                          "e.position<=?3 AND (e.device=0 OR e.device<>?4) ORDER BY e.position";
constexpr int kEntryPositionColumn = kMessageColumns + 4;
constexpr int kEntryDeviceColumn = kMessageColumns + 5;

constexpr const char* kMessages =
    "SELECT " MESSAGE_COLUMNS "0 FROM messages m " CID_JOINS("m.conversation") MESSAGE_JOINS
    "WHERE m.conversation=?1 AND m.position>=?2 AND m.position<=?3 AND "
    "(m.device=0 OR m.device<>?4) ORDER BY m.position";

constexpr const char* kSentMessages =
    "SELECT " MESSAGE_COLUMNS "0 FROM messages m " CID_JOINS("m.conversation") MESSAGE_JOINS
    "WHERE m.sender=?1 AND c.tribe=0 AND m.position>=?2 AND m.position<=?3 AND "
    "(m.device=0 OR m.device<>?4) ORDER BY m.position";

}  // namespace

StreamPart ReadStream(sqlite::Database& database, const StreamRequest& request) {
  const Stream::Kind kind = request.stream.kind;
  const bool sent = kind == Stream::Kind::kSent;
  const bool messages = sent || kind == Stream::Kind::kTribeMessages;
  const std::int64_t viewer = sent || kind == Stream::Kind::kAccount ? request.stream.id : 0;
  auto row =
      database.Prepare(sent       ? kSentMessages
                       : messages ? kMessages
                                  : kEntries,
                       NumberOf(request.stream), request.from, request.until, request.device);
  StreamPart part;
  std::size_t text = 0;
  while (row.Step()) {
    const Position position = row.Int64(messages ? kPositionColumn : kEntryPositionColumn);
    if (position > request.stop || part.elements.size() == request.count || text >= request.bytes) {
      part.next = position;
      break;
    }
    part.elements.push_back(
        {position, row.Int64(messages ? kDeviceColumn : kEntryDeviceColumn),
         row.Int64(kPreviousColumn),
         messages ? ReadMessage(database, row, viewer) : ReadEntry(database, row, viewer)});
    text += TextOf(part.elements.back().entry);
  }
  return part;
}

std::size_t TextOf(const link::Message& message) {
  return (message.body.size() + message.ext.others.size()) * sizeof(wchar_t);
}

std::size_t TextOf(const link::Entry& entry) {
  if (const auto* message = std::get_if<link::Message>(&entry)) return TextOf(*message);
  const auto* happening = std::get_if<link::TribeHappening>(&entry);
  return happening ? TextOf(happening->change) : 0;
}

std::optional<Position> ParsePosition(const std::string& text) {
  std::int64_t position = 0;
  if (!base::StringToInt64(text, &position) || position < 0) return std::nullopt;
  return position;
}

}  // namespace imsdk::embedded
