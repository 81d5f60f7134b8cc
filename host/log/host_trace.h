// Trace lines of the host itself, in the same form as the library's.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kexcore/logger.h"

namespace imsdk::host {

// Where the host's own lines come from. Both texts are static.
struct HostTraceSite {
  const char* function = "";  // for instance "Page::OnFrame"
  const char* source = "";    // for instance "host\page"
};

// Writes one line to `log`. `brief` is the brief list ("_brief_,reason"); `values` are the UTF-8
// values of its names, in order. Any thread; never throws.
void WriteTrace(ns_log::ILogger& log, int level, const HostTraceSite& site, std::wstring_view text,
                std::string_view brief = "_brief_,", std::vector<std::string> values = {},
                int line = __builtin_LINE());

}  // namespace imsdk::host
