// A store of a million messages in several scripts, made once and kept.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "imsdk/biz/user_id.h"

namespace imsdk::bench {

inline constexpr std::int64_t kMessages = 1'000'000;
inline constexpr std::int64_t kFirstTime = 1'600'000'000'000;
inline constexpr std::int64_t kPause = 90'000;  // between two messages, milliseconds

inline const biz::IMUserID kOwner{L"cnbazaro", L"harbor"};
inline const biz::IMUserID kLargestPeer{L"cnbazaro", L"lighthouse"};  // has every second message
inline const std::wstring kOwnerPassword = L"bench";
inline const std::wstring kRareWord = L"barnacle";  // in two messages of a thousand
inline const std::wstring kCommonWord = L"tide";    // in one of ten

// Makes the data folder of an engine unless it is there and whole. The same messages each time.
// Ends the process with a message when that fails.
void MakeMillionMessages(const std::filesystem::path& folder);

}  // namespace imsdk::bench
