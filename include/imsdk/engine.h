// Starts the messaging engine: the accounts' client side. Included by the host only; everybody else
// finds the engine's services in the component registry.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kexbase/file_path.h"

namespace imsdk {

namespace link {
class ServerLink;
}

struct EngineOptions {
  base::FilePath data;  // folder of the accounts' stores and files; made when missing
  // Makes the way to the accounts' server. Called once, by `StartEngine`; may throw.
  std::function<std::shared_ptr<link::ServerLink>()> link;
  // Folders whose files pages may send by their path, besides the data folder's own `files`. The
  // data folder's other parts stay out even when a folder here has it inside.
  std::vector<base::FilePath> send_from;
  // Is told, UTF-8, what a person should know: that a store was found damaged, missing or behind
  // what it was, and where it was set aside. Any thread; may be empty. The login that opens such a
  // store succeeds with `biz::kEngineDamaged` as its subcode.
  std::function<void(const std::string&)> report{};
};

// The running engine. Destroying it logs every account out, ends all engine threads and takes the
// services out of the registry. Not thread-safe.
class Engine {
 public:
  virtual ~Engine() = default;
};

// Opens or makes what lies under `options.data` and registers `biz::IIMAccountMgr` and
// `biz::IIMFileMgr`. Null when that fails; `*error` then says why, UTF-8.
std::unique_ptr<Engine> StartEngine(const EngineOptions& options, std::string* error);

}  // namespace imsdk
