// How records and JSON meet. A record is described once, as the ordered list of its keys, members
// and a sentence for each; reader, writer and description (recordinfo.h) all follow the list.
//
//   template <>
//   struct Record<biz::IMUserID> {
//     using R = biz::IMUserID;
//     static constexpr auto kFields =
//         FieldList(Field("appkey", &R::appkey, "The application that the user belongs to."),
//                   Field("nick", &R::nick, "The user's name there."));
//   };
//
// The member's type decides its JSON form: wide strings and file paths are strings, 32-bit
// integers, enumerations and truth values are integers, 64-bit integers are decimal strings,
// vectors are lists, maps are lists of "key" and "value", records are objects.
// Readers never fail: a missing key or a wrong JSON type leaves the member as it is.
//
// A record may also say:
//   `static constexpr auto kItems = &R::items;`  its JSON is the bare list of these items
//   `static constexpr auto kText = &R::text;`    its JSON is this text; in a list it keeps its
//                                                place, and is empty where there is no text
//   `static constexpr bool kUnderResult = true;` as an answer it stands under "result"
//   `static void Complete(R*)`                   what the reader does last
//
// Where a form of conversation (form.h) writes a record in its own way, `FormRecord<R, Form>` is
// its description there.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "kexbase/file_path.h"
#include "kexbase/strings.h"
#include "kexbase/values.h"
#include "source/bridge/jsparams/jsontext.h"
#include "source/bridge/jsparams/values.h"

namespace imsdk::bridge {

// A 64-bit number that tells whether there was one. Only read.
struct GivenNumber {
  std::int64_t value = 0;
  bool given = false;
};

// A 64-bit number that JSON has as an integer, against the rule. Only written.
struct WholeNumber {
  std::int64_t value = 0;
};

// `Access` is a pointer to the member or a path of them. Only records for which `test` holds have
// the field; without a test (null) all do.
template <class Access, class Test = std::nullptr_t>
struct FieldOf {
  std::string_view key;
  Access access;
  const char* sentence;
  const ValueSet* values;
  Test test{};
  const char* kind = nullptr;
};

template <class Access>
constexpr auto Field(std::string_view key, Access access, const char* sentence,
                     const ValueSet* values = nullptr) {
  return std::tuple(FieldOf<Access>{key, access, sentence, values});
}

template <class... Fields>
constexpr auto FieldList(Fields... fields) {
  return std::tuple_cat(fields...);
}

// The fields of one kind of record among several.
template <class Test, class... Fields>
constexpr auto OfKind(const char* kind, Test test, Fields... fields) {
  return std::apply(
      [&]<class... A>(const FieldOf<A>&... field) {
        return std::tuple(
            FieldOf<A, Test>{field.key, field.access, field.sentence, field.values, test, kind}...);
      },
      FieldList(fields...));
}

// The member of a member.
template <class... Member>
constexpr std::tuple<Member...> Path(Member... members) {
  return {members...};
}

template <class R>
concept DescribesItself = requires {
  R::kFields;
};
template <class R>
struct Record;
template <class R, class Form>
struct FormRecord;

template <class R, class Form>
concept HasFormRecord = requires {
  FormRecord<R, Form>::kFields;
};
template <class R>
concept IsBareList = requires {
  Record<R>::kItems;
};
template <class R>
concept IsBareText = requires {
  Record<R>::kText;
};

// The description of `R` under `Form`.
template <class R, class Form>
struct DescriptionOf : std::conditional<DescribesItself<R>, R, Record<R>> {};
template <class R, class Form>
requires HasFormRecord<R, Form>
struct DescriptionOf<R, Form> {
  using type = FormRecord<R, Form>;
};
template <class R, class Form>
using RecordIn = typename DescriptionOf<R, Form>::type;

template <class T>
inline constexpr bool kIsVector = false;
template <class T>
inline constexpr bool kIsVector<std::vector<T>> = true;
template <class T>
inline constexpr bool kIsMap = false;
template <class K, class V>
inline constexpr bool kIsMap<std::map<K, V>> = true;
// What JSON has as an integer.
template <class T>
inline constexpr bool kIsInteger =
    std::is_same_v<T, std::int32_t> || std::is_same_v<T, std::uint32_t> || std::is_enum_v<T>;

// A map's item in JSON.
template <class K, class V>
struct MapItem {
  K key;
  V value;

  static constexpr auto kFields = FieldList(Field("key", &MapItem::key, "What has the value."),
                                            Field("value", &MapItem::value, "The value."));
};

template <class R, class C, class M>
constexpr auto& At(R& record, M C::*member) {
  return record.*member;
}
template <class R, class... Member>
constexpr auto& At(R& record, const std::tuple<Member...>& path) {
  return std::apply(
      [&](const auto... member) -> auto& { return (record.*....*member); }, path);
}

}  // namespace imsdk::bridge
