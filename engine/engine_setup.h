// Starting the engine with parts exchanged. `StartEngine` uses the defaults.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "account/session/account_state.h"
#include "imsdk/engine.h"
#include "link/server_link.h"

namespace imsdk {

struct EngineSetup {
  EngineOptions options;
  account::Timeouts timeouts;
  // Puts something between the accounts and their server.
  std::function<std::shared_ptr<link::ServerLink>(std::shared_ptr<link::ServerLink>)> wrap_link;
  account::MessageIds::Clock clock;  // for message numbers and times; the system's when empty
};

std::unique_ptr<Engine> StartEngine(const EngineSetup& setup, std::string* error);

}  // namespace imsdk
