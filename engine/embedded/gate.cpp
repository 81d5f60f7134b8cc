#include "embedded/gate.h"

#include <chrono>
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

std::int64_t Now() { return base::Time::Now().ToMilliseconds(); }

// What the contract's defaults say.
link::Capabilities Abilities() { return {}; }

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
  if (!found || found->is_virtual()) return done(UnknownHere(), {});
  Verify(request, *found, done);
}

void Gate::Verify(const link::LoginRequest& request, const StoredAccount& account,
                  const link::LoginCallback& done) {
  if (!attempts_.Add({account.id, request.user, account.password_hash,
                      std::get<link::Password>(request.proof).text, done})) {
    return done(Failure(biz::kEngineBusy, L"too many logins of this account are under way"), {});
  }
  CheckNext();
}

void Gate::CheckNext() {
  if (under_way_) return;
  if (stops_) {
    for (const Attempts::Attempt& attempt : attempts_.TakeAll()) attempt.done(ServerStops(), {});
    return;
  }
  const auto now = Attempts::Clock::now();
  under_way_ = attempts_.Take(now);
  if (!under_way_) {
    const auto next = attempts_.Next();
    if (!next) return;
    here_->PostDelayedTask(FROM_HERE, base::BindWeak(weak_from_this(), &Gate::CheckNext),
                           std::chrono::ceil<std::chrono::milliseconds>(*next - now));
    return;
  }
  auto checked = base::BindWeak(weak_from_this(), &Gate::Checked);
  hashing_.task_runner()->PostTask(
      FROM_HERE, [here = here_, hash = under_way_->hash, password = under_way_->password,
                  checked = std::move(checked)] {
        const bool good = VerifyPassword(hash, base::WideToUTF8(password));
        here->PostTask(FROM_HERE, [checked, good] { checked(good); });
      });
}

void Gate::Checked(bool good) {
  const Attempts::Attempt attempt = *std::exchange(under_way_, std::nullopt);
  attempts_.Note(attempt.account, good, Attempts::Clock::now());
  if (good) {
    Give(attempt.user, attempt.account, attempt.done);
  } else {
    attempt.done(Failure(biz::kEngineWrongPassword, L"the password is wrong"), {});
  }
  CheckNext();
}

void Gate::RefuseAll() {
  stops_ = true;
  // It came too late to be begun.
  if (under_way_) std::exchange(under_way_, std::nullopt)->done(ServerStops(), {});
  CheckNext();
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

biz::ResultCode Gate::IssueToken(const biz::IMUserID& user, std::wstring* token) {
  const auto account = store_.accounts().Find(user);
  if (!account || account->is_virtual()) return UnknownHere();
  const std::string fresh = NewToken();
  sqlite::Transaction transaction(store_.database());
  store_.accounts().AddToken(account->id, HashToken(fresh), Now() + token_life_ms_, Now());
  transaction.Commit();
  *token = base::UTF8ToWide(fresh);
  return {};
}

biz::ResultCode Gate::UnknownHere() const {
  if (!store_.HasLost()) return UnknownUser();
  return Failure(biz::kEngineDamaged,
                 L"there is no such user any more: the server's store was damaged or missing");
}

void Gate::Connect(const link::ConnectRequest& request, const link::ConnectCallback& done) {
  room_.StoreAcknowledged();
  commit_.Flush();
  StoredAccount account;
  biz::ResultCode result = CheckToken(request.user, request.token, &account);
  Position start = 0;
  if (result.ok()) result = FindStart(request, account, &start);
  if (!result.ok()) return done(result, {});
  link::Connected connected{nullptr, Abilities()};
  result = sqlite::Guarded([&] {
    const Caller caller{request.user, account.id,
                        store_.accounts().Device(account.id, request.device)};
    connected.session = std::make_shared<EmbeddedSession>(
        room_.weak_from_this(), here_,
        room_.Open(caller, {start, request.position.empty(), request.restore}, request.listener));
  });
  if (result.ok() && store_.loss()) {
    result = {biz::kEngineOk, biz::kEngineDamaged,
              base::UTF8ToWide(store_.loss()->Text("the server's store"))};
  }
  // What a device names it has in its store, also when the acknowledgement was lost.
  if (result.ok() && !request.position.empty()) room_.NoteAcknowledged(account.id, start);
  done(result, connected);
}

biz::ResultCode Gate::FindStart(const link::ConnectRequest& request, const StoredAccount& account,
                                Position* start) {
  *start = request.restore ? 0 : account.acknowledged;
  if (request.position.empty()) return {};
  const auto given = store_.KnownPosition(request.position);
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
  if (!found) return UnknownHere();
  if (!good) {
    return Failure(biz::kEngineTokenExpired, L"the token is over or was never given");
  }
  *account = std::move(*found);
  return {};
}

}  // namespace imsdk::embedded
