#include <algorithm>
#include <array>
#include <memory>

#include "kexbase/os.h"
#include "kexbase/strings.h"
#include "kexbase/utf.h"

namespace base {

namespace internal {

namespace {

constexpr unsigned char kEuroByte = 0x80;
constexpr char16_t kEuro = 0x20AC;

class Gbk {
 public:
  Gbk() {
    LoadGbkTable(&to_unicode_);
    for (int lead = 0; lead < kGbkLeads; ++lead) {
      for (int trail = 0; trail < kGbkTrails; ++trail) AddPair(lead, trail);
    }
  }

  // The UTF-16 unit of a pair of bytes, 0 if there is none.
  char16_t Decode(unsigned char lead, unsigned char trail) const {
    if (lead < kGbkFirstLead || lead > kGbkLastLead) return 0;
    if (trail < kGbkFirstTrail || trail > kGbkLastTrail) return 0;
    return to_unicode_[static_cast<size_t>(lead - kGbkFirstLead)]
                      [static_cast<size_t>(trail - kGbkFirstTrail)];
  }

  // The lead byte times 256 and the trail byte, 0 if GBK lacks the character.
  unsigned Encode(char32_t code) const { return code > 0xFFFF ? 0 : from_unicode_[code]; }

 private:
  void AddPair(int lead, int trail) {
    char16_t& unit = to_unicode_[static_cast<size_t>(lead)][static_cast<size_t>(trail)];
    // Windows maps the areas for private characters, others do not; nobody here uses them.
    if (unit >= 0xE000 && unit <= 0xF8FF) unit = 0;
    if (unit == 0 || from_unicode_[unit] != 0) return;
    from_unicode_[unit] =
        static_cast<uint16_t>((kGbkFirstLead + lead) << 8 | (kGbkFirstTrail + trail));
  }

  GbkTable to_unicode_{};
  std::array<uint16_t, 0x10000> from_unicode_{};
};

const Gbk& Tables() {
  static const std::unique_ptr<const Gbk> tables = std::make_unique<Gbk>();
  return *tables;
}

}  // namespace

}  // namespace internal

std::string WideToGBK(std::wstring_view wide) {
  const internal::Gbk& tables = internal::Tables();
  std::string gbk;
  gbk.reserve(2 * wide.size());
  const wchar_t* p = wide.data();
  const wchar_t* const end = p + wide.size();
  while (p != end) {
    const char32_t code = internal::NextWide(&p, end);
    if (code < 0x80) {
      gbk += static_cast<char>(code);
    } else if (code == internal::kEuro) {
      gbk += static_cast<char>(internal::kEuroByte);
    } else if (const unsigned pair = tables.Encode(code)) {
      gbk += {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF)};
    } else {
      gbk += '?';
    }
  }
  return gbk;
}

std::wstring GBKToWide(std::string_view gbk) {
  const internal::Gbk& tables = internal::Tables();
  const auto byte = [gbk](size_t i) { return static_cast<unsigned char>(gbk[i]); };
  std::wstring wide;
  wide.reserve(gbk.size());
  for (size_t i = 0; i < gbk.size(); ++i) {
    if (byte(i) < 0x80) {
      wide += static_cast<wchar_t>(byte(i));
      continue;
    }
    if (byte(i) == internal::kEuroByte) {
      wide += static_cast<wchar_t>(internal::kEuro);
      continue;
    }
    const unsigned char trail = i + 1 < gbk.size() ? byte(i + 1) : 0;
    const char16_t unit = tables.Decode(byte(i), trail);
    wide += static_cast<wchar_t>(unit != 0 ? unit : internal::kReplacement);
    const bool is_pair = unit != 0 || (trail >= 0x80 && trail <= internal::kGbkLastTrail &&
                                       byte(i) <= internal::kGbkLastLead);
    if (is_pair) ++i;
  }
  return wide;
}

}  // namespace base
