// Records as data: what a description of the protocol and the tests over the tables walk along.
#pragma once

#include <algorithm>
#include <array>

#include "source/bridge/jsparams/record.h"

namespace imsdk::bridge {

enum class JsonKind {
  kText,      // a string
  kFile,      // a string: the path of a file
  kInteger,   // an integer of 32 bits
  kUnsigned,  // an integer of 32 bits from 0 on
  kWhole,     // an integer of 64 bits
  kFlag,      // an integer: 0 or 1; readers take every other one for 1
  kDecimal,   // a string: an integer of 64 bits in decimal
  kRecord,    // an object
  kList,      // a list of `item`
};

struct FieldInfo;

// The JSON form of a value. All of it is static.
struct TypeInfo {
  JsonKind kind;
  std::span<const FieldInfo> fields{};  // of a record
  const TypeInfo* item = nullptr;
  bool under_result = false;  // as an answer it stands under "result"
  std::string_view name{};    // of a record: its type's, without namespaces
};

struct FieldInfo {
  std::string_view key;
  const char* sentence;
  const ValueSet* values;  // null when every value may stand there
  const TypeInfo* type;
  const char* of_kind;  // null, or the kind of record that alone has the field
};

template <class Form, class T>
struct TypeInfoOf;

// Whose name a record goes by.
template <class T>
struct NamedAs {
  using Type = T;
};

namespace internal {

template <class Access>
struct MemberOf;
template <class C, class M>
struct MemberOf<M C::*> {
  using Type = M;
};
template <class... Member>
struct MemberOf<std::tuple<Member...>> {
  using Type =
      typename MemberOf<std::tuple_element_t<sizeof...(Member) - 1, std::tuple<Member...>>>::Type;
};

template <class Form, class A, class Test>
constexpr FieldInfo InfoOf(const FieldOf<A, Test>& field) {
  using Member = std::remove_cv_t<std::remove_pointer_t<typename MemberOf<A>::Type>>;
  return {field.key, field.sentence, field.values, &TypeInfoOf<Form, Member>::kInfo, field.kind};
}

template <class Form, class R>
inline constexpr auto kFieldInfos = std::apply(
    []<class... F>(const F&... field) {
      return std::array<FieldInfo, sizeof...(F)>{InfoOf<Form>(field)...};
    },
    RecordIn<R, Form>::kFields);

template <class Form, class T>
constexpr TypeInfo MakeTypeInfo() {
  if constexpr (std::is_same_v<T, std::wstring> || IsBareText<T>) {
    return {JsonKind::kText};
  } else if constexpr (std::is_same_v<T, base::FilePath>) {
    return {JsonKind::kFile};
  } else if constexpr (std::is_same_v<T, std::uint32_t>) {
    return {JsonKind::kUnsigned};
  } else if constexpr (kIsInteger<T>) {
    return {JsonKind::kInteger};
  } else if constexpr (std::is_same_v<T, WholeNumber>) {
    return {JsonKind::kWhole};
  } else if constexpr (std::is_same_v<T, bool>) {
    return {JsonKind::kFlag};
  } else if constexpr (std::is_same_v<T, std::int64_t> || std::is_same_v<T, GivenNumber>) {
    return {JsonKind::kDecimal};
  } else if constexpr (kIsVector<T>) {
    return {JsonKind::kList, {}, &TypeInfoOf<Form, typename T::value_type>::kInfo};
  } else if constexpr (kIsMap<T>) {
    using Item = MapItem<typename T::key_type, typename T::mapped_type>;
    return {JsonKind::kList, {}, &TypeInfoOf<Form, Item>::kInfo};
  } else {
    TypeInfo info{};
    if constexpr (IsBareList<T>) {
      using Items = typename MemberOf<std::remove_cv_t<decltype(Record<T>::kItems)>>::Type;
      info = MakeTypeInfo<Form, Items>();
    } else {
      info = {JsonKind::kRecord, kFieldInfos<Form, T>};
      info.name = kName<OfType<typename NamedAs<T>::Type>>;
    }
    info.under_result = requires { RecordIn<T, Form>::kUnderResult; };
    return info;
  }
}

}  // namespace internal

// The JSON form of `T` under `Form`.
template <class Form, class T>
struct TypeInfoOf {
  static constexpr TypeInfo kInfo = internal::MakeTypeInfo<Form, T>();
};

}  // namespace imsdk::bridge
