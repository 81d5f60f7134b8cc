// Reads records from JSON and writes them, by their lists of fields.
#pragma once

#include "source/bridge/jsparams/record.h"

namespace imsdk::bridge {

// The 32-bit integer that `json` is, if it is one.
template <class T>
std::optional<T> IntegerOf(const base::Value& json) {
  if constexpr (std::is_enum_v<T>) {
    const auto value = IntegerOf<std::underlying_type_t<T>>(json);
    return value ? std::optional(static_cast<T>(*value)) : std::nullopt;
  } else {
    const auto value = json.GetIfInt64();
    if (!value || !std::in_range<T>(*value)) return std::nullopt;
    return static_cast<T>(*value);
  }
}

// Whether an element belongs into a list. One that should be an identifier does in any case, as 0:
// a list without elements may mean all there are.
template <class T>
bool HasJsonTypeOf(const base::Value& json) {
  if constexpr (std::is_same_v<T, std::int64_t> || IsBareText<T>) {
    return true;
  } else if constexpr (std::is_same_v<T, std::wstring> || std::is_same_v<T, base::FilePath>) {
    return json.is_string();
  } else if constexpr (kIsInteger<T>) {
    return IntegerOf<T>(json).has_value();
  } else if constexpr (IsBareList<T>) {
    return json.is_list();
  } else {
    return json.is_dict();
  }
}

template <class Form, class T>
void ReadValue(const base::Value& json, T* out);

template <class Form, class R>
void ReadMembers(const base::DictionaryValue& object, R* out) {
  const auto read = [&](const auto& field) {
    if (const base::Value* value = object.Find(field.key)) {
      ReadValue<Form>(*value, &At(*out, field.access));
    }
  };
  std::apply([&](const auto&... field) { (read(field), ...); }, RecordIn<R, Form>::kFields);
}

template <class Form, class T>
void ReadItems(const base::ListValue& list, std::vector<T>* out) {
  out->reserve(list.size());
  for (const base::Value& item : list) {
    if (HasJsonTypeOf<T>(item)) ReadValue<Form>(item, &out->emplace_back());
  }
}

template <class Form, class K, class V>
void ReadItems(const base::ListValue& list, std::map<K, V>* out) {
  std::vector<MapItem<K, V>> items;
  ReadItems<Form>(list, &items);
  for (auto& item : items) out->insert_or_assign(std::move(item.key), std::move(item.value));
}

template <class Form, class T>
void ReadValue(const base::Value& json, T* out) {
  if constexpr (std::is_same_v<T, std::wstring>) {
    if (const std::string* text = json.GetIfString()) *out = base::SysUTF8ToWide(*text);
  } else if constexpr (std::is_same_v<T, base::FilePath>) {
    if (const std::string* text = json.GetIfString()) *out = base::FilePath::FromUTF8(*text);
  } else if constexpr (kIsInteger<T>) {
    if (const auto value = IntegerOf<T>(json)) *out = *value;
  } else if constexpr (std::is_same_v<T, bool>) {
    if (const auto value = IntegerOf<std::int32_t>(json)) *out = *value != 0;
  } else if constexpr (std::is_same_v<T, std::int64_t>) {
    if (const std::string* text = json.GetIfString()) base::StringToInt64(*text, out);
  } else if constexpr (std::is_same_v<T, GivenNumber>) {
    const std::string* text = json.GetIfString();
    out->given = text && base::StringToInt64(*text, &out->value);
  } else if constexpr (kIsVector<T> || kIsMap<T>) {
    if (const base::ListValue* list = json.GetIfList()) ReadItems<Form>(*list, out);
  } else if constexpr (IsBareText<T>) {
    ReadValue<Form>(json, &(out->*Record<T>::kText));
  } else {
    using Description = RecordIn<T, Form>;
    if constexpr (IsBareList<T>) {
      ReadValue<Form>(json, &(out->*Description::kItems));
    } else if (const base::DictionaryValue* object = json.GetIfDict()) {
      ReadMembers<Form>(*object, out);
    }
    if constexpr (requires { Description::Complete(out); }) Description::Complete(out);
  }
}

template <class Form, class T>
void WriteValue(JsonText& json, const T& value);

// Writes the record's keys into the object that is open.
template <class Form, class R>
void WriteMembers(JsonText& json, const R& record) {
  const auto write = [&]<class A, class Test>(const FieldOf<A, Test>& field) {
    if constexpr (!std::is_null_pointer_v<Test>) {
      if (!(record.*field.test)()) return;
    }
    json.Key(field.key);
    WriteValue<Form>(json, At(record, field.access));
  };
  std::apply([&](const auto&... field) { (write(field), ...); }, RecordIn<R, Form>::kFields);
}

// The first items of a long list tell how long it will be.
template <class Form, class T>
void WriteItems(JsonText& json, const std::vector<T>& items) {
  constexpr std::size_t kSample = 64;
  json.BeginList();
  const std::size_t start = json.size();
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i == kSample) json.Expect((json.size() - start) / kSample * items.size() / 8 * 9);
    WriteValue<Form>(json, items[i]);
  }
  json.EndList();
}

template <class Form, class T>
void WriteValue(JsonText& json, const T& value) {
  if constexpr (std::is_same_v<T, std::wstring>) {
    json.String(value);
  } else if constexpr (std::is_same_v<T, base::FilePath>) {
    json.String(value.value());
  } else if constexpr (kIsInteger<T> || std::is_same_v<T, bool>) {
    json.Integer(value);
  } else if constexpr (std::is_same_v<T, std::int64_t>) {
    json.DecimalString(value);
  } else if constexpr (std::is_same_v<T, WholeNumber>) {
    json.Integer(value.value);
  } else if constexpr (std::is_pointer_v<T>) {  // what the record only points to
    WriteValue<Form>(json, *value);
  } else if constexpr (kIsVector<T>) {
    WriteItems<Form>(json, value);
  } else if constexpr (kIsMap<T>) {
    json.BeginList();
    using Item = MapItem<const typename T::key_type*, const typename T::mapped_type*>;
    for (const auto& [key, item] : value) WriteValue<Form>(json, Item{&key, &item});
    json.EndList();
  } else if constexpr (IsBareList<T>) {
    WriteValue<Form>(json, value.*RecordIn<T, Form>::kItems);
  } else {
    json.BeginObject();
    WriteMembers<Form>(json, value);
    json.EndObject();
  }
}

// The JSON text of a record, for notifications.
template <class Form, class R>
std::wstring RecordText(const R& record) {
  JsonText json;
  WriteValue<Form>(json, record);
  return json.Take();
}

}  // namespace imsdk::bridge
