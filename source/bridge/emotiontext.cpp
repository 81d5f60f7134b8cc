#include "source/bridge/emotiontext.h"

#include "kexbase/strings.h"
#include "kexnet/escape.h"

namespace imsdk::bridge {
namespace {

constexpr std::wstring_view kOpening = L"/:";

std::wstring Escape(std::wstring_view text) {
  return base::UTF8ToWide(net::EscapeQueryParamValue(base::WideToUTF8(text), false));
}

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

std::wstring EmotionToken(const client::IMEmotion& emotion) {
  return L"pic:imemotion|ID?filepath=" + Escape(emotion.path) + L"&shortcut=" +
         Escape(emotion.shortcut);
}

std::wstring TextToEmotion(std::wstring_view text, const std::vector<client::IMEmotion>& emotions) {
  std::wstring converted;
  std::size_t plain = 0;  // where the text begins that is not written yet
  for (std::size_t at = text.find(kOpening); at != text.npos; at = text.find(kOpening, at)) {
    const client::IMEmotion* emotion = LongestAt(text.substr(at), emotions);
    if (!emotion) {
      at += kOpening.size();
      continue;
    }
    converted += text.substr(plain, at - plain);
    converted += EmotionToken(*emotion);
    at += emotion->shortcut.size();
    plain = at;
  }
  converted += text.substr(plain);
  return converted;
}

}  // namespace imsdk::bridge
