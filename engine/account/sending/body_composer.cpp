#include "account/sending/body_composer.h"

#include <algorithm>

#include "kexbase/message_body.h"
#include "kexbase/strings.h"
#include "link/message.h"

namespace imsdk::account {

namespace {

bool HasFile(const biz::IMBodyItem& item) {
  const bool plain =
      item.type == biz::kMsgText || item.type == biz::kMsgEmotion || item.type == biz::kMsgShake;
  return !plain && (!item.filepath.empty() || !item.filecontent.empty());
}

// The token of an item with a file. When the file cannot be kept, the token names the item's own
// path and `*result` tells why.
std::wstring KeepFile(const biz::IMBodyItem& item, const FileBox& files, const GivesUp& gives_up,
                      biz::ResultCode* result) {
  KeptFile kept;
  const biz::ResultCode outcome =
      item.filecontent.empty() ? files.KeepCopy(item.filepath, &kept, gives_up)
                               : files.Keep(item.filecontent, TypeOfName(item.filepath), &kept);
  if (!outcome.ok()) {
    kept.path = item.filepath.value();
    if (result->ok()) *result = outcome;
  }
  if (item.type == biz::kMsgPicture) {
    return base::PictureToken(kept.path, kept.md5, kept.type);
  }
  std::wstring name = item.filepath.BaseName().value();
  if (name.empty()) name = item.value;
  if (name.empty()) name = base::FilePath(kept.path).BaseName().value();
  return base::FileToken(name, kept.path);
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
    if (!file) text += base::Utf8Length(item.value);
  }
  if (empty) return biz::kEngineEmpty;
  if (text > biz::kMaxBodyBytes || *content > kMaxFileBytes) return biz::kEngineTooLarge;
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

bool NamesLargeFile(const std::vector<biz::IMBodyItem>& items, const FileBox& files) {
  return std::any_of(items.begin(), items.end(), [&](const biz::IMBodyItem& item) {
    return HasFile(item) && item.filecontent.empty() &&
           files.SizeToSend(item.filepath) >= kLargeFileBytes;
  });
}

ComposedBody ComposeBody(const std::vector<biz::IMBodyItem>& items, const FileBox& files,
                         const GivesUp& gives_up) {
  ComposedBody composed;
  if (items.size() == 1) composed.msgtype = items.front().type;
  int with_extra = 0;
  base::BodyWriter body;
  for (const biz::IMBodyItem& item : items) {
    if (!item.jvale.empty() && ++with_extra == 1) composed.others = item.jvale;
    if (item.type == biz::kMsgShake) continue;
    if (HasFile(item)) {
      body.AddToken(KeepFile(item, files, gives_up, &composed.result));
    } else {
      body.AddBody(item.value);
    }
  }
  composed.body = body.Finish();
  if (with_extra > 1) composed.others.clear();
  if (composed.result.ok() && base::Utf8Length(composed.body) > biz::kMaxBodyBytes) {
    composed.result = {biz::kEngineTooLarge, 0, L"the message is too large"};
  }
  return composed;
}

}  // namespace imsdk::account
