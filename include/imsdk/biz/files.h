// The files that messages name.
#pragma once

#include <string>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/callback.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

// A file as the tokens of a message name it: relative to the data folder, with "/".
struct IMFileRequest {
  std::wstring path;

  static constexpr auto Bounds() {
    return Bounded(Letters("path", &IMFileRequest::path, kMaxPathLetters));
  }
};

// Brings files of messages to this machine. Found in the component registry. Any thread.
class IIMFileMgr : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "imsdk.biz.IIMFileMgr";

  // Good: the file lies under its path in the data folder. At once when it is there; otherwise it
  // is fetched from the server by the account whose file it is, once however many ask.
  // `kEngineNotFound` when no account that is logged in knows such a file.
  virtual void Fetch(const IMFileRequest& request, IMCallback<> done) = 0;

 protected:
  ~IIMFileMgr() = default;
};

}  // namespace imsdk::biz
