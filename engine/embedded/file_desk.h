// Files on the embedded server: who brought what, and who may fetch it.
#pragma once

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A desk; see `PostDesk`. The contents are `FileRoom`'s.
class FileDesk {
 public:
  explicit FileDesk(ServerStore& store) : store_(store) {}

  // Asked once the content is there.
  Outcome<link::Uploaded> Answer(const Caller& caller, const link::Upload& request);
  // Asked before the content is handed out.
  Outcome<link::Nothing> Answer(const Caller& caller, const link::Download& request);

 private:
  ServerStore& store_;
};

}  // namespace imsdk::embedded
