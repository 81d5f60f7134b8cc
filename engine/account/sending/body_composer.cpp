#include "account/sending/body_composer.h"

#include <algorithm>

#include "kexbase/strings.h"
#include "kexnet/escape.h"
#include "link/message.h"

namespace imsdk::account {

namespace {

std::wstring Escape(const std::wstring& text) {
  return base::UTF8ToWide(net::EscapeQueryParamValue(base::WideToUTF8(text), false));
}

bool HasFile(const biz::IMBodyItem& item) {
  const bool plain =
      item.type == biz::kMsgText || item.type == biz::kMsgEmotion || item.type == biz::kMsgShake;
  return !plain && (!item.filepath.empty() || !item.filecontent.empty());
}

bool IsSpace(wchar_t letter) { return letter == L' ' || (letter >= L'\t' && letter <= L'\r'); }

// The token of an item with a file. When the file cannot be kept, the token names the item's own
// path and `*result` tells why.
std::wstring KeepFile(const biz::IMBodyItem& item, const FileBox& files, biz::ResultCode* result) {
  KeptFile kept;
  const biz::ResultCode outcome =
      item.filecontent.empty() ? files.KeepCopy(item.filepath, &kept)
                               : files.Keep(item.filecontent, TypeOfName(item.filepath), &kept);
  if (!outcome.ok()) {
    kept.path = item.filepath.value();
    if (result->ok()) *result = outcome;
  }
  if (item.type == biz::kMsgPicture) return PictureToken(kept);
  std::wstring name = item.filepath.BaseName().value();
  if (name.empty()) name = item.value;
  if (name.empty()) name = base::FilePath(kept.path).BaseName().value();
  return FileToken(std::move(name), kept);
}

}  // namespace

biz::EngineCode CheckBody(const std::vector<biz::IMBodyItem>& items, std::size_t* content) {
  bool empty = items.size() != 1 || items.front().type != biz::kMsgShake;
  std::size_t text = 0;
  *content = 0;
  for (const biz::IMBodyItem& item : items) {
    if (item.type == biz::kMsgShake) continue;
    const bool file = HasFile(item);
    if (file || !item.value.empty()) empty = false;
    if (file) *content += item.filecontent.size();
    if (!file) text += base::WideToUTF8(item.value).size();
  }
  if (empty) return biz::kEngineEmpty;
  if (text > link::kMaxBodyBytes || *content > kMaxFileBytes) return biz::kEngineTooLarge;
  return biz::kEngineOk;
}

bool HasInputStatus(const std::vector<biz::IMBodyItem>& items) {
  return std::any_of(items.begin(), items.end(),
                     [](const biz::IMBodyItem& item) { return item.type == biz::kMsgInputStatus; });
}

std::optional<biz::InputStatus> InputStatusOf(const std::vector<biz::IMBodyItem>& items) {
  if (items.size() != 1 || items.front().type != biz::kMsgInputStatus) return std::nullopt;
  if (items.front().value == L"0") return biz::kInputStopped;
  if (items.front().value == L"1") return biz::kInputTyping;
  return std::nullopt;
}

ComposedBody ComposeBody(const std::vector<biz::IMBodyItem>& items, const FileBox& files) {
  ComposedBody composed;
  if (items.size() == 1) composed.msgtype = items.front().type;
  int with_extra = 0;
  bool after_token = false;
  for (const biz::IMBodyItem& item : items) {
    if (!item.jvale.empty() && ++with_extra == 1) composed.others = item.jvale;
    if (item.type == biz::kMsgShake) continue;
    const std::wstring part = HasFile(item) ? KeepFile(item, files, &composed.result) : item.value;
    if (part.empty()) continue;
    const bool token = item.type != biz::kMsgText;
    const bool meets = !composed.body.empty() && (token || after_token);
    if (meets && !IsSpace(composed.body.back()) && !IsSpace(part.front())) composed.body += L' ';
    composed.body += part;
    after_token = token;
  }
  if (with_extra > 1) composed.others.clear();
  if (composed.result.ok() && base::WideToUTF8(composed.body).size() > link::kMaxBodyBytes) {
    composed.result = {biz::kEngineTooLarge, 0, L"the message is too large"};
  }
  return composed;
}

std::wstring PictureToken(const KeptFile& picture) {
  std::wstring token = L"pic:impicture|" + picture.md5 + L"?filepath=" + Escape(picture.path);
  if (!picture.md5.empty()) token += L"&fileMD5=" + Escape(picture.md5);
  if (!picture.type.empty()) token += L"&filetype=" + Escape(picture.type);
  return token;
}

std::wstring FileToken(std::wstring name, const KeptFile& file) {
  for (wchar_t& letter : name) {
    if (letter == L'|' || letter < L' ') letter = L'_';
  }
  return L"file:" + name + L"|filepath=" + Escape(file.path);
}

}  // namespace imsdk::account
