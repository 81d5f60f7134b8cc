#include "embedded/mention_desk.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "embedded/tribe_rights.h"

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kReadersInPart = 1000;

using ReadBySender = std::map<std::int64_t, std::vector<StoredMention>>;

// Sender, then each message with its counts; the account's own devices are not told those.
std::vector<std::int64_t> NumbersOf(std::int64_t sender, const std::vector<StoredMention>& read,
                                    bool with_counts) {
  std::vector<std::int64_t> numbers{sender};
  for (const StoredMention& mention : read) {
    numbers.push_back(mention.msgid);
    numbers.push_back(with_counts ? mention.readed : 0);
    numbers.push_back(with_counts ? mention.unread : 0);
  }
  return numbers;
}

}  // namespace

Mentioned CheckMention(ServerStore& store, const Caller& caller, const link::Message& message) {
  Mentioned mentioned;
  mentioned.type = message.at.type;
  if (message.at.type == biz::kAtNobody) return mentioned;
  if (!message.cid.is_tribe() || message.at.type < biz::kAtNobody ||
      message.at.type > biz::kAtAll) {
    mentioned.result = Failure(biz::kEngineRefused, L"nobody can be mentioned so");
    return mentioned;
  }
  const bool all = message.at.type == biz::kAtAll;
  const Admitted admitted =
      Admit(store, caller, message.cid.tribe, all ? TribeAct::kMentionAll : TribeAct::kMention);
  mentioned.result = admitted.result;
  if (!admitted.ok()) return mentioned;
  if (all) {
    mentioned.unread = admitted.tribe.members - 1;
    return mentioned;
  }
  std::set<std::int64_t> known;
  for (const biz::IMUserID& user : message.at.members) {
    const auto account = store.accounts().Find(user);
    if (!account || !known.insert(account->id).second) continue;
    mentioned.named.push_back(account->id);
    const bool reads = account->id != caller.account &&
                       store.members().Find(admitted.tribe.conversation, account->id);
    if (reads) ++mentioned.unread;
  }
  if (mentioned.named.empty()) {
    mentioned.result =
        Refusal(biz::kTribeUserNotAMember, L"nobody of those who are mentioned is known");
  }
  return mentioned;
}

Outcome<link::Nothing> MentionDesk::Answer(const Caller& caller,
                                           const link::ReadMentions& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kRead);
  if (!admitted.ok()) return admitted.result;
  const std::int64_t conversation = admitted.tribe.conversation;
  const auto stay = store_.conversations().CurrentStay(caller.account, conversation);
  ReadBySender read;
  for (const link::MessageName& name : request.messages) {
    const auto sender = store_.accounts().Find(name.from);
    if (!stay || !sender) continue;
    auto mention = store_.mentions().Find(conversation, sender->id, name.msgid);
    if (!mention || !store_.mentions().Concerns(*mention, caller.account, *stay)) continue;
    if (store_.mentions().SetRead(&*mention, caller.account)) read[sender->id].push_back(*mention);
  }
  Outcome<link::Nothing> outcome;
  const bool others = store_.accounts().HasOtherDevices(caller.account, caller.device);
  for (const auto& [sender, mentions] : read) {
    const auto tell = [&](std::int64_t account, std::int64_t device, bool with_counts) {
      const Stream stream{Stream::Kind::kAccount, account};
      const Position position =
          store_.mail().AddEntry({stream, EntryKind::kMentionsRead, conversation, 0, caller.account,
                                  NumbersOf(sender, mentions, with_counts), device});
      outcome.effects.news.push_back({stream, position, device});
    };
    tell(sender, 0, true);
    if (others) tell(caller.account, caller.device, false);
  }
  return outcome;
}

Outcome<link::MentionCounts> MentionDesk::Answer(const Caller& caller,
                                                 const link::CountMentionReaders& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kRead);
  if (!admitted.ok()) return admitted.result;
  Outcome<link::MentionCounts> outcome;
  for (const std::int64_t msgid : request.msgids) {
    const auto mention = store_.mentions().Find(admitted.tribe.conversation, caller.account, msgid);
    if (mention) outcome.reply.counts.push_back(mention->counts());
  }
  return outcome;
}

Outcome<link::MentionReaders> MentionDesk::Answer(const Caller& caller,
                                                  const link::GetMentionReaders& request) {
  const Admitted admitted = Admit(store_, caller, request.tribe, TribeAct::kRead);
  if (!admitted.ok()) return admitted.result;
  const auto mention =
      store_.mentions().Find(admitted.tribe.conversation, caller.account, request.msgid);
  if (!mention) {
    return Failure(biz::kEngineNotFound, L"the account has no such message that mentions");
  }
  const auto behind =
      request.place.empty() ? std::optional<Position>(0) : ParsePosition(request.place);
  if (!behind) return Failure(biz::kEngineNotFound, L"the list has no such place");
  auto found = store_.mentions().ReadersBehind(*mention, *behind, kReadersInPart);
  Outcome<link::MentionReaders> outcome;
  if (found.size() == static_cast<std::size_t>(kReadersInPart)) {
    outcome.reply.next = std::to_string(found.back().account);
  }
  for (StoredReader& one : found) outcome.reply.readers.push_back(std::move(one.reader));
  return outcome;
}

}  // namespace imsdk::embedded
