#include "embedded/embedded_server.h"

#include <future>
#include <stdexcept>
#include <utility>

#include "embedded/embedded_session.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::embedded {

namespace {

// Each waiting login takes a tenth of a second of hashing; a longer queue helps nobody.
constexpr int kMostHashesWaiting = 64;

std::int64_t Now() { return base::Time::Now().ToMilliseconds(); }

biz::ResultCode UnknownUser() { return {biz::kEngineUnknownUser, 0, L"there is no such user"}; }

}  // namespace

EmbeddedServer::EmbeddedServer(const ServerOptions& options)
    : options_(options),
      store_(std::make_unique<ServerStore>(options.file)),
      desk_(*store_, options.withdraw_limit),
      store_thread_("ImServerStore"),
      hash_thread_("ImServerHash"),
      commit_([this]() -> sqlite::Database& { return store_->database(); },
              [this] { OnStore([this] { commit_.Flush(); }); }) {
  if (!InitCredentials()) throw std::runtime_error("the system gives no random numbers");
  room_ = std::make_shared<MailRoom>(*store_, desk_, commit_, store_thread_.task_runner());
  if (!store_thread_.Start() || !hash_thread_.Start()) {
    throw std::runtime_error("the system gives no threads");
  }
}

EmbeddedServer::~EmbeddedServer() { Stop(); }

void EmbeddedServer::Stop() {
  hash_thread_.Stop();
  OnStore([this] {
    room_->CloseAll();
    commit_.Flush();
  });
  store_thread_.Stop();
  room_.reset();
  store_.reset();
}

void EmbeddedServer::LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                                     link::GrantCallback done) {
  OnStore([this, user, password = base::WideToUTF8(password), done = std::move(done)] {
    std::optional<StoredAccount> account;
    const biz::ResultCode read = sqlite::Guarded([&] { account = store_->FindAccount(user); });
    if (!read.ok()) return done(read, {});
    if (!account || account->is_virtual()) return done(UnknownUser(), {});
    Verify(user, *account, password, done);
  });
}

void EmbeddedServer::Verify(const biz::IMUserID& user, const StoredAccount& account,
                            std::string password, link::GrantCallback done) {
  if (hashes_waiting_ >= kMostHashesWaiting) {
    return done({biz::kEngineBusy, 0, L"too many logins are under way"}, {});
  }
  ++hashes_waiting_;
  hash_thread_.task_runner()->PostTask(
      FROM_HERE,
      [this, user, account, password = std::move(password), done = std::move(done)]() mutable {
        const bool good = VerifyPassword(account.password_hash, password);
        --hashes_waiting_;
        OnStore([this, good, user, id = account.id, done = std::move(done)] {
          if (!good) return done({biz::kEngineWrongPassword, 0, L"the password is wrong"}, {});
          Give(user, id, done);
        });
      });
}

void EmbeddedServer::LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                                  link::GrantCallback done) {
  OnStore([this, user, token, done = std::move(done)] {
    StoredAccount account;
    const biz::ResultCode checked = CheckToken(user, token, &account);
    if (!checked.ok()) return done(checked, {});
    Give(user, account.id, done);
  });
}

void EmbeddedServer::Give(const biz::IMUserID& user, std::int64_t account,
                          link::GrantCallback done) {
  const std::string token = NewToken();
  const link::Grant grant{user, base::UTF8ToWide(token), Now() + options_.token_life_ms};
  commit_.Add([this, account, hash = HashToken(token), expires = grant.expires](
                  sqlite::Database&) { store_->AddToken(account, hash, expires, Now()); },
              [grant, done = std::move(done)](const biz::ResultCode& stored) {
                done(stored, stored.ok() ? grant : link::Grant{});
              });
}

void EmbeddedServer::Connect(const biz::IMUserID& user, const std::wstring& token,
                             const std::string& device,
                             std::weak_ptr<link::SessionListener> listener,
                             link::ConnectCallback done) {
  OnStore([this, user, token, device, listener = std::move(listener), done = std::move(done)] {
    room_->StoreAcknowledged();
    commit_.Flush();
    StoredAccount account;
    biz::ResultCode result = CheckToken(user, token, &account);
    StoredDevice known;
    std::shared_ptr<link::Session> session;
    if (result.ok()) {
      result = sqlite::Guarded([&] {
        known = store_->Device(account.id, device);
        session = std::make_shared<EmbeddedSession>(
            room_, store_thread_.task_runner(),
            room_->Open({user, account.id, known.id}, known.acknowledged, listener));
      });
    }
    done(result, session, known.acknowledged);
  });
}

biz::ResultCode EmbeddedServer::CheckToken(const biz::IMUserID& user, const std::wstring& token,
                                           StoredAccount* account) {
  std::optional<StoredAccount> found;
  bool good = false;
  const biz::ResultCode read = sqlite::Guarded([&] {
    found = store_->FindAccount(user);
    good = found && store_->HasToken(found->id, HashToken(base::WideToUTF8(token)), Now());
  });
  if (!read.ok()) return read;
  if (!found) return UnknownUser();
  if (!good) return {biz::kEngineTokenExpired, 0, L"the token is over or was never given"};
  *account = std::move(*found);
  return {};
}

bool EmbeddedServer::HasAccounts() {
  bool any = false;
  DoOnStore([&] { any = store_->HasAccounts(); });
  return any;
}

bool EmbeddedServer::CreateAccount(const biz::IMUserID& user, const std::wstring& password) {
  const std::string hash = HashPassword(base::WideToUTF8(password), options_.hash_cost);
  bool added = false;
  return !hash.empty() && DoOnStore([&] { added = store_->AddAccount(user, hash); }) && added;
}

std::wstring EmbeddedServer::IssueToken(const biz::IMUserID& user) {
  const std::string token = NewToken();
  bool known = false;
  const bool stored = DoOnStore([&] {
    const auto account = store_->FindAccount(user);
    if (!account || account->is_virtual()) return;
    store_->AddToken(account->id, HashToken(token), Now() + options_.token_life_ms, Now());
    known = true;
  });
  return stored && known ? base::UTF8ToWide(token) : std::wstring();
}

bool EmbeddedServer::Publish(const link::Message& message) {
  std::promise<bool> answer;
  const bool posted = OnStore([&] {
    room_->Change(
        Caller{}, [message](PostDesk& desk, const Caller&) { return desk.Publish(message); },
        [&](const biz::ResultCode& result, const Outcome&) { answer.set_value(result.ok()); });
    commit_.Flush();
  });
  return posted && answer.get_future().get();
}

bool EmbeddedServer::Seed(const std::vector<biz::IMUserID>& users, const std::wstring& password,
                          const std::vector<link::Message>& messages) {
  std::vector<std::string> hashes;
  for (std::size_t i = 0; i < users.size(); ++i) {
    hashes.push_back(HashPassword(base::WideToUTF8(password), options_.hash_cost));
    if (hashes.back().empty()) return false;
  }
  return DoOnStore([&] {
    sqlite::Transaction transaction(store_->database());
    for (std::size_t i = 0; i < users.size(); ++i) store_->AddAccount(users[i], hashes[i]);
    for (const link::Message& message : messages) {
      if (message.channel != link::Channel::kSingleChat) {
        store_->AddAccount(message.from, {}, message.channel);
      }
      const auto sender = store_->FindAccount(message.from);
      const auto receiver = store_->FindAccount(message.to);
      if (!sender || !receiver) throw sqlite::Error("a message names an unknown account");
      const std::int64_t row = store_->mail().Add(sender->id, receiver->id, message);
      store_->mail().AddEntry({receiver->id, EntryKind::kMessage, row, sender->id, {}, 0});
    }
    store_->SetAllAcknowledged();
    transaction.Commit();
  });
}

bool EmbeddedServer::OnStore(const std::function<void()>& task) {
  return store_thread_.task_runner()->PostTask(FROM_HERE, task);
}

bool EmbeddedServer::DoOnStore(const std::function<void()>& work) {
  std::promise<bool> answer;
  const bool posted = OnStore([&] {
    commit_.Flush();
    answer.set_value(sqlite::Guarded(work).ok());
  });
  return posted && answer.get_future().get();
}

}  // namespace imsdk::embedded
