#include "kexbase/message_body.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "kexbase/strings.h"
#include "kexnet/escape.h"

namespace base {

namespace {

constexpr std::wstring_view kPicture = L"pic:impicture";
constexpr std::wstring_view kEmotion = L"pic:imemotion";
constexpr std::wstring_view kFile = L"file:";
constexpr std::wstring_view kPath = L"filepath=";
constexpr std::wstring_view kMore[] = {L"&fileMD5=", L"&filetype=", L"&shortcut="};
constexpr std::size_t kLongestNameRead = 1024;
constexpr std::size_t kLongestNameMade = 512;

bool IsValueLetter(wchar_t c) {
  const bool letter_or_digit =
      (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || (c >= L'0' && c <= L'9');
  return letter_or_digit || std::wstring_view(L"-_.!~*'()%+").find(c) != std::wstring_view::npos;
}

bool IsControl(wchar_t c) { return c < L' '; }

bool EndsIdentifier(wchar_t c) {
  return c == L'?' || c == L'|' || c == L' ' || c == kBodyMark || IsControl(c);
}

// Where the escaped value that begins at `at` ends. Older writers put the next token right behind
// one, and the letters before its colon could belong to the value.
std::size_t ValueEnd(std::wstring_view body, std::size_t at) {
  std::size_t end = at;
  while (end < body.size() && IsValueLetter(body[end])) ++end;
  constexpr std::size_t kBeforeColon = 3;  // "pic"
  if (end - at < kBeforeColon) return end;
  const std::wstring_view next = body.substr(end - kBeforeColon);
  const bool token = (next.starts_with(kPicture) || next.starts_with(kEmotion)) &&
                     next.size() > kPicture.size() && next[kPicture.size()] == L'|';
  return token ? end - kBeforeColon : end;
}

// The token around the bar at `bar` that begins at `first` or later.
std::optional<BodyPart> FileAround(std::wstring_view body, std::size_t first, std::size_t bar) {
  if (!body.substr(bar + 1).starts_with(kPath)) return std::nullopt;
  std::size_t name = bar;
  while (name > first && bar - name < kLongestNameRead + kFile.size() && body[name - 1] != L'|' &&
         !IsControl(body[name - 1])) {
    --name;
  }
  const std::size_t prefix = body.substr(name, bar - name).rfind(kFile);
  if (prefix == body.npos) return std::nullopt;
  const std::size_t begin = name + prefix;
  const std::size_t path = bar + 1 + kPath.size();
  const std::size_t end = ValueEnd(body, path);
  return BodyPart{BodyPart::kFile, body.substr(begin, end - begin), body.substr(path, end - path),
                  body.substr(begin + kFile.size(), bar - begin - kFile.size())};
}

std::optional<BodyPart> PictureAround(std::wstring_view body, std::size_t first, std::size_t bar) {
  static_assert(kPicture.size() == kEmotion.size());
  if (bar - first < kPicture.size()) return std::nullopt;
  const std::size_t begin = bar - kPicture.size();
  const std::wstring_view head = body.substr(begin, kPicture.size());
  if (head != kPicture && head != kEmotion) return std::nullopt;
  const auto* id = std::find_if(body.data() + bar + 1, body.data() + body.size(), EndsIdentifier);
  std::size_t path = static_cast<std::size_t>(id - body.data());
  if (path == body.size() || body[path] != L'?') return std::nullopt;
  if (!body.substr(++path).starts_with(kPath)) return std::nullopt;
  path += kPath.size();
  BodyPart part{head == kPicture ? BodyPart::kPicture : BodyPart::kEmotion, {}, {}, {}};
  std::size_t end = ValueEnd(body, path);
  part.path = body.substr(path, end - path);
  for (bool more = true; more;) {
    more = false;
    for (const std::wstring_view key : kMore) {
      if (!body.substr(end).starts_with(key)) continue;
      end = ValueEnd(body, end + key.size());
      more = true;
    }
  }
  part.source = body.substr(begin, end - begin);
  return part;
}

// Whether a reader could take the bar at `bar` of a text for one of a token, or the mark behind it
// for the one that it drops.
bool NeedsMark(std::wstring_view text, std::size_t bar) {
  const std::wstring_view before = text.substr(0, bar);
  const std::wstring_view behind = text.substr(bar + 1);
  return before.ends_with(kPicture) || before.ends_with(kEmotion) || behind.starts_with(kPath) ||
         behind.starts_with(kBodyMark);
}

std::wstring Escape(std::wstring_view text) {
  return UTF8ToWide(net::EscapeQueryParamValue(WideToUTF8(text), false));
}

}  // namespace

std::vector<BodyPart> ReadBody(std::wstring_view body) {
  std::vector<BodyPart> parts;
  std::size_t done = 0;
  const auto take_text = [&](std::size_t end) {
    if (end > done) parts.push_back({BodyPart::kText, body.substr(done, end - done), {}, {}});
    done = end;
  };
  const auto drop_mark = [&] {
    if (done < body.size() && body[done] == kBodyMark) ++done;
  };
  for (std::size_t bar = body.find(L'|'); bar != body.npos; bar = body.find(L'|', bar)) {
    if (body.substr(bar + 1).starts_with(kBodyMark)) {
      take_text(bar + 1);
      drop_mark();
      bar = done;
      continue;
    }
    auto token = FileAround(body, done, bar);
    if (!token) token = PictureAround(body, done, bar);
    if (!token) {
      ++bar;
      continue;
    }
    take_text(static_cast<std::size_t>(token->source.data() - body.data()));
    done += token->source.size();
    parts.push_back(*token);
    drop_mark();
    bar = done;
  }
  take_text(body.size());
  return parts;
}

void BodyWriter::WriteText() {
  if (text_.empty()) return;
  if (after_token_) body_ += kBodyMark;
  after_token_ = false;
  std::size_t done = 0;
  for (std::size_t bar = text_.find(L'|'); bar != text_.npos; bar = text_.find(L'|', bar + 1)) {
    if (!NeedsMark(text_, bar)) continue;
    body_.append(text_, done, bar + 1 - done) += kBodyMark;
    done = bar + 1;
  }
  body_.append(text_, done);
  text_.clear();
}

void BodyWriter::AddToken(std::wstring_view token) {
  WriteText();
  if (after_token_) body_ += kBodyMark;
  body_ += token;
  after_token_ = true;
}

void BodyWriter::AddBody(std::wstring_view body) {
  for (const BodyPart& part : ReadBody(body)) {
    if (part.kind == BodyPart::kText) {
      AddText(part.source);
    } else {
      AddToken(part.source);
    }
  }
}

std::wstring BodyWriter::Finish() {
  WriteText();
  after_token_ = false;
  return std::exchange(body_, {});
}

std::wstring PictureToken(std::wstring_view path, std::wstring_view md5, std::wstring_view type) {
  std::wstring token(kPicture);
  token.append(L"|").append(md5).append(L"?").append(kPath) += Escape(path);
  if (!md5.empty()) token += L"&fileMD5=" + Escape(md5);
  if (!type.empty()) token += L"&filetype=" + Escape(type);
  return token;
}

std::wstring EmotionToken(std::wstring_view path, std::wstring_view shortcut) {
  std::wstring token(kEmotion);
  token.append(L"|ID?").append(kPath) += Escape(path);
  return token += L"&shortcut=" + Escape(shortcut);
}

std::wstring FileToken(std::wstring_view name, std::wstring_view path) {
  std::wstring cleaned(name.substr(0, kLongestNameMade));
  if (cleaned.size() < name.size() && cleaned.back() >= 0xD800 && cleaned.back() < 0xDC00) {
    cleaned.pop_back();  // half a character
  }
  for (wchar_t& letter : cleaned) {
    if (letter == L'|' || IsControl(letter)) letter = L'_';
  }
  for (std::size_t at = 0; (at = cleaned.find(kFile, at)) != cleaned.npos;) {
    cleaned[at + kFile.size() - 1] = L'_';
  }
  std::wstring token(kFile);
  return token.append(cleaned).append(L"|").append(kPath) += Escape(path);
}

}  // namespace base
