// How records and JSON meet. A record is described once, as the ordered list of its keys and
// members; reader and writer both follow the list.
//
//   template <>
//   struct Record<biz::IMUserID> {
//     static constexpr auto kFields = FieldList(Field("appkey", &biz::IMUserID::appkey),
//                                               Field("nick", &biz::IMUserID::nick));
//   };
//
// The member's type decides its JSON form: wide strings are strings, 32-bit integers and truth
// values are integers, 64-bit integers are decimal strings, vectors are lists, records are objects.
// Readers never fail: a missing key or a wrong JSON type leaves the member as it is.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "kexbase/strings.h"
#include "kexbase/values.h"
#include "source/bridge/jsparams/jsontext.h"

namespace imsdk::bridge {

template <class R, class M>
struct FieldOf {
  const char* key;
  M R::*member;
};

template <class R, class M>
constexpr FieldOf<R, M> Field(const char* key, M R::*member) {
  return {key, member};
}

template <class... F>
constexpr auto FieldList(F... fields) {
  return std::make_tuple(fields...);
}

template <class R>
struct Record;

template <class R>
concept IsRecord = requires {
  Record<R>::kFields;
};

// A request without keys. Its JSON text is not even looked at.
struct NoKeys {};
template <>
struct Record<NoKeys> {
  static constexpr auto kFields = FieldList();
};

inline void ReadValue(const base::Value& json, std::wstring* out) {
  if (const std::string* text = json.GetIfString()) *out = base::SysUTF8ToWide(*text);
}

// Integers beyond 32 bits are none.
inline std::optional<std::int32_t> IntOf(const base::Value& json) {
  using Limits = std::numeric_limits<std::int32_t>;
  const auto value = json.GetIfInt64();
  if (!value || *value < Limits::min() || *value > Limits::max()) return std::nullopt;
  return static_cast<std::int32_t>(*value);
}

inline void ReadValue(const base::Value& json, std::int32_t* out) {
  if (const auto value = IntOf(json)) *out = *value;
}

inline void ReadValue(const base::Value& json, bool* out) {
  std::int32_t flag = *out;
  ReadValue(json, &flag);
  *out = flag != 0;
}

inline void ReadValue(const base::Value& json, std::int64_t* out) {
  if (const std::string* text = json.GetIfString()) base::StringToInt64(*text, out);
}

template <class T>
void ReadValue(const base::Value& json, std::vector<T>* out);

template <IsRecord R>
void ReadValue(const base::Value& json, R* out) {
  const base::DictionaryValue* object = json.GetIfDict();
  if (!object) return;
  const auto read = [&](const auto& field) {
    if (const base::Value* value = object->Find(field.key))
      ReadValue(*value, &(out->*field.member));
  };
  std::apply([&](const auto&... field) { (read(field), ...); }, Record<R>::kFields);
}

// Whether an element belongs into a list. One that should be an identifier does in any case, as 0:
// a list without elements may mean all there are.
template <class T>
bool HasJsonTypeOf(const base::Value& json) {
  if constexpr (std::is_same_v<T, std::int64_t>) return true;
  if constexpr (IsRecord<T>) return json.is_dict();
  if constexpr (std::is_same_v<T, std::wstring>) return json.is_string();
  if constexpr (std::is_same_v<T, std::int32_t>) return IntOf(json).has_value();
}

// Elements of a wrong JSON type are left out.
template <class T>
void ReadValue(const base::Value& json, std::vector<T>* out) {
  const base::ListValue* list = json.GetIfList();
  if (!list) return;
  out->reserve(list->size());
  for (const base::Value& item : *list) {
    if (HasJsonTypeOf<T>(item)) ReadValue(item, &out->emplace_back());
  }
}

inline void WriteValue(JsonText& json, const std::wstring& text) { json.String(text); }
inline void WriteValue(JsonText& json, std::int32_t value) { json.Integer(value); }
inline void WriteValue(JsonText& json, bool value) { json.Integer(value); }
inline void WriteValue(JsonText& json, std::int64_t value) { json.DecimalString(value); }

template <IsRecord R>
void WriteMembers(JsonText& json, const R& record);
template <class T>
void WriteValue(JsonText& json, const std::vector<T>& items);

template <IsRecord R>
void WriteValue(JsonText& json, const R& record) {
  json.BeginObject();
  WriteMembers(json, record);
  json.EndObject();
}

template <class T>
void WriteValue(JsonText& json, const std::vector<T>& items) {
  json.BeginList();
  for (const T& item : items) WriteValue(json, item);
  json.EndList();
}

// A list that the record only points to.
template <class T>
void WriteValue(JsonText& json, const std::vector<T>* items) {
  WriteValue(json, *items);
}

// Writes the record's keys into the object that is open.
template <IsRecord R>
void WriteMembers(JsonText& json, const R& record) {
  const auto write = [&](const auto& field) {
    json.Key(field.key);
    WriteValue(json, record.*field.member);
  };
  std::apply([&](const auto&... field) { (write(field), ...); }, Record<R>::kFields);
}

// The JSON text of a record, for notifications.
template <IsRecord R>
std::wstring RecordText(const R& record) {
  JsonText json;
  WriteValue(json, record);
  return json.Take();
}

}  // namespace imsdk::bridge
