// A messaging server inside the process, for hosts that have no other. Included by the host only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "imsdk/biz/user_id.h"
#include "kexbase/file_path.h"

namespace imsdk {

namespace link {
class ServerLink;
}

struct EmbeddedServerOptions {
  base::FilePath data;  // the server keeps its own in `server` below it; made when missing
  std::int64_t token_life_ms = 14LL * 24 * 3600 * 1000;
  std::int64_t withdraw_limit_ms = 2LL * 60 * 1000;  // how long a message may be taken back
  // How long files can be fetched after they were sent, 0: without an end; how large one may be;
  // how much of one account the server takes altogether.
  std::int64_t file_life_ms = 365LL * 24 * 3600 * 1000;
  std::int64_t largest_file = 4LL << 30;  // bytes
  std::int64_t file_quota = 100LL << 30;  // bytes
  // Is told, UTF-8, what a person should know, as `EngineOptions::report`. Called by
  // `StartEmbeddedServer` alone. While this server runs, logins have `biz::kEngineDamaged` as their
  // subcode then; those of accounts that are lost fail with it.
  std::function<void(const std::string&)> report{};
};

// What a virtual user sends.
enum class VirtualKind : std::int32_t { kSystem = 1, kSubscription = 2 };

// A new tribe.
struct NewTribe {
  biz::IMTribeID id;  // 0 lets the server choose
  std::wstring name;
  biz::IMUserID owner;
  std::vector<biz::IMUserID> members;  // besides the owner

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("name", &NewTribe::name, biz::kMaxTribeLetters),
                        biz::Inner("owner", &NewTribe::owner));
  }
};

// The running server. Its functions wait for the disk; they are not for the threads of its links'
// callbacks. Any thread otherwise. Destroying it ends every session; links that are still held
// answer nothing.
class EmbeddedServer {
 public:
  virtual ~EmbeddedServer() = default;
  // The way to it, for `EngineOptions`.
  virtual std::shared_ptr<link::ServerLink> Link() = 0;

  virtual bool HasAccounts() = 0;
  // False when the account exists or a part is empty.
  virtual bool CreateAccount(const biz::IMUserID& user, const std::wstring& password) = 0;
  // A fresh login token, for a host that answers for its own user: `kEngineUnknownUser`, or why the
  // server's store could not give one.
  virtual biz::ResultCode IssueToken(const biz::IMUserID& user, std::wstring* token) = 0;
  // Sends a text from the virtual user `from`, who is made when it is new, to an account. False
  // when `from` is an account or a virtual user of the other kind, `to` is no account, the text is
  // empty or over the server's size limit, or the server's store fails.
  virtual bool Publish(VirtualKind kind, const biz::IMUserID& from, const biz::IMUserID& to,
                       const std::wstring& body) = 0;
  // Makes a tribe. 0 when the identifier is taken, the owner or a member is no account, or the
  // server's store fails.
  virtual biz::IMTribeID CreateTribe(const NewTribe& tribe) = 0;
};

// Opens or makes the server's store. One that is damaged, empty or missing although the data folder
// remembers it is set aside, and what can be read is in the new one. Null when there is none to be
// had, for instance one that a newer program wrote; `*error` then says why, UTF-8.
std::unique_ptr<EmbeddedServer> StartEmbeddedServer(const EmbeddedServerOptions& options,
                                                    std::string* error);

}  // namespace imsdk
