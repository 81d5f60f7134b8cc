// Makes a message body out of the items that were typed and picked.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "account/files/file_box.h"
#include "imsdk/biz/message.h"

namespace imsdk::account {

// Refuses at once what cannot be sent: `kEngineEmpty` or `kEngineTooLarge`. A window shake alone is
// something to send. `*content` becomes the
// number of bytes that the items carry.
biz::EngineCode CheckBody(const std::vector<biz::IMBodyItem>& items, std::size_t* content);

// Whether an item is a typing state, which is no part of a message.
bool HasInputStatus(const std::vector<biz::IMBodyItem>& items);
// The typing state that the only item is; nothing when the items are anything else.
std::optional<biz::InputStatus> InputStatusOf(const std::vector<biz::IMBodyItem>& items);

struct ComposedBody {
  // When a file could not be kept or the text is too long; the body then names what was asked for.
  biz::ResultCode result;
  std::wstring body;
  std::int32_t msgtype = biz::kMsgText;  // of the only item; text for several
  std::wstring others;                   // the `jvale` of the only item that has one
};

// Keeps the items' files and puts the body together. An item with a file or content becomes a
// token, a window shake nothing; the value of any other item is a body itself, and put in as that.
ComposedBody ComposeBody(const std::vector<biz::IMBodyItem>& items, const FileBox& files,
                         const GivesUp& gives_up = {});
// Whether it takes long: an item names a large file.
bool NamesLargeFile(const std::vector<biz::IMBodyItem>& items, const FileBox& files);

}  // namespace imsdk::account
