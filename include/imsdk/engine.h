// Starts the embedded messaging engine. Included by the host only; everybody else finds the
// engine's services in the component registry.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "imsdk/biz/user_id.h"
#include "kexbase/file_path.h"

namespace imsdk {

struct EngineOptions {
  base::FilePath data;  // folder of all stores and files; made when missing
  bool demo = false;    // fill an empty data folder with the demo set
  std::int64_t token_life_ms = 14LL * 24 * 3600 * 1000;
  std::int64_t withdraw_limit_ms = 2LL * 60 * 1000;  // how long a message may be taken back
  // Folders whose files pages may send by their path, besides the data folder's own `files`. The
  // data folder's other parts stay out even when a folder here has it inside.
  std::vector<base::FilePath> send_from;
};

// What a virtual user sends.
enum class VirtualKind : std::int32_t { kSystem = 1, kSubscription = 2 };

// The running engine. Destroying it logs every account out, ends all engine threads and takes the
// services out of the registry. Not thread-safe.
class Engine {
 public:
  virtual ~Engine() = default;
  // Makes an account on the embedded server. False when it exists or a part is empty.
  virtual bool CreateAccount(const biz::IMUserID& user, const std::wstring& password) = 0;
  // A fresh login token, for a host that answers for its own user. Empty for an unknown account.
  virtual std::wstring IssueToken(const biz::IMUserID& user) = 0;
  // Sends a text from the virtual user `from`, who is made when it is new, to an account. False
  // when `from` is an account or a virtual user of the other kind, `to` is no account, the text is
  // empty or over the engine's size limit, or the server's store fails.
  virtual bool Publish(VirtualKind kind, const biz::IMUserID& from, const biz::IMUserID& to,
                       const std::wstring& body) = 0;
};

// Opens or makes the stores under `options.data` and registers `biz::IIMAccountMgr`. Null when
// that fails; `*error` then says why, UTF-8.
std::unique_ptr<Engine> StartEngine(const EngineOptions& options, std::string* error);

}  // namespace imsdk
