// The frames of the script channel: JSON texts between a page and its view.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "bridge/imsdkbridge.h"

namespace imsdk::host {

// Reads an invocation. A call that names no browser id gets `own_browser_id`. Nothing when the
// frame is not of the agreed form; `*reason` then says why, for the page's developer. Members that
// the form does not know are ignored.
std::optional<bridge::SdkParam> ReadInvoke(std::string utf8, const std::wstring& own_browser_id,
                                           std::string* reason);

// About how many bytes it takes at most to read and carry out an invocation of this text: texts
// exist in several forms at once, and every value of a list or a record has its price.
std::size_t CostOf(std::string_view utf8);

// What the host sends, in UTF-8.
std::string HelloFrame(std::wstring_view browser_id);
std::string AnswerFrame(std::wstring_view browser_id, std::wstring_view seq, bool failed,
                        std::wstring_view payload);
// `path` is the routing path of the module that sends it; empty for an event that a page raised.
std::string NotifyFrame(std::wstring_view event, std::wstring_view payload, std::wstring_view path);
std::string RefusedFrame(std::string_view reason);

}  // namespace imsdk::host
