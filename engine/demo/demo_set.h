// The demo set: four accounts and some days of their chats.
#pragma once

#include "account/data_folder.h"
#include "embedded/embedded_server.h"

namespace imsdk::demo {

// Makes the accounts harbor, lighthouse, mariner and navigator (application key "cnbazaro",
// password "demo") on a server without accounts, and the history between the first three on the
// server and in their own stores. Throws `sqlite::Error` or `std::runtime_error`.
void Fill(const account::DataFolder& folder, embedded::EmbeddedServer& server);

}  // namespace imsdk::demo
