#pragma once

#include <string>

namespace base::internal {

// Turns each escape of a surrogate without its partner ("\ud83d") in a JSON text into the escape of
// U+FFFD. Nothing else changes, nor does the length.
void ReplaceLoneSurrogates(std::string* text);

}  // namespace base::internal
