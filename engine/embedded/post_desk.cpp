#include "embedded/post_desk.h"

#include <algorithm>
#include <string>

#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::embedded {

namespace {

Outcome Failure(biz::EngineCode code, std::wstring text) {
  return {{code, 0, std::move(text)}, 0, {}};
}

Outcome UnknownUser() { return Failure(biz::kEngineUnknownUser, L"there is no such user"); }
Outcome UnknownMessage() { return Failure(biz::kEngineNotFound, L"there is no such message"); }

bool IsTooLarge(const link::Message& message) {
  return base::WideToUTF8(message.body).size() > link::kMaxBodyBytes;
}

std::wstring InWords(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  if (seconds < 60 || seconds % 60 != 0) return std::to_wstring(seconds) + L" seconds";
  return std::to_wstring(seconds / 60) + (seconds == 60 ? L" minute" : L" minutes");
}

}  // namespace

PostDesk::PostDesk(ServerStore& store, std::chrono::milliseconds withdraw_limit)
    : store_(store), withdraw_limit_(withdraw_limit), last_time_(store.NewestTime()) {}

std::int64_t PostDesk::Now() {
  return last_time_ = std::max(last_time_, base::Time::Now().ToMilliseconds());
}

void PostDesk::Tell(Outcome& outcome, const NewEntry& entry) {
  store_.mail().AddEntry(entry);
  outcome.push.push_back(entry.account);
}

Outcome PostDesk::Deliver(const Caller& caller, link::Message message) {
  if (IsTooLarge(message)) return Failure(biz::kEngineTooLarge, L"the message is too large");
  if (const auto known = store_.mail().Find(caller.account, message.msgid)) {
    return {{}, known->svrtime, {}};
  }
  const auto receiver = store_.FindAccount(message.to);
  if (!receiver || receiver->is_virtual()) return UnknownUser();
  message.svrtime = Now();
  const std::int64_t row = store_.mail().Add(caller.account, receiver->id, message);
  Outcome outcome{{}, message.svrtime, {}};
  const NewEntry entry{receiver->id, EntryKind::kMessage, row, caller.account, {}, 0};
  if (receiver->id != caller.account) Tell(outcome, entry);
  if (store_.HasOtherDevices(caller.account, caller.device)) {
    Tell(outcome, {caller.account, EntryKind::kMessage, row, receiver->id, {}, caller.device});
  }
  return outcome;
}

Outcome PostDesk::Withdraw(const Caller& caller, const biz::IMUserID& peer, std::int64_t msgid) {
  const auto receiver = store_.FindAccount(peer);
  const auto known = store_.mail().Find(caller.account, msgid);
  if (!receiver || !known || known->receiver != receiver->id) return UnknownMessage();
  if (known->withdrawn) return {};
  if (Now() - known->svrtime > withdraw_limit_.count()) {
    return Failure(biz::kEngineRefused, L"a message can be taken back only within " +
                                            InWords(withdraw_limit_) + L" after it was sent");
  }
  store_.mail().Withdraw(known->row);
  Outcome outcome;
  NewEntry entry{caller.account, EntryKind::kWithdrawal, known->row, receiver->id, {}, 0};
  Tell(outcome, entry);
  if (receiver->id == caller.account) return outcome;
  entry.account = receiver->id;
  entry.peer = caller.account;
  Tell(outcome, entry);
  return outcome;
}

Outcome PostDesk::ReportRead(const Caller& caller, const biz::IMUserID& peer,
                             const std::vector<std::int64_t>& msgids) {
  const auto sender = store_.FindAccount(peer);
  if (!sender || sender->is_virtual()) return UnknownUser();
  NewEntry entry{sender->id, EntryKind::kPeerRead, 0, caller.account, {}, 0};
  for (const std::int64_t msgid : msgids) {
    if (store_.mail().SetRead(sender->id, caller.account, msgid)) entry.numbers.push_back(msgid);
  }
  Outcome outcome;
  if (!entry.numbers.empty()) Tell(outcome, entry);
  return outcome;
}

Outcome PostDesk::MarkRead(const Caller& caller, const biz::IMUserID& peer,
                           const biz::IMMsgPosition& upto) {
  const auto account = store_.FindAccount(peer);
  if (!account) return UnknownUser();
  Outcome outcome;
  if (store_.HasOtherDevices(caller.account, caller.device) &&
      store_.mail().AdvanceRead(caller.account, account->id, upto, caller.device)) {
    outcome.push.push_back(caller.account);
  }
  return outcome;
}

Outcome PostDesk::SetRoaming(const Caller& caller, std::int32_t status) {
  if (status != biz::kRoamingOff && status != biz::kRoamingOn) {
    return Failure(biz::kEngineRefused, L"there is no such status");
  }
  const auto account = store_.FindAccount(caller.user);
  if (!account) return UnknownUser();
  biz::IMRoamStatus roaming = account->roaming;
  if (roaming.roamstatus == status) return {};
  roaming.roamstatus = status;
  // Later than everything that was taken before.
  if (status == biz::kRoamingOn) roaming.opentime = last_time_ = Now() + 1;
  store_.SetRoaming(account->id, roaming);
  return {};
}

Outcome PostDesk::Publish(link::Message message) {
  if (IsTooLarge(message)) return Failure(biz::kEngineTooLarge, L"the message is too large");
  const auto receiver = store_.FindAccount(message.to);
  if (!receiver || receiver->is_virtual()) return UnknownUser();
  store_.AddAccount(message.from, {}, message.channel);
  const auto sender = store_.FindAccount(message.from);
  if (sender->channel != message.channel) {
    return Failure(biz::kEngineRefused, L"the sender is a user of another kind");
  }
  message.svrtime = Now();
  const std::int64_t row = store_.mail().Add(sender->id, receiver->id, message);
  Outcome outcome{{}, message.svrtime, {}};
  Tell(outcome, {receiver->id, EntryKind::kMessage, row, sender->id, {}, 0});
  return outcome;
}

}  // namespace imsdk::embedded
