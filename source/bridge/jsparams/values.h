// The values that integers may have.
//
//   inline constexpr Values kRoaming{
//       Value<biz::kRoamingOff>("The server does not hand out history."),
//       Value<biz::kRoamingOn>("The server hands out history."),
//   };
//
// The set is named after the enumeration, its values after the enumerators.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace imsdk::bridge {

// One value and what it means.
struct NamedValue {
  std::int64_t value;
  std::string_view name;
  const char* sentence;
};

// Static.
struct ValueSet {
  std::string_view name;
  std::span<const NamedValue> values;
};

namespace internal {

// The last part of the name that stands behind "= " in the compiler's own text for a function.
consteval std::string_view NameIn(std::string_view text) {
  text.remove_prefix(text.find("= ") + 2);
  text = text.substr(0, text.find_first_of("<;]"));
  return text.substr(text.rfind(':') + 1);
}
template <class T>
struct OfType {
  static consteval std::string_view Text() { return NameIn(__PRETTY_FUNCTION__); }
};
template <auto kValue>
struct OfValue {
  static consteval std::string_view Text() { return NameIn(__PRETTY_FUNCTION__); }
};

// A copy of the name alone, so that programs do not hold the compiler's texts.
template <class Of>
inline constexpr auto kCopied = [] {
  std::array<char, Of::Text().size()> name{};
  std::copy_n(Of::Text().begin(), name.size(), name.begin());
  return name;
}();
template <class Of>
inline constexpr std::string_view kName{kCopied<Of>.data(), kCopied<Of>.size()};

template <class Enum>
struct ValueOf : NamedValue {};

}  // namespace internal

template <auto kValue>
constexpr internal::ValueOf<decltype(kValue)> Value(const char* sentence) {
  return {
      {static_cast<std::int64_t>(kValue), internal::kName<internal::OfValue<kValue>>, sentence}};
}

// A set of values that holds its list itself.
template <class Enum, std::size_t kCount>
struct Values : ValueSet {
  template <class... More>
  consteval explicit Values(More... more)
      : ValueSet{internal::kName<internal::OfType<Enum>>, {}}, list{more...} {
    values = list;
  }
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;

  NamedValue list[kCount];
};
template <class Enum, class... More>
Values(internal::ValueOf<Enum>, More...) -> Values<Enum, 1 + sizeof...(More)>;

}  // namespace imsdk::bridge
