// The server in memory behind its link.
#include <algorithm>
#include <fstream>
#include <iterator>

#include "far_state.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::test {

namespace {

constexpr std::size_t kMostHistory = 1000;

using Nothing = std::pair<biz::ResultCode, link::Nothing>;

Nothing Refused(biz::EngineCode code, const wchar_t* text) { return {{code, 0, text}, {}}; }

}  // namespace

class FarSession final : public link::Session {
 public:
  explicit FarSession(std::shared_ptr<FarServer::State> state) : state_(std::move(state)) {}
  ~FarSession() override {
    std::lock_guard hold(state_->lock);
    state_->devices.erase(this);
  }

  void Ask(link::Request request) override {
    std::visit([this](auto& asked) { Answer(asked); }, request);
  }

  void Acknowledge(const std::string& position) override {
    std::lock_guard hold(state_->lock);
    const auto device = state_->devices.find(this);
    const auto index = state_->IndexOf(position);
    if (device == state_->devices.end() || !index) return;
    device->second.acknowledged = std::max(device->second.acknowledged, *index);
    auto& farthest = state_->accounts.at(device->second.user).farthest;
    // Its position may stand for a place before.
    const bool all = *index + 1 >= device->second.next;
    farthest = std::max(farthest, all ? device->second.next : *index);
    state_->Pump(device->second);
  }

 private:
  template <class Operation>
  void Answer(link::Asked<Operation>& asked) {
    typename link::Asked<Operation>::Reply reply{};
    biz::ResultCode result{biz::kEngineNotLoggedIn, 0, L"the session is over"};
    {
      std::lock_guard hold(state_->lock);
      const auto device = state_->devices.find(this);
      if (device != state_->devices.end()) {
        if constexpr (std::is_same_v<Operation, link::Logout>) {
          state_->devices.erase(device);
          result = {};
        } else if constexpr (!requires { state_->Answer(device->second, asked.operation); }) {
          result = {biz::kEngineUnsupported, 0, L"this server does not know how"};
        } else {
          std::tie(result, reply) = state_->Answer(device->second, asked.operation);
        }
      }
    }
    asked.done(result, reply);
  }

  const std::shared_ptr<FarServer::State> state_;
};

class FarServer::Door final : public link::ServerLink {
 public:
  explicit Door(std::shared_ptr<State> state) : state_(std::move(state)) {}

  void Login(const link::LoginRequest& request, link::LoginCallback done) override {
    link::Grant grant;
    const biz::ResultCode result = Check(request, &grant);
    done(result, grant);
  }

  void Connect(const link::ConnectRequest& request, link::ConnectCallback done) override {
    const auto session = std::make_shared<FarSession>(state_);  // its end takes the lock
    std::lock_guard hold(state_->lock);
    const auto known = state_->accounts.find(request.user);
    if (known == state_->accounts.end() || !known->second.tokens.contains(request.token)) {
      return done({biz::kEngineTokenExpired, 0, L"the token is no good"}, {});
    }
    const auto index = request.position.empty() ? std::optional(known->second.farthest)
                                                : state_->IndexOf(request.position);
    if (!index) return done({biz::kEnginePositionLost, 0, L"that is forgotten"}, {});
    FarDevice device{request.user, request.device, request.listener, *index};
    device.acknowledged = *index;
    device.offline_upto = known->second.stream.size();
    done({}, {session, state_->habits.capabilities});
    FarDevice& here = state_->devices[session.get()] = std::move(device);
    if (const auto listener = here.listener.lock(); listener && request.position.empty()) {
      listener->OnBatch({{}, state_->PositionOf(*index), false, false});
    }
    state_->Pump(here);
  }

 private:
  biz::ResultCode Check(const link::LoginRequest& request, link::Grant* grant) {
    std::lock_guard hold(state_->lock);
    const auto known = state_->accounts.find(request.user);
    if (known == state_->accounts.end()) {
      return {biz::kEngineUnknownUser, 0, L"there is no such user"};
    }
    if (const auto* password = std::get_if<link::Password>(&request.proof)) {
      if (password->text != known->second.password) {
        return {biz::kEngineWrongPassword, 0, L"the password is wrong"};
      }
    } else {
      const auto token = known->second.tokens.find(std::get<link::Token>(request.proof).text);
      if (token == known->second.tokens.end() ||
          token->second < base::Time::Now().ToMilliseconds()) {
        return {biz::kEngineTokenExpired, 0, L"the token is no good"};
      }
    }
    grant->user = request.user;
    grant->token = state_->MakeToken(request.user);
    grant->expires = known->second.tokens.at(grant->token);
    return {};
  }

  const std::shared_ptr<State> state_;
};

std::shared_ptr<link::ServerLink> FarServer::Link() { return std::make_shared<Door>(state_); }

std::pair<biz::ResultCode, link::Delivered> FarServer::State::Answer(const FarDevice& from,
                                                                     const link::Deliver& ask) {
  link::Message message = ask.message;
  message.from = from.user;
  if (message.cid.is_user() && !accounts.contains(message.cid.user)) {
    return {{biz::kEngineUnknownUser, 0, L"there is no such user"}, {}};
  }
  if (message.cid.is_tribe()) {
    const auto tribe = tribes.find(message.cid.tribe.id);
    if (tribe == tribes.end() || !tribe->second.members.contains(from.user)) {
      return {{biz::kEngineRefused, 0, L"not a member"}, {}};
    }
  }
  if (habits.takes) {
    taken.emplace_back(message, from.name);
    return {{}, {link::Step::kTaken, 0, {}}};
  }
  link::Message* kept = nullptr;
  Archived(message, from.name, &kept);
  if (!habits.late_times) return {{}, {link::Step::kArchived, kept->svrtime, kept->place}};
  untimed.emplace_back(*kept, from.name);
  return {{}, {link::Step::kArchived, 0, {}}};
}

Nothing FarServer::State::Answer(const FarDevice& from, const link::Withdraw& ask) {
  for (link::Message& message : archives[KeyOf(ask.cid, from.user)].messages) {
    if (message.msgid != ask.msgid || message.from != from.user) continue;
    if (std::exchange(message.withdrawn, true)) return {};
    if (habits.capabilities.withdrawal == link::Capabilities::Withdrawal::kErased) {
      message.body.clear();
    }
    for (const auto& user : Concerned(message)) {
      // What is still to be sent is sent without its text.
      for (FarEntry& waiting : accounts.at(user).stream) {
        auto* sent = std::get_if<link::Message>(&waiting.entry);
        if (sent && sent->msgid == message.msgid && sent->from == message.from) {
          *sent = SeenBy(message, user);
        }
      }
      Put(user, {link::Withdrawal{SeenBy(message, user).cid, message.from, message.msgid,
                                  message.msgtime, message.svrtime},
                 {},
                 {}});
    }
    return {};
  }
  return Refused(biz::kEngineNotFound, L"there is no such message");
}

Nothing FarServer::State::Answer(const FarDevice& from, const link::ReportRead& ask) {
  std::map<biz::IMUserID, link::PeerRead> told;
  for (link::Message& message : archives[KeyOf(ask.cid, from.user)].messages) {
    const bool named =
        std::find(ask.msgids.begin(), ask.msgids.end(), message.msgid) != ask.msgids.end();
    if (!named || message.from == from.user || std::exchange(message.read, true)) continue;
    link::PeerRead& read = told[message.from];
    read.cid = message.cid;
    read.reader = from.user;
    read.msgids.push_back(message.msgid);
  }
  for (auto& [user, read] : told) Put(user, {std::move(read), {}, {}});
  return {};
}

Nothing FarServer::State::Answer(const FarDevice& from, const link::MarkRead& ask) {
  Put(from.user, {link::ReadElsewhere{ask.cid, ask.upto}, {}, from.name});
  return {};
}

Nothing FarServer::State::Answer(const FarDevice& from, const link::SendTyping& ask) {
  for (auto& [session, device] : devices) {
    const auto listener = device.listener.lock();
    if (device.user != ask.cid.user || !listener) continue;
    listener->OnTyping(biz::IMConversationID(from.user), ask.status);
  }
  return {};
}

std::pair<biz::ResultCode, link::History> FarServer::State::Answer(const FarDevice& from,
                                                                   const link::GetHistory& ask) {
  ++asked;
  const biz::IMRoamStatus& roaming = accounts.at(from.user).roaming;
  if (roaming.roamstatus == biz::kRoamingOff) {
    return {{biz::kEngineRefused, 0, L"roaming is off"}, {}};
  }
  const auto& all = archives[KeyOf(ask.cid, from.user)].messages;
  std::size_t first = 0;  // what may be seen at all
  std::size_t last = all.size();
  if (ask.cid.is_tribe()) {
    const auto& members = tribes.at(ask.cid.tribe.id).members;
    if (!members.contains(from.user)) return {{biz::kEngineRefused, 0, L"not a member"}, {}};
    first = members.at(from.user);
  }
  while (first < last && all[first].svrtime < std::max(roaming.opentime, ask.btime)) ++first;
  while (ask.etime != 0 && last > first && all[last - 1].svrtime > ask.etime) --last;
  const std::size_t count =
      std::min(kMostHistory, static_cast<std::size_t>(std::max(ask.count, 1)));
  const bool older = ask.older || (ask.place.empty() && ask.time == 0);
  std::size_t at = older ? last : first;
  if (!ask.place.empty()) {
    std::uint64_t index = 0;
    base::StringToUint64(std::string_view(ask.place).substr(1), &index);
    at = static_cast<std::size_t>(index) - (older ? 1 : 0);
  } else if (ask.time != 0) {
    while (older && at > first && all[at - 1].svrtime > ask.time) --at;
    while (!older && at < last && all[at].svrtime < ask.time) ++at;
  }
  at = std::clamp(at, first, last);
  const std::size_t begin = older ? at - std::min(count, at - first) : at;
  const std::size_t end = older ? at : std::min(at + count, last);
  link::History history;
  for (std::size_t i = begin; i < end; ++i) history.msgs.push_back(SeenBy(all[i], from.user));
  if (older ? begin > first : end < last) {
    history.next = "p" + std::to_string(older ? begin + 1 : end);
  }
  return {{}, std::move(history)};
}

std::pair<biz::ResultCode, biz::IMRoamStatus> FarServer::State::Answer(const FarDevice& from,
                                                                       const link::GetRoaming&) {
  return {{}, accounts.at(from.user).roaming};
}

Nothing FarServer::State::Answer(const FarDevice& from, const link::SetRoaming& ask) {
  auto& roaming = accounts.at(from.user).roaming;
  if (ask.status == biz::kRoamingOn && roaming.roamstatus != biz::kRoamingOn) {
    roaming.opentime = Now();
  }
  roaming.roamstatus = ask.status;
  return {};
}

std::pair<biz::ResultCode, link::Uploaded> FarServer::State::Answer(const FarDevice&,
                                                                    const link::Upload& ask) {
  std::ifstream in(ask.from, std::ios::binary);
  std::string content{std::istreambuf_iterator<char>(in), {}};
  if (content.size() != ask.file.size) return {{biz::kEngineRefused, 0, L"another size"}, {}};
  ask.progress(content.size());
  const std::string address = "far://" + std::to_string(++last_number);
  files[address] = std::move(content);
  return {{}, {address}};
}

Nothing FarServer::State::Answer(const FarDevice&, const link::Download& ask) {
  const auto file = files.find(ask.file.address);
  if (file == files.end()) return Refused(biz::kEngineNotFound, L"there is no such file");
  std::ofstream(ask.to, std::ios::binary) << file->second;
  ask.progress(file->second.size());
  return {};
}

}  // namespace imsdk::test
