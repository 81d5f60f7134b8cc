// Breaks message texts and keywords into what a search compares.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace imsdk::account {

// Calls `emit` for each unit of a UTF-8 text, in order: a run of letters and digits in scripts that
// part words, one letter of a script that does not, one emoji or its modifier. Case, accents, vowel
// points and compatibility forms are gone. Not for text that is no valid UTF-8: it has none.
void SearchUnits(std::string_view text, const std::function<void(std::string_view)>& emit);

// What of a message body can be searched: the body without its tokens, but with the names of files.
std::string SearchableText(std::string_view body);

// The units of one keyword.
struct KeywordUnits {
  std::size_t count = 0;
  bool ends_in_word = false;  // which is then the beginning of the word that is looked for
};
KeywordUnits UnitsOf(std::string_view keyword);

}  // namespace imsdk::account
