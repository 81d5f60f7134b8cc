// Own word breaking for full-text indexes.
#pragma once

#include <functional>
#include <string_view>

#include "sqlite/database.h"

namespace imsdk::sqlite {

// Calls `emit` for each token of a UTF-8 text, in order. `query` tells a text that is searched for
// from one that is put into the index. May throw.
using Tokenizer = void (*)(std::string_view text, bool query,
                           const std::function<void(std::string_view)>& emit);

// Makes a tokenizer known to this connection under the name of the `tokenize` option. The same text
// must give the same tokens for as long as it is in an index. Throws `Error`.
void RegisterTokenizer(Database& database, const char* name, Tokenizer tokenizer);

}  // namespace imsdk::sqlite
