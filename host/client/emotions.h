// The emotions that come with the pages.
#pragma once

#include <filesystem>
#include <vector>

#include "imsdk/client/emotion_list.h"

namespace imsdk::host {

// Reads "emotions/list.json" of the pages' folder once: {"shortcut","file"} for each emotion, the
// files beside the list. No list, no emotions.
class Emotions final : public RefPtrCounted<client::IEmotionListService> {
 public:
  explicit Emotions(const std::filesystem::path& web);
  std::vector<client::IMEmotion> GetEmotions() override { return emotions_; }

 private:
  std::vector<client::IMEmotion> emotions_;
};

}  // namespace imsdk::host
