// A past for a server that has none yet.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "embedded/server_store.h"
#include "embedded/tribe_desk.h"
#include "imsdk/embedded_server.h"
#include "link/message.h"

namespace imsdk::embedded {

// A message as its sender sees it, with the server's time. Its files have no address yet.
struct PastMessage {
  link::Message message;
  biz::IMCIDType kind = biz::kCIDUser;  // of its sender, who is made when it is virtual
};

// What a user is called.
struct PastProfile {
  biz::IMUserID user;
  biz::IMProfile profile;
};
// Contacts in one group of a list; in none when it has no name.
struct PastContacts {
  biz::IMUserID owner;
  std::wstring group;
  std::vector<biz::IMUserID> contacts;
};

struct Seeding {
  std::vector<biz::IMUserID> users{};
  std::wstring password{};  // empty: they log in by tokens only, and nothing is hashed
  std::vector<PastProfile> profiles{};
  std::vector<PastContacts> contacts{};
  std::vector<NewTribe> tribes{};
  std::vector<PastMessage> messages{};                   // by the server's time, oldest first
  std::map<std::string, std::filesystem::path> files{};  // contents by `link::File::name`
};

// Writes accounts, contacts, tribes and messages as delivered and acknowledged; returns the
// messages with what the server adds. Inside a transaction. Throws `sqlite::Error`.
std::vector<link::Message> WritePast(ServerStore& store, TribeDesk& tribes, const Seeding& seeding,
                                     const std::vector<std::string>& password_hashes);

}  // namespace imsdk::embedded
