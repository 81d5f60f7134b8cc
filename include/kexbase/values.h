// JSON values in memory.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace base {

class Value;

// An object: pairs of key and value in the order in which the keys were added. Keys are UTF-8 and
// unique. Made for the few keys of a record: a look-up compares the keys one after another.
//
// A value type: copying copies everything below. Like all of this file it may be read by several
// threads at once, and must not be read while it is changed. Pointers and references into it are
// good until it is next changed or destroyed.
class DictionaryValue {
 public:
  struct Entry;
  using const_iterator = const Entry*;

  DictionaryValue() noexcept;
  // Takes over pairs. The caller knows that their keys are unique.
  explicit DictionaryValue(std::vector<Entry> entries) noexcept;
  DictionaryValue(DictionaryValue&&) noexcept;
  DictionaryValue(const DictionaryValue&);
  DictionaryValue& operator=(DictionaryValue&&) noexcept;
  DictionaryValue& operator=(const DictionaryValue&);
  ~DictionaryValue();

  // The value under `key`, or null.
  const Value* Find(std::string_view key) const;
  Value* Find(std::string_view key);

  // Puts `value` under `key`: in the key's place if it is there, else at the end. Returns the value
  // in its place.
  Value& Set(std::string_view key, Value value);

  // Adds a pair at the end without looking. The caller knows that the key is new.
  Value& Append(std::string key, Value value);

  // Takes the pair out, the others keep their order. False if there is none.
  bool Remove(std::string_view key);

  void Reserve(size_t size);
  size_t size() const;
  bool empty() const { return size() == 0; }

  // for (const auto& [key, value] : dictionary)
  const_iterator begin() const;
  const_iterator end() const;

  // The same keys in the same order with equal values.
  friend bool operator==(const DictionaryValue& a, const DictionaryValue& b);

 private:
  std::vector<Entry> entries_;
};

// An array. What DictionaryValue says of threads, copies and pointers holds here too.
class ListValue {
 public:
  using const_iterator = const Value*;

  ListValue() noexcept;
  explicit ListValue(std::vector<Value> values) noexcept;
  ListValue(ListValue&&) noexcept;
  ListValue(const ListValue&);
  ListValue& operator=(ListValue&&) noexcept;
  ListValue& operator=(const ListValue&);
  ~ListValue();

  // Adds `value` at the end and returns it in its place.
  Value& Append(Value value);

  // `index` must be below size().
  const Value& operator[](size_t index) const;
  Value& operator[](size_t index);

  void Reserve(size_t size);
  size_t size() const;
  bool empty() const { return size() == 0; }
  const_iterator begin() const;
  const_iterator end() const;

  friend bool operator==(const ListValue& a, const ListValue& b);

 private:
  std::vector<Value> values_;
};

// One JSON value. A moved-from value is null.
class Value {
 public:
  enum class Type { kNull, kBool, kInt64, kUint64, kDouble, kString, kDictionary, kList };

  Value() noexcept : type_(Type::kNull), integer_(0) {}
  Value(Value&& other) noexcept { MoveFrom(other); }
  Value(const Value& other) { CopyFrom(other); }
  Value& operator=(Value&& other) noexcept;
  Value& operator=(const Value& other);
  ~Value() { DestroyContent(); }

  // From what it shall hold; implicit, so that `dictionary.Set("code", 0)` reads as it should.
  // Integers of every size are kept exactly: as int64, above INT64_MAX as uint64. Text is UTF-8.
  template <std::same_as<bool> T>
  Value(T value) : type_(Type::kBool), bool_(value) {}
  template <std::integral T>
  requires(!std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t>)
      Value(T value)
      : type_(Type::kInt64), integer_(static_cast<int64_t>(value)) {
    // An int64 and a uint64 of the same value have the same bits.
    if constexpr (std::unsigned_integral<T> && sizeof(T) == sizeof(uint64_t)) {
      if (value > static_cast<uint64_t>(INT64_MAX)) type_ = Type::kUint64;
    }
  }
  Value(double value) : type_(Type::kDouble), double_(value) {}
  Value(std::string value) : type_(Type::kString), string_(std::move(value)) {}
  Value(std::string_view value) : type_(Type::kString), string_(value) {}
  Value(const char* value) : type_(Type::kString), string_(value) {}
  Value(DictionaryValue value) : type_(Type::kDictionary), dictionary_(std::move(value)) {}
  Value(ListValue value) : type_(Type::kList), list_(std::move(value)) {}

  Type type() const { return type_; }

  bool is_null() const { return type_ == Type::kNull; }
  bool is_bool() const { return type_ == Type::kBool; }
  bool is_string() const { return type_ == Type::kString; }
  bool is_dict() const { return type_ == Type::kDictionary; }
  bool is_list() const { return type_ == Type::kList; }

  // What the value holds, or nothing when it holds something else. A double is never an integer,
  // not even 1.0; an integer is also a double (rounded if it must be). GetIfInt64 and GetIfUint64
  // answer for every integer in their range.
  std::optional<bool> GetIfBool() const;
  std::optional<int64_t> GetIfInt64() const;
  std::optional<uint64_t> GetIfUint64() const;
  std::optional<double> GetIfDouble() const;
  const std::string* GetIfString() const { return is_string() ? &string_ : nullptr; }
  std::string* GetIfString() { return is_string() ? &string_ : nullptr; }
  const DictionaryValue* GetIfDict() const { return is_dict() ? &dictionary_ : nullptr; }
  DictionaryValue* GetIfDict() { return is_dict() ? &dictionary_ : nullptr; }
  const ListValue* GetIfList() const { return is_list() ? &list_ : nullptr; }
  ListValue* GetIfList() { return is_list() ? &list_ : nullptr; }

  // The same type and the same content; 1 and 1.0 differ.
  friend bool operator==(const Value& a, const Value& b);

 private:
  // Both begin the life of this value's content.
  void MoveFrom(Value& other) noexcept;
  void CopyFrom(const Value& other);
  // Leaves a value that only MoveFrom and CopyFrom may touch.
  void DestroyContent() noexcept;

  Type type_;
  union {
    bool bool_;
    int64_t integer_;  // of a uint64, its bits
    double double_;
    std::string string_;
    DictionaryValue dictionary_;
    ListValue list_;
  };
};

struct DictionaryValue::Entry {
  std::string key;
  Value value;
};

// Moving is what building a value mostly does, so it is inline.
inline void Value::MoveFrom(Value& other) noexcept {
  type_ = other.type_;
  switch (type_) {
    case Type::kString:
      std::construct_at(&string_, std::move(other.string_));
      break;
    case Type::kDictionary:
      std::construct_at(&dictionary_, std::move(other.dictionary_));
      break;
    case Type::kList:
      std::construct_at(&list_, std::move(other.list_));
      break;
    default:
      std::memcpy(static_cast<void*>(&integer_), &other.integer_, sizeof(integer_));
      break;
  }
  other.DestroyContent();
  other.type_ = Type::kNull;
}

inline void Value::DestroyContent() noexcept {
  if (type_ < Type::kString) return;
  if (type_ == Type::kString) {
    std::destroy_at(&string_);
  } else if (type_ == Type::kDictionary) {
    std::destroy_at(&dictionary_);
  } else {
    std::destroy_at(&list_);
  }
}

inline Value& Value::operator=(Value&& other) noexcept {
  Value taken(std::move(other));  // first: it may be part of what is destroyed here
  DestroyContent();
  MoveFrom(taken);
  return *this;
}

inline DictionaryValue::DictionaryValue() noexcept = default;
inline DictionaryValue::DictionaryValue(std::vector<Entry> entries) noexcept
    : entries_(std::move(entries)) {}
inline DictionaryValue::DictionaryValue(DictionaryValue&&) noexcept = default;
inline DictionaryValue& DictionaryValue::operator=(DictionaryValue&&) noexcept = default;
inline size_t DictionaryValue::size() const { return entries_.size(); }
inline DictionaryValue::const_iterator DictionaryValue::begin() const { return entries_.data(); }
inline DictionaryValue::const_iterator DictionaryValue::end() const {
  return entries_.data() + entries_.size();
}

inline ListValue::ListValue() noexcept = default;
inline ListValue::ListValue(std::vector<Value> values) noexcept : values_(std::move(values)) {}
inline ListValue::ListValue(ListValue&&) noexcept = default;
inline ListValue& ListValue::operator=(ListValue&&) noexcept = default;
inline const Value& ListValue::operator[](size_t index) const { return values_[index]; }
inline Value& ListValue::operator[](size_t index) { return values_[index]; }
inline size_t ListValue::size() const { return values_.size(); }
inline ListValue::const_iterator ListValue::begin() const { return values_.data(); }
inline ListValue::const_iterator ListValue::end() const { return values_.data() + values_.size(); }

}  // namespace base
