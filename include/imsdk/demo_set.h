// The demo set: four accounts, a tribe and some days of their chats.
#pragma once

#include <string>

#include "imsdk/embedded_server.h"
#include "kexbase/file_path.h"

namespace imsdk {

// Whether the folder holds anything of the engine's or of its server's, whole or not; also when it
// cannot be read. Asked before either is started on it: they make what is missing.
bool HoldsMessages(const base::FilePath& data);

// Makes the accounts harbor, lighthouse, mariner and navigator (application key "cnbazaro",
// password "demo") and tribe 10001 on a server without accounts, and the history between the first
// three there and in their own stores under `data`. Before the engine is started on it; any one
// thread. Removes and replaces nothing: false when the folder holds accounts, sent files or a
// server that lost something, and when it fails otherwise; `*error` then says why, UTF-8.
bool FillDemoSet(const base::FilePath& data, EmbeddedServer& server, std::string* error);

}  // namespace imsdk
