#include "account/session/device_name.h"

#include <fstream>
#include <stdexcept>
#include <system_error>

#include "kexbase/guid.h"

namespace imsdk::account {

std::string DeviceName(const std::filesystem::path& file) {
  std::string name;
  if (std::ifstream(file) >> name) return name;
  name = base::GenerateGUID();
  // Written aside and renamed, so that there is never half a name.
  std::filesystem::path aside = file;
  aside += ".new";
  std::error_code failure;
  std::ofstream out(aside);
  out << name << '\n';
  out.close();
  if (out) std::filesystem::rename(aside, file, failure);
  if (!out || failure) throw std::runtime_error("the device's name could not be kept");
  return name;
}

}  // namespace imsdk::account
