#include "embedded/file_desk.h"

#include "embedded/file_room.h"

namespace imsdk::embedded {

Outcome<link::Uploaded> FileDesk::Answer(const Caller& caller, const link::Upload& request) {
  link::Uploaded uploaded{DigestOf(request.file)};
  store_.files().AddUpload(caller.account, uploaded.address);
  return uploaded;
}

Outcome<link::Nothing> FileDesk::Answer(const Caller& caller, const link::Download& request) {
  // To everybody else it is as if it were not there.
  if (!store_.files().WasSent(caller.account, request.file.address)) {
    return Failure(biz::kEngineNotFound, L"there is no such file");
  }
  return {};
}

}  // namespace imsdk::embedded
