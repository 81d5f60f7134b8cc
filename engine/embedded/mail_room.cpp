#include "embedded/mail_room.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>
#include <vector>

#include "kexbase/callback.h"

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kEntriesInBatch = 100;
constexpr std::size_t kBytesInBatch = 4 * 1024 * 1024;
// A client that does not acknowledge gets no more than this many batches ahead.
constexpr std::size_t kOpenBatches = 4;
// An acknowledgement that is lost costs a message sent twice, which clients recognise. So it need
// not have a commit of its own.
constexpr std::chrono::milliseconds kAcknowledgeDelay{100};

biz::ResultCode Failure(biz::EngineCode code, const wchar_t* text) { return {code, 0, text}; }

biz::ResultCode SessionOver() { return Failure(biz::kEngineNotLoggedIn, L"the session is over"); }

}  // namespace

MailRoom::MailRoom(ServerStore& store, PostDesk& desk, sqlite::GroupCommit& commit,
                   std::shared_ptr<base::TaskRunner> here)
    : store_(store), desk_(desk), commit_(commit), here_(std::move(here)) {}

std::int64_t MailRoom::Open(const Caller& caller, std::int64_t acknowledged,
                            std::weak_ptr<link::SessionListener> listener) {
  const std::int64_t newest = store_.mail().NewestFor(caller.account, caller.device);
  const std::int64_t session = ++last_session_;
  clients_[session] = {caller, std::move(listener), newest, acknowledged, {}, {}};
  by_account_.emplace(caller.account, session);
  PushSoon(caller.account);
  return session;
}

void MailRoom::Change(std::int64_t session, Work work, Done done) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) return done(SessionOver(), {});
  Change(client->second.who, std::move(work), std::move(done));
}

void MailRoom::Change(const Caller& caller, Work work, Done done) {
  const auto outcome = std::make_shared<Outcome>();
  commit_.Add([this, caller, outcome,
               work = std::move(work)](sqlite::Database&) { *outcome = work(desk_, caller); },
              [this, outcome, done = std::move(done)](const biz::ResultCode& stored) {
                if (!stored.ok()) return done(stored, {});
                done(outcome->result, *outcome);
                for (const std::int64_t account : outcome->push) PushSoon(account);
              });
}

void MailRoom::Signal(std::int64_t session, const biz::IMUserID& peer, std::int32_t status) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) return;
  const biz::IMUserID& from = client->second.who.user;
  for (const auto& [number, other] : clients_) {
    if (!(other.who.user == peer) || number == session) continue;
    if (const auto listener = other.listener.lock()) listener->OnSignal(from, status);
  }
}

void MailRoom::GetHistory(std::int64_t session, const link::HistoryRequest& request,
                          link::HistoryCallback done) {
  commit_.Flush();
  const auto client = clients_.find(session);
  if (client == clients_.end()) return done(SessionOver(), {});
  client->second.asked.emplace_back(request, std::move(done));
  PushTo(client->second);
}

void MailRoom::AnswerAsked(Client& client) {
  for (const auto& [request, done] : std::exchange(client.asked, {})) {
    biz::ResultCode refused;
    link::History history;
    const biz::ResultCode read = sqlite::Guarded([&, &wanted = request] {
      const auto self = store_.FindAccount(client.who.user);
      if (!self || self->roaming.roamstatus != biz::kRoamingOn) {
        refused = Failure(biz::kEngineRefused, L"the account's roaming is off");
      } else if (const auto peer = store_.FindAccount(wanted.peer)) {
        history = store_.mail().History(self->id, peer->id, wanted, self->roaming.opentime);
      }
    });
    done(read.ok() ? refused : read, history);
  }
}

void MailRoom::GetRoaming(std::int64_t session, const link::RoamingCallback& done) {
  commit_.Flush();
  const auto client = clients_.find(session);
  if (client == clients_.end()) return done(SessionOver(), {});
  biz::IMRoamStatus roaming;
  const biz::ResultCode read = sqlite::Guarded([&] {
    if (const auto self = store_.FindAccount(client->second.who.user)) roaming = self->roaming;
  });
  done(read, roaming);
}

void MailRoom::Acknowledge(std::int64_t session, std::int64_t upto) {
  const auto found = clients_.find(session);
  if (found == clients_.end()) return;
  Client& client = found->second;
  upto = std::min(upto, client.pushed);
  while (!client.open.empty() && client.open.front() <= upto) client.open.pop_front();
  if (acknowledged_.empty()) {
    here_->PostDelayedTask(FROM_HERE,
                           base::BindWeak(weak_from_this(), &MailRoom::StoreAcknowledged),
                           kAcknowledgeDelay);
  }
  std::int64_t& known = acknowledged_[client.who.device];
  known = std::max(known, upto);
  PushTo(client);
}

void MailRoom::StoreAcknowledged() {
  for (const auto& [device, position] : std::exchange(acknowledged_, {})) {
    // When the disk refuses it, the messages are sent again one day and recognised.
    commit_.Add([this, device = device, position = position](
                    sqlite::Database&) { store_.SetAcknowledged(device, position); },
                [](const biz::ResultCode&) {});
  }
}

bool MailRoom::Close(std::int64_t session) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) return false;
  by_account_.erase({client->second.who.account, session});
  clients_.erase(client);
  return true;
}

void MailRoom::CloseAll() {
  StoreAcknowledged();
  by_account_.clear();
  for (const auto& [session, client] : std::exchange(clients_, {})) {
    if (const auto listener = client.listener.lock()) {
      listener->OnEnded(Failure(biz::kEngineNoLink, L"the server stops"));
    }
  }
}

void MailRoom::PushSoon(std::int64_t account) {
  if (!push_soon_.insert(account).second) return;
  here_->PostTask(FROM_HERE, base::BindWeak(weak_from_this(), [account](MailRoom& room) {
                    room.push_soon_.erase(account);
                    room.Push(account);
                  }));
}

void MailRoom::Push(std::int64_t account) {
  for (auto entry = by_account_.lower_bound({account, 0});
       entry != by_account_.end() && entry->first == account; ++entry) {
    PushTo(clients_.at(entry->second));
  }
}

void MailRoom::PushTo(Client& client) {
  const auto listener = client.listener.lock();
  if (!listener) return;
  while (client.open.size() < kOpenBatches) {
    std::vector<StoredEntry> found;
    // A store that cannot be read now is asked again at the next message or acknowledgement.
    const biz::ResultCode read = sqlite::Guarded([&] {
      found = store_.mail().EntriesFor(client.who.account, client.who.device, client.pushed,
                                       kEntriesInBatch, kBytesInBatch);
    });
    if (!read.ok()) return;
    if (found.empty()) return AnswerAsked(client);
    // A batch is offline as a whole or not at all.
    const bool offline = found.front().position <= client.began;
    const auto end = std::find_if(found.begin(), found.end(), [&](const StoredEntry& entry) {
      return (entry.position <= client.began) != offline;
    });
    link::Batch batch;
    batch.after = client.pushed;
    batch.upto = std::prev(end)->position;
    batch.offline = offline;
    batch.more = offline && batch.upto < client.began;
    for (auto entry = found.begin(); entry != end; ++entry) {
      batch.entries.push_back(std::move(entry->entry));
    }
    client.pushed = batch.upto;
    client.open.push_back(batch.upto);
    listener->OnBatch(std::move(batch));
  }
}

}  // namespace imsdk::embedded
