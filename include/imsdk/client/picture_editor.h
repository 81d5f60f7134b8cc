// The client's picture editor, implemented by the host.
#pragma once

#include <functional>
#include <string>

#include "imsdk/biz/user_id.h"
#include "kexbase/file_path.h"
#include "kexcom/ref_counted.h"

namespace imsdk::client {

// The outcome and the edited picture's file. Called once, on any thread and also before the
// operation returns.
using IMEditCallback = std::function<void(const biz::ResultCode&, const base::FilePath& edited)>;

// Edits pictures. Found in the component registry; without it no picture can be edited. Any thread;
// must not wait.
class IPictureEditorService : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "imsdk.client.IPictureEditorService";

  // Edits the picture `file` into a file of its own; `file` stays as it is. `md5` is the digest
  // that the page knows the picture by, in hexadecimal digits; when it is not empty and does not
  // fit the file, nothing is edited.
  virtual void EditImage(const base::FilePath& file, const std::wstring& md5,
                         IMEditCallback done) = 0;

 protected:
  ~IPictureEditorService() = default;
};

}  // namespace imsdk::client
