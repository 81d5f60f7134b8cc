// Becoming a member of a tribe and being one no more, whatever the reason.
#pragma once

#include <cstdint>

#include "embedded/outcome.h"
#include "embedded/server_store.h"

namespace imsdk::embedded {

enum class Announce { kToAll, kToNobody };

// `account` becomes a member by `actor`'s doing, and what was open about its joining is decided so.
// The effort does not depend on the number of members. It is no member yet. May throw
// `sqlite::Error`, as the others.
void Enter(ServerStore& store, Effects& effects, StoredTribe& tribe, std::int64_t account,
           std::int64_t actor, Announce announce = Announce::kToAll);
// `account` is a member and not the owner. Kicked, unless it is the actor itself.
void Leave(ServerStore& store, Effects& effects, StoredTribe& tribe, std::int64_t account,
           std::int64_t actor);

}  // namespace imsdk::embedded
