// Makes pictures ready for sending.
#pragma once

#include <atomic>
#include <filesystem>
#include <utility>

#include "imsdk/client/picture_editor.h"
#include "kexbase/thread.h"

namespace imsdk::host {

// The longer side of an edited picture, in pixels, at most.
inline constexpr unsigned kLongestSide = 2048;

// Scales a PNG down to `kLongestSide` and leaves out everything but its pixels: no texts, times or
// places. Takes and writes files under the folder "files" of the data folder only. One picture
// after another on a thread of its own; too many that wait are refused as busy.
class PictureEditor final : public RefPtrCounted<client::IPictureEditorService> {
 public:
  explicit PictureEditor(std::filesystem::path data) : data_(std::move(data)) { thread_.Start(); }

  // Gives up the picture that is edited and fails those that wait. Called once by the owner; what
  // is asked later fails too.
  void Stop();

  // A relative path starts at the data folder.
  void EditImage(const base::FilePath& file, const std::wstring& md5,
                 client::IMEditCallback done) override;

 private:
  const std::filesystem::path data_;
  std::atomic<bool> stopped_{false};
  std::atomic<int> waiting_{0};
  base::Thread thread_{"PictureEditor"};
};

}  // namespace imsdk::host
