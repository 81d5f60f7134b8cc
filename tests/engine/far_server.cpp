#include "far_server.h"

#include <algorithm>
#include <iterator>
#include <random>

#include "far_state.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::test {

namespace {

constexpr std::size_t kMostInBatch = 100;
constexpr std::size_t kMostAhead = 400;  // of what was acknowledged

}  // namespace

FarKey KeyOf(const biz::IMConversationID& cid, const biz::IMUserID& self) {
  FarKey key{cid.type, cid.user, self, cid.tribe.id};
  if (cid.is_tribe()) key.one = key.other = {};
  if (cid.is_user() && key.other < key.one) std::swap(key.one, key.other);
  return key;
}

std::int64_t FarServer::State::Now() {
  last_time = std::max(last_time + 1, base::Time::Now().ToMilliseconds());
  return last_time;
}

std::wstring FarServer::State::MakeToken(const biz::IMUserID& user) {
  const std::wstring token = L"token " + std::to_wstring(++last_number);
  accounts.at(user).tokens[token] = base::Time::Now().ToMilliseconds() + token_life_ms;
  return token;
}

std::vector<biz::IMUserID> FarServer::State::Concerned(const link::Message& message) {
  if (!message.cid.is_tribe()) {
    if (message.cid.user == message.from) return {message.from};
    return {message.from, message.cid.user};
  }
  std::vector<biz::IMUserID> members;
  for (const auto& [user, since] : tribes.at(message.cid.tribe.id).members) members.push_back(user);
  return members;
}

link::Message FarServer::State::SeenBy(const link::Message& message, const biz::IMUserID& user) {
  link::Message seen = message;
  if (message.cid.is_user() && user != message.from) seen.cid.user = message.from;
  return seen;
}

void FarServer::State::Put(const biz::IMUserID& user, FarEntry entry) {
  const auto account = accounts.find(user);
  if (account == accounts.end()) return;
  auto& stream = account->second.deaf ? account->second.kept_back : account->second.stream;
  stream.push_back(std::move(entry));
  Pump(user);
}

void FarServer::State::Tell(const link::Message& message, const std::string& device) {
  for (const auto& user : Concerned(message)) {
    Put(user, {SeenBy(message, user), {}, user == message.from ? device : std::string()});
  }
}

biz::ResultCode FarServer::State::Archived(const link::Message& message, const std::string& device,
                                           link::Message** kept, bool silent) {
  auto& archive = archives[KeyOf(message.cid, message.from)].messages;
  const auto known = std::find_if(archive.begin(), archive.end(), [&](const auto& one) {
    return one.msgid == message.msgid && one.from == message.from;
  });
  if (known != archive.end()) {
    *kept = &*known;
    if (habits.forgets_messages) Tell(*known, device);
    return {};
  }
  archive.push_back(message);
  if (archive.back().svrtime == 0) archive.back().svrtime = Now();
  archive.back().place = "p" + std::to_string(archive.size());
  *kept = &archive.back();
  const link::Message told = archive.back();
  if (!silent) Tell(told, device);
  return {};
}

std::string FarServer::State::PositionOf(std::size_t index) const {
  // A position that stands for two places goes on from the first of them.
  if (habits.same_place) index -= index % 2;
  return "far/" + std::to_string(epoch) + '/' + std::to_string(index);
}

std::optional<std::size_t> FarServer::State::IndexOf(const std::string& position) const {
  const std::string known = "far/" + std::to_string(epoch) + '/';
  if (!position.starts_with(known)) return std::nullopt;
  std::uint64_t index = 0;
  base::StringToUint64(std::string_view(position).substr(known.size()), &index);
  return static_cast<std::size_t>(index);
}

void FarServer::State::Pump(const biz::IMUserID& user) {
  for (auto& [session, device] : devices) {
    if (device.user == user) Pump(device);
  }
}

void FarServer::State::Pump(FarDevice& device) {
  const auto& stream = accounts.at(device.user).stream;
  const auto listener = device.listener.lock();
  while (listener && device.next < stream.size() &&
         device.next < device.acknowledged + kMostAhead) {
    const bool offline = device.next < device.offline_upto;
    const std::size_t from =
        habits.repeats ? device.next - std::min<std::size_t>(device.next, 3) : device.next;
    const std::size_t end =
        std::min(offline ? device.offline_upto : stream.size(), device.next + kMostInBatch);
    link::Batch batch;
    for (std::size_t i = from; i < end; ++i) {
      const FarEntry& one = stream[i];
      const bool here = one.only.empty() ? one.except != device.name : one.only == device.name;
      if (here) batch.entries.push_back(one.entry);
    }
    if (habits.shuffles) {
      std::shuffle(batch.entries.begin(), batch.entries.end(), std::mt19937(7));
    }
    device.next = end;
    batch.position = PositionOf(end);
    batch.offline = offline;
    batch.more = offline && end < device.offline_upto;
    if (habits.repeats) listener->OnBatch(batch);
    listener->OnBatch(std::move(batch));
  }
}

FarServer::FarServer(const Habits& habits, std::int64_t token_life_ms)
    : state_(std::make_shared<State>()) {
  state_->habits = habits;
  state_->token_life_ms = token_life_ms;
}

FarServer::~FarServer() {
  std::lock_guard hold(state_->lock);
  state_->devices.clear();
}

bool FarServer::HasAccounts() {
  std::lock_guard hold(state_->lock);
  return !state_->accounts.empty();
}

bool FarServer::CreateAccount(const biz::IMUserID& user, const std::wstring& password) {
  std::lock_guard hold(state_->lock);
  if (!user.valid() || state_->virtuals.contains(user)) return false;
  const auto [account, fresh] = state_->accounts.try_emplace(user);
  if (fresh) account->second.password = password;
  return fresh;
}

biz::ResultCode FarServer::IssueToken(const biz::IMUserID& user, std::wstring* token) {
  std::lock_guard hold(state_->lock);
  if (!state_->accounts.contains(user)) {
    return {biz::kEngineUnknownUser, 0, L"there is no such user"};
  }
  *token = state_->MakeToken(user);
  return {};
}

bool FarServer::Publish(VirtualKind kind, const biz::IMUserID& from, const biz::IMUserID& to,
                        const std::wstring& body) {
  std::lock_guard hold(state_->lock);
  if (kind != VirtualKind::kSystem && kind != VirtualKind::kSubscription) return false;
  if (body.empty() || base::WideToUTF8(body).size() > biz::kMaxBodyBytes) return false;
  if (state_->accounts.contains(from) || !state_->accounts.contains(to)) return false;
  if (state_->virtuals.try_emplace(from, kind).first->second != kind) return false;
  link::Message message;
  message.cid = biz::IMConversationID(
      from, kind == VirtualKind::kSystem ? biz::kCIDSystem : biz::kCIDSubscribe);
  message.from = from;
  message.msgid = ++state_->last_number;
  message.msgtime = message.svrtime = state_->Now();
  message.body = body;
  state_->Put(to, {message, {}, {}});
  return true;
}

biz::IMTribeID FarServer::CreateTribe(const NewTribe& tribe) {
  {
    std::lock_guard hold(state_->lock);
    if (state_->tribes.contains(tribe.id.id) || !state_->accounts.contains(tribe.owner)) return {};
    state_->tribes[tribe.id.id];
  }
  Join(tribe.id, tribe.owner);
  for (const auto& member : tribe.members) Join(tribe.id, member);
  return tribe.id;
}

void FarServer::Join(const biz::IMTribeID& tribe, const biz::IMUserID& user) {
  std::lock_guard hold(state_->lock);
  const biz::IMConversationID cid(tribe);
  const std::size_t there = state_->archives[KeyOf(cid, user)].messages.size();
  state_->tribes.at(tribe.id).members[user] = state_->habits.shows_past ? 0 : there;
  state_->Put(user, {link::Membership{tribe, true}, {}, {}});
}

void FarServer::Leave(const biz::IMTribeID& tribe, const biz::IMUserID& user) {
  std::lock_guard hold(state_->lock);
  state_->tribes.at(tribe.id).members.erase(user);
  state_->Put(user, {link::Membership{tribe, false}, {}, {}});
}

void FarServer::Change(const Habits& habits) {
  std::lock_guard hold(state_->lock);
  state_->habits = habits;
}

void FarServer::Seed(const std::vector<link::Message>& messages, bool tell) {
  std::lock_guard hold(state_->lock);
  link::Message* kept = nullptr;
  for (const auto& message : messages) state_->Archived(message, {}, &kept, !tell);
}

void FarServer::SetDeaf(const biz::IMUserID& user, bool deaf) {
  std::lock_guard hold(state_->lock);
  state_->accounts.at(user).deaf = deaf;
}

void FarServer::TellLate(const biz::IMUserID& user) {
  std::lock_guard hold(state_->lock);
  FarAccount& account = state_->accounts.at(user);
  account.stream.insert(account.stream.end(), account.kept_back.rbegin(), account.kept_back.rend());
  account.kept_back.clear();
  account.deaf = false;
  state_->Pump(user);
}

void FarServer::ForgetPositions() {
  std::lock_guard hold(state_->lock);
  ++state_->epoch;
  // Who comes without a position stands where everybody stands who is there.
  for (auto& [user, account] : state_->accounts) account.farthest = account.stream.size();
}

void FarServer::ArchiveTaken() {
  std::lock_guard hold(state_->lock);
  for (const auto& [message, device] : std::exchange(state_->taken, {})) {
    link::Message* kept = nullptr;
    state_->Archived(message, device, &kept);
    const link::Archived archived{message.cid, message.msgid, kept->svrtime, kept->place};
    state_->Put(message.from, {archived, device, {}});
  }
}

void FarServer::LoseTaken() {
  std::lock_guard hold(state_->lock);
  state_->taken.clear();
}

void FarServer::TellTimes() {
  std::lock_guard hold(state_->lock);
  for (const auto& [message, device] : std::exchange(state_->untimed, {})) {
    state_->Put(
        message.from,
        {link::Archived{message.cid, message.msgid, message.svrtime, message.place}, device, {}});
  }
}

void FarServer::SpoilFiles() {
  std::lock_guard hold(state_->lock);
  for (auto& [address, content] : state_->files) content += "!";
}

std::vector<link::Message> FarServer::Archived(const biz::IMUserID& one,
                                               const biz::IMUserID& other) {
  std::lock_guard hold(state_->lock);
  return state_->archives[KeyOf(biz::IMConversationID(other), one)].messages;
}

int FarServer::HistoryAsked() {
  std::lock_guard hold(state_->lock);
  return state_->asked;
}

}  // namespace imsdk::test
