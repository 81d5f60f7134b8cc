#include <iconv.h>

#include "kexbase/os.h"

namespace base::internal {

void LoadGbkTable(GbkTable* table) {
  const iconv_t converter = iconv_open("UTF-16LE", "GBK");
  if (converter == reinterpret_cast<iconv_t>(-1)) return;
  for (int lead = 0; lead < kGbkLeads; ++lead) {
    for (int trail = 0; trail < kGbkTrails; ++trail) {
      char pair[2] = {static_cast<char>(kGbkFirstLead + lead),
                      static_cast<char>(kGbkFirstTrail + trail)};
      unsigned char unit[4];
      char* in = pair;
      char* out = reinterpret_cast<char*>(unit);
      size_t in_left = sizeof(pair);
      size_t out_left = sizeof(unit);
      iconv(converter, nullptr, nullptr, nullptr, nullptr);
      const size_t result = iconv(converter, &in, &in_left, &out, &out_left);
      if (result != 0 || in_left != 0 || out_left != 2) continue;
      const auto index = static_cast<size_t>(trail);
      (*table)[static_cast<size_t>(lead)][index] = static_cast<char16_t>(unit[0] | unit[1] << 8);
    }
  }
  iconv_close(converter);
}

}  // namespace base::internal
