// Makes pictures ready for sending.
#pragma once

#include <filesystem>

#include "imsdk/client/picture_editor.h"
#include "kexbase/task_runner.h"

namespace imsdk::host {

// The longer side of an edited picture, in pixels, at most.
inline constexpr unsigned kLongestSide = 2048;

// Scales a PNG down to `kLongestSide` and leaves out everything but its pixels: no texts, times or
// places. Takes and writes files under the folder "files" of the data folder only. Works on
// `runner`.
class PictureEditor final : public RefPtrCounted<client::IPictureEditorService> {
 public:
  PictureEditor(std::filesystem::path data, std::shared_ptr<base::TaskRunner> runner)
      : data_(std::move(data)), runner_(std::move(runner)) {}

  // A relative path starts at the data folder.
  void EditImage(const base::FilePath& file, const std::wstring& md5,
                 client::IMEditCallback done) override;

 private:
  const std::filesystem::path data_;
  const std::shared_ptr<base::TaskRunner> runner_;
};

}  // namespace imsdk::host
