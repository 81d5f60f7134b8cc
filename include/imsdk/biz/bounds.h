// How much a record may hold. What is stored or sent on says so beside its fields:
//
//   struct IMNote {
//     std::wstring text;
//     static constexpr auto Bounds() {
//       return Bounded(Bytes("text", &IMNote::text, kMaxBodyBytes));
//     }
//   };
//
// The engine looks at its door, before it copies anything, and so does the server, whoever sends:
// what is beyond is refused with `kEngineTooLarge` and a text that names field and bound. Nothing
// is cut.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace imsdk::biz {

// Texts that the user writes, in bytes of UTF-8; the free data of a message; a message with
// everything that it carries but the contents of files.
inline constexpr std::size_t kMaxBodyBytes = std::size_t{1} << 20;
inline constexpr std::size_t kMaxExtraBytes = std::size_t{64} << 10;
inline constexpr std::size_t kMaxMessageBytes = std::size_t{2} << 20;
// The contents of the files that one message brings, in bytes.
inline constexpr std::size_t kMaxContentBytes = std::size_t{32} << 20;
// Parts of names, in UTF-16 code units.
inline constexpr std::size_t kMaxNameLetters = 256;
inline constexpr std::size_t kMaxTribeLetters = 128;
// A tribe's bulletin, and the most that any setting of a tribe may have; its other texts; the words
// that go with a request to join or a decision.
inline constexpr std::size_t kMaxTribeTextLetters = 4096;
inline constexpr std::size_t kMaxTribeDescriptionLetters = 1024;
inline constexpr std::size_t kMaxTribePictureLetters = 1024;  // the path of one
inline constexpr std::size_t kMaxTribeNicknameLetters = 64;
inline constexpr std::size_t kMaxTribePasswordLetters = 64;
inline constexpr std::size_t kMaxTribeWordsLetters = 512;
inline constexpr std::size_t kMaxPathLetters = 4096;
// Passwords, tokens and what else is opaque to pages, in UTF-16 code units.
inline constexpr std::size_t kMaxSecretLetters = 1024;
// Entries of one request's lists.
inline constexpr std::size_t kMaxBodyItems = 10'000;
inline constexpr std::size_t kMaxIDs = 100'000;
inline constexpr std::size_t kMaxInvited = 1'000;
// For lists that go on in slices, however long they are; they count as what is open.
inline constexpr std::size_t kNoBound = static_cast<std::size_t>(-1);

enum class BoundUnit {
  kLetters,  // UTF-16 code units of a text, or of a list of texts together
  kBytes,    // of UTF-8, of a text or a list of texts; of a record, all its texts and lists
  kContent,  // bytes that are no text and do not count as a record's text
  kEntries,  // of a list
};

template <class Record, class Field>
struct FieldBound {
  const char* name;  // as pages write it
  Field Record::*field;
  BoundUnit unit;
  std::size_t most;
};

// A record inside, which has bounds of its own.
template <class Record, class Field>
struct InnerBound {
  const char* name;
  Field Record::*field;
};

// All of the record together; without a name, it is that of the record.
struct WholeBound {
  const char* name;
  BoundUnit unit;
  std::size_t most;
};

template <class Record, class Field>
constexpr auto Letters(const char* name, Field Record::*field, std::size_t most) {
  return FieldBound<Record, Field>{name, field, BoundUnit::kLetters, most};
}
template <class Record, class Field>
constexpr auto Bytes(const char* name, Field Record::*field, std::size_t most) {
  return FieldBound<Record, Field>{name, field, BoundUnit::kBytes, most};
}
template <class Record, class Field>
constexpr auto Content(const char* name, Field Record::*field, std::size_t most) {
  return FieldBound<Record, Field>{name, field, BoundUnit::kContent, most};
}
// The entries of a list. Those that have bounds of their own are looked at too.
template <class Record, class Field>
constexpr auto Entries(const char* name, Field Record::*field, std::size_t most) {
  return FieldBound<Record, Field>{name, field, BoundUnit::kEntries, most};
}
template <class Record, class Field>
constexpr auto Inner(const char* name, Field Record::*field) {
  return InnerBound<Record, Field>{name, field};
}
constexpr WholeBound Whole(const char* name, BoundUnit unit, std::size_t most) {
  return {name, unit, most};
}

template <class... Bound>
constexpr auto Bounded(Bound... bounds) {
  return std::tuple{bounds...};
}

}  // namespace imsdk::biz
