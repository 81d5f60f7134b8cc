// What kexbase asks of the operating system, besides locks. Implemented in posix/ and windows/.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace base::internal {

// Names the calling thread for debuggers and system tools; a system that cannot is ignored.
void SetCurrentThreadName(const std::string& utf8);

// Fills `out` from the system's cryptographic random source. Aborts when there is none: an
// identifier that is not random must never be handed out.
void FillRandom(void* out, size_t size);

// False if the system refuses MD5.
bool Md5(std::string_view data, std::array<unsigned char, 16>* digest);

// The two-byte half of GBK: the UTF-16 unit for each pair of lead and trail byte, 0 where there is
// none.
inline constexpr int kGbkFirstLead = 0x81;
inline constexpr int kGbkLastLead = 0xFE;
inline constexpr int kGbkFirstTrail = 0x40;
inline constexpr int kGbkLastTrail = 0xFE;
inline constexpr int kGbkLeads = kGbkLastLead - kGbkFirstLead + 1;
inline constexpr int kGbkTrails = kGbkLastTrail - kGbkFirstTrail + 1;
using GbkTable = std::array<std::array<char16_t, kGbkTrails>, kGbkLeads>;

// Fills `table`, which is all zeros. A system without the code page leaves it so.
void LoadGbkTable(GbkTable* table);

}  // namespace base::internal
