#include <windows.h>

#include "kexbase/os.h"

namespace base::internal {

void LoadGbkTable(GbkTable* table) {
  constexpr UINT kCodePage = 936;
  for (int lead = 0; lead < kGbkLeads; ++lead) {
    for (int trail = 0; trail < kGbkTrails; ++trail) {
      const char pair[2] = {static_cast<char>(kGbkFirstLead + lead),
                            static_cast<char>(kGbkFirstTrail + trail)};
      wchar_t units[2];
      if (MultiByteToWideChar(kCodePage, MB_ERR_INVALID_CHARS, pair, 2, units, 2) != 1) continue;
      const auto index = static_cast<size_t>(trail);
      (*table)[static_cast<size_t>(lead)][index] = static_cast<char16_t>(units[0]);
    }
  }
}

}  // namespace base::internal
