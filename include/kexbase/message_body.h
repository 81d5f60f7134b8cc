// Message bodies: text with pictures, emotions and files in it as tokens. This is the one place
// that makes and reads them; docs/message-bodies.md has their form, and the page client does the
// same.
//
// What a BodyWriter wrote is read as it was put in, whatever the text: a mark, U+200B, stands
// behind each token that does not end the body, and in text behind a "|" that could belong to a
// token. A reader drops one mark in these places.
//
// All functions: any thread; they throw for lack of memory only.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace base {

// Stands behind a token or a "|" and is no part of the text.
constexpr wchar_t kBodyMark = L'\x200B';

// One stretch of a body. All views point into the body.
struct BodyPart {
  enum Kind { kText, kPicture, kEmotion, kFile };
  Kind kind = kText;
  std::wstring_view source;  // the text as it was typed, or the whole token
  std::wstring_view path;    // of a token: the path of its file, escaped as it stands there
  std::wstring_view name;    // of a file
};

// Takes a body apart, in order; never fails, what is no token is text. Plain text may come in
// several parts one after the other. Takes time in proportion to the body, whatever stands in it.
std::vector<BodyPart> ReadBody(std::wstring_view body);
// A body that is gone before its parts are looked at.
template <std::same_as<std::wstring> Gone>
std::vector<BodyPart> ReadBody(Gone&& body) = delete;

// Puts a body together. One thread.
class BodyWriter {
 public:
  // Text as it was typed; what looks like a token in it stays text. Texts one after the other are
  // one text.
  void AddText(std::wstring_view text) { text_ += text; }
  // A token that one of the functions below made, or that was read.
  void AddToken(std::wstring_view token);
  // The parts of another body.
  void AddBody(std::wstring_view body);

  // The body; the writer is empty then.
  std::wstring Finish();

 private:
  void WriteText();

  std::wstring body_;
  std::wstring text_;  // that is not in the body yet
  bool after_token_ = false;
};

// Tokens. Paths, digests and shortcuts are given as they are, and escaped.

// "pic:impicture|MD5?filepath=PATH&fileMD5=MD5&filetype=TYPE"; an empty digest or type is left out.
std::wstring PictureToken(std::wstring_view path, std::wstring_view md5, std::wstring_view type);
// "pic:imemotion|ID?filepath=PATH&shortcut=SHORTCUT", with "ID" as it stands here.
std::wstring EmotionToken(std::wstring_view path, std::wstring_view shortcut);
// "file:NAME|filepath=PATH". In the name a "|", a control character and the ":" of a "file:" become
// "_", and what is beyond 512 characters is cut off.
std::wstring FileToken(std::wstring_view name, std::wstring_view path);

}  // namespace base
