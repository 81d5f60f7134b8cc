#include "embedded/mail_room.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>
#include <vector>

#include "kexbase/callback.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kMessagesInBatch = 100;
constexpr std::size_t kBytesInBatch = 4 * 1024 * 1024;
// A client that does not acknowledge gets no more than this many batches ahead.
constexpr std::size_t kOpenBatches = 4;
// An acknowledgement that is lost costs a message sent twice, which clients recognise. So it need
// not have a commit of its own.
constexpr std::chrono::milliseconds kAcknowledgeDelay{100};

biz::ResultCode Failure(biz::EngineCode code, const wchar_t* text) { return {code, 0, text}; }

}  // namespace

MailRoom::MailRoom(ServerStore& store, sqlite::GroupCommit& commit,
                   std::shared_ptr<base::TaskRunner> here)
    : store_(store), commit_(commit), here_(std::move(here)), last_time_(store.NewestTime()) {}

std::int64_t MailRoom::Open(const biz::IMUserID& user, const StoredAccount& account,
                            std::weak_ptr<link::SessionListener> listener) {
  const std::int64_t newest = store_.NewestFor(account.id);
  const std::int64_t session = ++last_session_;
  clients_[session] = {user, account.id, std::move(listener), newest, account.acknowledged, {}};
  by_account_.emplace(account.id, session);
  PushSoon(account.id);
  return session;
}

void MailRoom::Deliver(std::int64_t session, link::Message message, link::DeliverCallback done) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) {
    return done(Failure(biz::kEngineNotLoggedIn, L"the session is over"), 0);
  }
  if (base::WideToUTF8(message.body).size() > link::kMaxBodyBytes) {
    return done(Failure(biz::kEngineTooLarge, L"the message is too large"), 0);
  }

  struct Outcome {
    biz::ResultCode result;
    std::int64_t svrtime = 0;
    std::int64_t receiver = 0;  // 0: nothing to push
  };
  const auto outcome = std::make_shared<Outcome>();
  message.from = client->second.user;
  const std::int64_t sender = client->second.account;

  auto write = [this, sender, outcome, message = std::move(message)](sqlite::Database&) mutable {
    *outcome = {};
    if (const auto known = store_.FindMessage(sender, message.msgid)) {
      outcome->svrtime = *known;
      return;
    }
    const auto receiver = store_.FindAccount(message.to);
    if (!receiver) {
      outcome->result = Failure(biz::kEngineUnknownUser, L"there is no such user");
      return;
    }
    last_time_ = std::max(last_time_, base::Time::Now().ToMilliseconds());
    message.svrtime = last_time_;
    store_.AddMessage(sender, receiver->id, message);
    outcome->svrtime = message.svrtime;
    outcome->receiver = receiver->id;
  };
  auto after = [this, outcome, done = std::move(done)](const biz::ResultCode& stored) {
    if (!stored.ok()) return done(stored, 0);
    done(outcome->result, outcome->svrtime);
    if (outcome->receiver != 0) PushSoon(outcome->receiver);
  };
  commit_.Add(std::move(write), std::move(after));
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
  std::int64_t& known = acknowledged_[client.account];
  known = std::max(known, upto);
  PushTo(client);
}

void MailRoom::StoreAcknowledged() {
  for (const auto& [account, position] : std::exchange(acknowledged_, {})) {
    // When the disk refuses it, the messages are sent again one day and recognised.
    commit_.Add([this, account = account, position = position](
                    sqlite::Database&) { store_.SetAcknowledged(account, position); },
                [](const biz::ResultCode&) {});
  }
}

bool MailRoom::Close(std::int64_t session) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) return false;
  by_account_.erase({client->second.account, session});
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
    std::vector<StoredMessage> found;
    // A store that cannot be read now is asked again at the next message or acknowledgement.
    sqlite::Guarded([&] {
      found = store_.MessagesFor(client.account, client.pushed, kMessagesInBatch, kBytesInBatch);
    });
    if (found.empty()) return;
    // A batch is offline as a whole or not at all.
    const bool offline = found.front().position <= client.began;
    const auto end = std::find_if(found.begin(), found.end(), [&](const StoredMessage& message) {
      return (message.position <= client.began) != offline;
    });
    link::Batch batch;
    batch.after = client.pushed;
    batch.upto = std::prev(end)->position;
    batch.offline = offline;
    batch.more = offline && batch.upto < client.began;
    for (auto message = found.begin(); message != end; ++message) {
      batch.msgs.push_back(std::move(message->message));
    }
    client.pushed = batch.upto;
    client.open.push_back(batch.upto);
    listener->OnBatch(std::move(batch));
  }
}

}  // namespace imsdk::embedded
