// Reads what can be read out of a damaged store.
#pragma once

#include <cstdint>
#include <filesystem>

#include "sqlite/database.h"

namespace imsdk::sqlite {

struct Salvaged {
  std::int64_t rows = 0;
  bool complete = true;  // nothing had to be passed over
};

// Copies the rows of the damaged file's tables into those of `to`, a fresh store of the same kind,
// in one transaction. Rows that are there already stay. Virtual tables are not copied: triggers
// make them anew. The file itself is not changed. Throws `Error` when `to` cannot be written.
Salvaged Salvage(const std::filesystem::path& damaged, Database& to);

}  // namespace imsdk::sqlite
