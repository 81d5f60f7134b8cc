#include "account/store/search_words.h"

#include <utf8proc.h>

#include <cstdint>
#include <iterator>
#include <vector>

#include "kexbase/message_body.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

constexpr char32_t kJoiner = 0x200D;  // makes one emoji out of two

enum class Unit {
  kNone,     // parts words
  kNothing,  // is not there at all
  kWord,     // goes on with a word
  kLetter,   // stands alone
  kEmoji,    // stands alone, and may be joined
};

struct Range {
  char32_t first;
  char32_t last;
};

// Scripts that do not part words by spaces.
constexpr Range kUnparted[] = {
    {0x0E00, 0x0FFF},    // Thai, Lao, Tibetan
    {0x1000, 0x109F},    // Myanmar
    {0x1780, 0x17FF},    // Khmer
    {0x1950, 0x1AAF},    // Tai
    {0x2E80, 0x312F},    // radicals, Hiragana, Katakana, Bopomofo
    {0x3190, 0xA4CF},    // more of them, Han, Yi
    {0xF900, 0xFAFF},    // Han for compatibility
    {0x1AFF0, 0x1B16F},  // Kana extensions
    {0x20000, 0x3FFFF},  // Han extensions
};

bool IsUnparted(char32_t letter) {
  for (const Range& range : kUnparted) {
    if (letter >= range.first && letter <= range.last) return true;
  }
  return false;
}

// Accents of all scripts, Hebrew points and Arabic vowel signs; not the marks that make another
// letter (Kana voicing, Indic vowels), whose classes lie elsewhere.
bool IsAccent(const utf8proc_property_t& property) {
  const auto kind = property.combining_class;
  return (kind >= 10 && kind <= 36) || kind >= 200;
}

Unit UnitOf(char32_t letter, const utf8proc_property_t& property) {
  switch (property.category) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
    case UTF8PROC_CATEGORY_NO:
    case UTF8PROC_CATEGORY_CO:
      return IsUnparted(letter) ? Unit::kLetter : Unit::kWord;
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
      if (letter >= 0xFE00 && letter <= 0xFE0F) return Unit::kNothing;  // a choice of glyph
      return IsUnparted(letter) ? Unit::kLetter : Unit::kWord;
    case UTF8PROC_CATEGORY_ME:
      return Unit::kEmoji;  // the frame of a keycap
    case UTF8PROC_CATEGORY_SO:
      return Unit::kEmoji;
    case UTF8PROC_CATEGORY_SK:
      return letter >= 0x1F3FB ? Unit::kEmoji : Unit::kNone;  // skin tones
    case UTF8PROC_CATEGORY_SM:
      return letter >= 0x2190 ? Unit::kEmoji : Unit::kNone;  // arrows
    case UTF8PROC_CATEGORY_CF:
      return Unit::kNothing;
    default:
      return Unit::kNone;
  }
}

// The text as code points, folded. A letter that a mark turns into another one stays whole.
std::vector<std::int32_t> Fold(std::string_view text) {
  constexpr auto kFold =
      static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT | UTF8PROC_CASEFOLD);
  std::vector<std::int32_t> folded(text.size());
  for (;;) {
    const auto needed =
        utf8proc_decompose(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                           static_cast<utf8proc_ssize_t>(text.size()), folded.data(),
                           static_cast<utf8proc_ssize_t>(folded.size()), kFold);
    if (needed < 0) return {};
    const bool fits = static_cast<std::size_t>(needed) <= folded.size();
    folded.resize(static_cast<std::size_t>(needed));
    if (fits) break;
  }
  std::erase_if(folded, [](std::int32_t letter) {
    return letter >= 0x80 && IsAccent(*utf8proc_get_property(letter));
  });
  const auto composed = utf8proc_normalize_utf32(
      folded.data(), static_cast<utf8proc_ssize_t>(folded.size()), UTF8PROC_COMPOSE);
  folded.resize(composed < 0 ? 0 : static_cast<std::size_t>(composed));
  return folded;
}

void Append(std::string* text, std::int32_t letter) {
  utf8proc_uint8_t bytes[4];
  const auto length = utf8proc_encode_char(letter, bytes);
  text->append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

// Walks the units; `emit` gets each and whether it is a word.
template <class Emit>
void Walk(std::string_view text, Emit emit) {
  std::string word;
  const auto end_word = [&] {
    if (!word.empty()) emit(std::string_view(word), true);
    word.clear();
  };
  std::string alone;
  bool after_emoji = false;
  for (const std::int32_t letter : Fold(text)) {
    const auto point = static_cast<char32_t>(letter);
    Unit unit = UnitOf(point, *utf8proc_get_property(letter));
    if (point == kJoiner && after_emoji) unit = Unit::kLetter;
    if (unit == Unit::kNothing) continue;
    after_emoji = unit == Unit::kEmoji;
    if (unit == Unit::kWord) {
      Append(&word, letter);
      continue;
    }
    end_word();
    if (unit == Unit::kNone) continue;
    alone.clear();
    Append(&alone, letter);
    emit(std::string_view(alone), false);
  }
  end_word();
}

}  // namespace

void SearchUnits(std::string_view text, const std::function<void(std::string_view)>& emit) {
  Walk(text, [&](std::string_view unit, bool) { emit(unit); });
}

KeywordUnits UnitsOf(std::string_view keyword) {
  KeywordUnits units;
  Walk(keyword, [&](std::string_view, bool word) {
    ++units.count;
    units.ends_in_word = word;
  });
  return units;
}

std::string SearchableText(std::string_view body) {
  if (body.find('|') == body.npos) return std::string(body);  // every token has one
  std::wstring text;
  const std::wstring wide = base::UTF8ToWide(body);
  for (const base::BodyPart& part : base::ReadBody(wide)) {
    if (part.kind == base::BodyPart::kText) {
      text += part.source;
    } else {
      text.append(L" ").append(part.name).append(L" ");
    }
  }
  return base::WideToUTF8(text);
}

}  // namespace imsdk::account
