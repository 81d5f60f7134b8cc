// The demo set: four accounts, a tribe and some days of their chats.
#pragma once

#include <string>

#include "imsdk/embedded_server.h"
#include "kexbase/file_path.h"

namespace imsdk {

// Makes the accounts harbor, lighthouse, mariner and navigator (application key "cnbazaro",
// password "demo") and tribe 10001 on a server without accounts, and the history between the first
// three there and in their own stores under `data`. Before the engine is started on it; any one
// thread. False when that fails; `*error` then says why, UTF-8.
bool FillDemoSet(const base::FilePath& data, EmbeddedServer& server, std::string* error);

}  // namespace imsdk
