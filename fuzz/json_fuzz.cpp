// The JSON reader: what it reads, the writer writes so that the same is read again.
#include <cstddef>
#include <cstdint>

#include "check.h"
#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  base::JSONError error;
  const auto value = base::JSONReader::Read(text, &error);
  if (!value) {
    FUZZ_CHECK(!error.message.empty() && error.offset <= size);
    return 0;
  }
  std::string written;
  FUZZ_CHECK(base::JSONWriter::Write(*value, &written));
  FUZZ_CHECK(base::JSONReader::ReadInPlace(written) == value);
  return 0;
}
