#include "source/bridge/emotiontext.h"

#include "kexbase/message_body.h"

namespace imsdk::bridge {
namespace {

constexpr std::wstring_view kOpening = L"/:";

// The emotion whose shortcut is the longest one that `text` begins with, or null.
const client::IMEmotion* LongestAt(std::wstring_view text,
                                   const std::vector<client::IMEmotion>& emotions) {
  const client::IMEmotion* longest = nullptr;
  for (const client::IMEmotion& emotion : emotions) {
    if (emotion.shortcut.size() <= kOpening.size() || !text.starts_with(emotion.shortcut)) continue;
    if (!longest || emotion.shortcut.size() > longest->shortcut.size()) longest = &emotion;
  }
  return longest;
}

}  // namespace

std::wstring TextToEmotion(std::wstring_view text, const std::vector<client::IMEmotion>& emotions) {
  base::BodyWriter body;
  std::size_t plain = 0;  // where the text begins that is not written yet
  for (std::size_t at = text.find(kOpening); at != text.npos; at = text.find(kOpening, at)) {
    const client::IMEmotion* emotion = LongestAt(text.substr(at), emotions);
    if (!emotion) {
      at += kOpening.size();
      continue;
    }
    body.AddText(text.substr(plain, at - plain));
    body.AddToken(base::EmotionToken(emotion->path, emotion->shortcut));
    at += emotion->shortcut.size();
    plain = at;
  }
  body.AddText(text.substr(plain));
  return body.Finish();
}

}  // namespace imsdk::bridge
