#include "embedded/gate.h"

#include <optional>
#include <stdexcept>
#include <utility>

#include "embedded/credentials.h"
#include "embedded/embedded_session.h"
#include "kexbase/callback.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::embedded {

namespace {

// Each waiting login takes a tenth of a second of hashing; a longer queue helps nobody.
constexpr int kMostHashesWaiting = 64;

std::int64_t Now() { return base::Time::Now().ToMilliseconds(); }

// What the contract's defaults say, but for these.
link::Capabilities Abilities() {
  link::Capabilities abilities;
  abilities.join_approval = false;
  abilities.resumable_transfer = false;  // nothing breaks on the way within a process
  return abilities;
}

}  // namespace

Gate::Gate(ServerStore& store, sqlite::GroupCommit& commit, MailRoom& room,
           std::shared_ptr<base::TaskRunner> here, std::int64_t token_life_ms)
    : store_(store),
      commit_(commit),
      room_(room),
      here_(std::move(here)),
      token_life_ms_(token_life_ms),
      hashing_("ImServerHash") {
  if (!hashing_.Start()) throw std::runtime_error("the system gives no threads");
}

void Gate::Login(const link::LoginRequest& request, const link::LoginCallback& done) {
  StoredAccount account;
  if (const auto* token = std::get_if<link::Token>(&request.proof)) {
    const biz::ResultCode checked = CheckToken(request.user, token->text, &account);
    return checked.ok() ? Give(request.user, account.id, done) : done(checked, {});
  }
  std::optional<StoredAccount> found;
  const biz::ResultCode read =
      sqlite::Guarded([&] { found = store_.accounts().Find(request.user); });
  if (!read.ok()) return done(read, {});
  if (!found || found->is_virtual()) return done(UnknownUser(), {});
  Verify(request, *found, done);
}

void Gate::Verify(const link::LoginRequest& request, const StoredAccount& account,
                  const link::LoginCallback& done) {
  if (hashes_waiting_ >= kMostHashesWaiting) {
    return done(Failure(biz::kEngineBusy, L"too many logins are under way"), {});
  }
  ++hashes_waiting_;
  auto answer = base::BindWeak(
      weak_from_this(), [user = request.user, id = account.id, done](Gate& gate, bool good) {
        if (!good) return done(Failure(biz::kEngineWrongPassword, L"the password is wrong"), {});
        gate.Give(user, id, done);
      });
  const bool posted = hashing_.task_runner()->PostTask(
      FROM_HERE, [this, hash = account.password_hash, answer = std::move(answer),
                  password = base::WideToUTF8(std::get<link::Password>(request.proof).text)] {
        const bool good = VerifyPassword(hash, password);
        --hashes_waiting_;
        here_->PostTask(FROM_HERE, [answer, good] { answer(good); });
      });
  if (!posted) done(ServerStops(), {});
}

void Gate::Give(const biz::IMUserID& user, std::int64_t account, const link::LoginCallback& done) {
  const std::string token = NewToken();
  const link::Grant grant{user, base::UTF8ToWide(token), Now() + token_life_ms_};
  commit_.Add([this, account, hash = HashToken(token), expires = grant.expires](
                  sqlite::Database&) { store_.accounts().AddToken(account, hash, expires, Now()); },
              [grant, done](const biz::ResultCode& stored) {
                done(stored, stored.ok() ? grant : link::Grant{});
              });
}

std::wstring Gate::IssueToken(const biz::IMUserID& user) {
  const auto account = store_.accounts().Find(user);
  if (!account || account->is_virtual()) return {};
  const std::string token = NewToken();
  store_.accounts().AddToken(account->id, HashToken(token), Now() + token_life_ms_, Now());
  return base::UTF8ToWide(token);
}

void Gate::Connect(const link::ConnectRequest& request, const link::ConnectCallback& done) {
  room_.StoreAcknowledged();
  commit_.Flush();
  StoredAccount account;
  biz::ResultCode result = CheckToken(request.user, request.token, &account);
  Position start = 0;
  if (result.ok()) result = FindStart(request.position, account, &start);
  if (!result.ok()) return done(result, {});
  link::Connected connected{nullptr, Abilities()};
  result = sqlite::Guarded([&] {
    const Caller caller{request.user, account.id,
                        store_.accounts().Device(account.id, request.device)};
    connected.session = std::make_shared<EmbeddedSession>(
        room_.weak_from_this(), here_,
        room_.Open(caller, start, request.position.empty(), request.listener));
  });
  // What a device names it has in its store, also when the acknowledgement was lost.
  if (result.ok() && !request.position.empty()) room_.NoteAcknowledged(account.id, start);
  done(result, connected);
}

biz::ResultCode Gate::FindStart(const std::string& position, const StoredAccount& account,
                                Position* start) {
  *start = account.acknowledged;
  if (position.empty()) return {};
  const auto given = ParsePosition(position);
  if (!given || *given > store_.mail().newest()) {
    return Failure(biz::kEnginePositionLost, L"the server does not know this position");
  }
  *start = *given;
  return {};
}

biz::ResultCode Gate::CheckToken(const biz::IMUserID& user, const std::wstring& token,
                                 StoredAccount* account) {
  std::optional<StoredAccount> found;
  bool good = false;
  const biz::ResultCode read = sqlite::Guarded([&] {
    found = store_.accounts().Find(user);
    good =
        found && store_.accounts().HasToken(found->id, HashToken(base::WideToUTF8(token)), Now());
  });
  if (!read.ok()) return read;
  if (!found) return UnknownUser();
  if (!good) {
    return Failure(biz::kEngineTokenExpired, L"the token is over or was never given");
  }
  *account = std::move(*found);
  return {};
}

}  // namespace imsdk::embedded
