#include "embedded/post_desk.h"

#include <algorithm>
#include <map>
#include <string>

#include "embedded/address_book.h"
#include "embedded/file_room.h"
#include "embedded/mention_desk.h"

namespace imsdk::embedded {

namespace {

// Identifiers of published messages: the millisecond, and a count below it.
constexpr int kPublishedBits = 20;

biz::ResultCode UnknownMessage() {
  return Failure(biz::kEngineNotFound, L"there is no such message");
}

std::wstring InWords(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  if (seconds < 60 || seconds % 60 != 0) return std::to_wstring(seconds) + L" seconds";
  return std::to_wstring(seconds / 60) + (seconds == 60 ? L" minute" : L" minutes");
}

Stream OfAccount(std::int64_t account) { return {Stream::Kind::kAccount, account}; }

}  // namespace

PostDesk::PostDesk(ServerStore& store, std::chrono::milliseconds withdraw_limit)
    : store_(store),
      withdraw_limit_(withdraw_limit),
      last_published_((store.mail().NewestTime() + 1) << kPublishedBits) {}

void PostDesk::Tell(Effects& effects, const NewEntry& entry) {
  effects.news.push_back({entry.stream, store_.mail().AddEntry(entry), entry.device});
}

bool PostDesk::MayName(const Caller& caller, const link::File& file) {
  // A name that promises another content would spoil the file that its receiver has or waits for.
  return DigestOf(file) == file.address &&
         (store_.files().HasUploaded(caller.account, file.address) ||
          store_.files().WasSent(caller.account, file.address));
}

Outcome<link::Delivered> PostDesk::Accept(const Sending& sending, std::int64_t receiver,
                                          link::Message message) {
  message.svrtime = store_.Now();
  const Position place = store_.mail().Add(sending, message);
  Outcome<link::Delivered> outcome(
      link::Delivered{link::Step::kArchived, message.svrtime, std::to_string(place)});
  for (std::size_t i = 0; i < message.files.size(); ++i) {
    outcome.reply.nodes.push_back(NodeOf(place, static_cast<std::int64_t>(i) + 1));
  }
  if (receiver == 0) {
    const Stream stream{Stream::Kind::kTribeMessages, sending.conversation};
    outcome.effects.news.push_back({stream, place, sending.device});
    store_.members().NoteMessage(sending.conversation, sending.sender, message.svrtime);
    return outcome;
  }
  NewEntry entry{OfAccount(receiver), EntryKind::kMessage, sending.conversation, place};
  if (receiver != sending.sender) Tell(outcome.effects, entry);
  if (store_.accounts().HasOtherDevices(sending.sender, sending.device)) {
    entry.stream = OfAccount(sending.sender);
    entry.device = sending.device;
    if (sending.device != 0) Tell(outcome.effects, entry);
  }
  return outcome;
}

Outcome<link::Delivered> PostDesk::Answer(const Caller& caller, const link::Deliver& request) {
  const link::Message& message = request.message;
  Found found = FindConversation(store_, caller, message.cid);
  if (!found.result.ok()) return found.result;
  if (message.cid.is_virtual()) return UnknownUser();
  if (found.closed) return TribeIsClosed();
  if (found.peer != 0 && store_.contacts().IsBlack(found.peer, caller.account)) {
    return Refusal(biz::kContactBlackListed, L"the user takes no messages of this account");
  }
  if (found.conversation == 0) {
    found.conversation = store_.conversations().MakePair(caller.account, found.peer);
  }
  if (const auto known = store_.mail().Find(found.conversation, caller.account, message.msgid)) {
    return link::Delivered{link::Step::kArchived, known->svrtime, std::to_string(known->position)};
  }
  if (!std::all_of(message.files.begin(), message.files.end(),
                   [&](const link::File& file) { return MayName(caller, file); })) {
    return Failure(biz::kEngineNotFound, L"the server has no such file of this account");
  }
  const Mentioned mentioned = CheckMention(store_, caller, message);
  if (!mentioned.result.ok()) return mentioned.result;
  auto outcome = Accept({found.conversation, caller.account, caller.device}, found.peer, message);
  if (mentioned.type != biz::kAtNobody) {
    store_.mentions().Put(store_.mail().newest(), mentioned.type, mentioned.named,
                          mentioned.unread);
  }
  return outcome;
}

Outcome<link::Nothing> PostDesk::Answer(const Caller& caller, const link::Withdraw& request) {
  const Found found = FindConversation(store_, caller, request.cid);
  if (request.cid.is_tribe() && !found.result.ok()) return found.result;
  const auto known = store_.mail().Find(found.conversation, caller.account, request.msgid);
  if (!known) return UnknownMessage();
  if (known->withdrawn) return {};
  if (store_.Now() - known->svrtime > withdraw_limit_.count()) {
    return Failure(biz::kEngineRefused, L"a message can be taken back only within " +
                                            InWords(withdraw_limit_) + L" after it was sent");
  }
  store_.mail().Withdraw(known->position);
  if (request.cid.is_tribe()) store_.mentions().Remove(known->position);
  Outcome<link::Nothing> outcome;
  NewEntry entry{OfAccount(caller.account), EntryKind::kWithdrawal, found.conversation,
                 known->position};
  if (request.cid.is_tribe()) entry.stream = {Stream::Kind::kTribe, found.conversation};
  Tell(outcome.effects, entry);
  if (request.cid.is_tribe() || found.peer == caller.account) return outcome;
  entry.stream = OfAccount(found.peer);
  Tell(outcome.effects, entry);
  return outcome;
}

Outcome<link::Nothing> PostDesk::Answer(const Caller& caller, const link::ReportRead& request) {
  const Found found = FindConversation(store_, caller, request.cid);
  if (!found.result.ok()) return found.result;
  if (request.cid.is_virtual()) return UnknownUser();
  std::map<std::int64_t, std::vector<std::int64_t>> by_sender;
  for (const std::int64_t msgid : request.msgids) {
    for (const std::int64_t sender :
         store_.mail().SetRead(found.conversation, caller.account, msgid)) {
      by_sender[sender].push_back(msgid);
    }
  }
  Outcome<link::Nothing> outcome;
  for (auto& [sender, msgids] : by_sender) {
    Tell(outcome.effects, {OfAccount(sender), EntryKind::kPeerRead, found.conversation, 0,
                           caller.account, std::move(msgids)});
  }
  return outcome;
}

Outcome<link::Nothing> PostDesk::Answer(const Caller& caller, const link::MarkRead& request) {
  Found found = FindConversation(store_, caller, request.cid);
  if (!found.result.ok()) return found.result;
  if (!store_.accounts().HasOtherDevices(caller.account, caller.device)) return {};
  if (found.conversation == 0) {
    found.conversation = store_.conversations().MakePair(caller.account, found.peer);
  }
  Outcome<link::Nothing> outcome;
  if (const auto position = store_.mail().AdvanceRead(caller.account, found.conversation,
                                                      request.upto, caller.device)) {
    outcome.effects.news.push_back({OfAccount(caller.account), *position, caller.device});
  }
  return outcome;
}

Outcome<link::Nothing> PostDesk::Answer(const Caller& caller, const link::SendTyping& request) {
  if (!request.cid.is_user()) {
    return Failure(biz::kEngineRefused, L"typing is told between users only");
  }
  const Found found = FindConversation(store_, caller, request.cid);
  if (!found.result.ok()) return found.result;
  Outcome<link::Nothing> outcome;
  // Nobody hears from whom he has put on his black list.
  if (store_.contacts().IsBlack(found.peer, caller.account)) return outcome;
  outcome.effects.typing = {found.peer, biz::IMConversationID(caller.user), request.status};
  return outcome;
}

Outcome<link::Nothing> PostDesk::Answer(const Caller& /*nobody*/, const Publication& request) {
  const auto receiver = store_.accounts().Find(request.to);
  if (!receiver || receiver->is_virtual()) return UnknownUser();
  store_.accounts().Add(request.from, {}, request.kind);
  const auto sender = store_.accounts().Find(request.from);
  if (sender->kind != request.kind) {
    return Failure(biz::kEngineRefused, L"the sender is a user of another kind");
  }
  link::Message message;
  message.msgtime = store_.Now();
  message.msgid = last_published_ =
      std::max(last_published_ + 1, message.msgtime << kPublishedBits);
  message.body = request.body;
  message.ext.others = request.others;
  const std::int64_t conversation = store_.conversations().MakePair(sender->id, receiver->id);
  Outcome<link::Nothing> outcome;
  outcome.effects = Accept({conversation, sender->id, 0}, receiver->id, message).effects;
  return outcome;
}

}  // namespace imsdk::embedded
