#include "kexbase/values.h"

#include <algorithm>
#include <memory>

namespace base {

DictionaryValue::DictionaryValue(const DictionaryValue&) = default;
DictionaryValue& DictionaryValue::operator=(const DictionaryValue&) = default;
DictionaryValue::~DictionaryValue() = default;

const Value* DictionaryValue::Find(std::string_view key) const {
  for (const Entry& entry : entries_) {
    if (entry.key == key) return &entry.value;
  }
  return nullptr;
}

Value* DictionaryValue::Find(std::string_view key) {
  return const_cast<Value*>(std::as_const(*this).Find(key));
}

Value& DictionaryValue::Set(std::string_view key, Value value) {
  if (Value* const found = Find(key)) return *found = std::move(value);
  return Append(std::string(key), std::move(value));
}

Value& DictionaryValue::Append(std::string key, Value value) {
  return entries_.emplace_back(Entry{std::move(key), std::move(value)}).value;
}

bool DictionaryValue::Remove(std::string_view key) {
  return std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; }) > 0;
}

void DictionaryValue::Reserve(size_t size) { entries_.reserve(size); }

bool operator==(const DictionaryValue& a, const DictionaryValue& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const DictionaryValue::Entry& x, const DictionaryValue::Entry& y) {
                      return x.key == y.key && x.value == y.value;
                    });
}

ListValue::ListValue(const ListValue&) = default;
ListValue& ListValue::operator=(const ListValue&) = default;
ListValue::~ListValue() = default;

Value& ListValue::Append(Value value) { return values_.emplace_back(std::move(value)); }

void ListValue::Reserve(size_t size) { values_.reserve(size); }

bool operator==(const ListValue& a, const ListValue& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

Value& Value::operator=(const Value& other) { return *this = Value(other); }

void Value::CopyFrom(const Value& other) {
  switch (other.type_) {
    case Type::kNull:
      integer_ = 0;
      break;
    case Type::kBool:
      bool_ = other.bool_;
      break;
    case Type::kInt64:
    case Type::kUint64:
      integer_ = other.integer_;
      break;
    case Type::kDouble:
      double_ = other.double_;
      break;
    case Type::kString:
      std::construct_at(&string_, other.string_);
      break;
    case Type::kDictionary:
      std::construct_at(&dictionary_, other.dictionary_);
      break;
    case Type::kList:
      std::construct_at(&list_, other.list_);
      break;
  }
  type_ = other.type_;
}

bool operator==(const Value& a, const Value& b) {
  if (a.type_ != b.type_) return false;
  switch (a.type_) {
    case Value::Type::kNull:
      return true;
    case Value::Type::kBool:
      return a.bool_ == b.bool_;
    case Value::Type::kInt64:
    case Value::Type::kUint64:
      return a.integer_ == b.integer_;
    case Value::Type::kDouble:
      return a.double_ == b.double_;
    case Value::Type::kString:
      return a.string_ == b.string_;
    case Value::Type::kDictionary:
      return a.dictionary_ == b.dictionary_;
    case Value::Type::kList:
      return a.list_ == b.list_;
  }
  return false;
}

std::optional<bool> Value::GetIfBool() const {
  return is_bool() ? std::optional(bool_) : std::nullopt;
}

std::optional<int64_t> Value::GetIfInt64() const {
  return type_ == Type::kInt64 ? std::optional(integer_) : std::nullopt;
}

std::optional<uint64_t> Value::GetIfUint64() const {
  const bool fits = type_ == Type::kUint64 || (type_ == Type::kInt64 && integer_ >= 0);
  return fits ? std::optional(static_cast<uint64_t>(integer_)) : std::nullopt;
}

std::optional<double> Value::GetIfDouble() const {
  if (type_ == Type::kDouble) return double_;
  if (type_ == Type::kInt64) return static_cast<double>(integer_);
  if (type_ == Type::kUint64) return static_cast<double>(static_cast<uint64_t>(integer_));
  return std::nullopt;
}

}  // namespace base
