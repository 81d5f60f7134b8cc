// Builds values from the events of a JSON parser.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kexbase/values.h"

namespace base::internal {

// The handler of the parser's events; an event that returns false ends the parsing.
class ValueBuilder {
 public:
  explicit ValueBuilder(int max_depth) : max_depth_(static_cast<size_t>(max_depth)) {
    stack_.reserve(32);
  }

  // The finished value, after the parser's last event.
  Value TakeRoot() { return std::move(stack_.front().value); }

  // Why an event returned false: a number beyond a double; else the nesting.
  bool number_too_big() const { return number_too_big_; }

  bool Null() { return Add(Value()); }
  bool Bool(bool value) { return Add(value); }
  // The parser hands every number over as it is written.
  bool RawNumber(const char* text, unsigned length, bool);
  bool Int(int) { return false; }
  bool Uint(unsigned) { return false; }
  bool Int64(int64_t) { return false; }
  bool Uint64(uint64_t) { return false; }
  bool Double(double) { return false; }
  bool String(const char* text, unsigned length, bool) {
    return Add(std::string_view(text, length));
  }
  bool Key(const char* text, unsigned length, bool) {
    stack_.push_back({std::string(text, length), Value()});
    after_key_ = true;
    return true;
  }

  bool StartObject() { return Open(); }
  bool EndObject(unsigned count);
  bool StartArray() { return Open(); }
  bool EndArray(unsigned count);

 private:
  bool Add(Value&& value) {
    if (after_key_) {
      stack_.back().value = std::move(value);
    } else {
      stack_.push_back({std::string(), std::move(value)});
    }
    after_key_ = false;
    return true;
  }

  bool Open() {
    opened_after_key_.push_back(after_key_);
    after_key_ = false;
    return opened_after_key_.size() <= max_depth_;
  }

  bool Close(unsigned count, Value&& container) {
    stack_.resize(stack_.size() - count);
    after_key_ = opened_after_key_.back();
    opened_after_key_.pop_back();
    return Add(std::move(container));
  }

  // What belongs to objects and arrays that are still open, the innermost last. The elements of an
  // array have no key; the last pair may have no value yet.
  std::vector<DictionaryValue::Entry> stack_;
  std::vector<bool> opened_after_key_;  // for each open object and array
  bool after_key_ = false;
  bool number_too_big_ = false;
  const size_t max_depth_;
};

}  // namespace base::internal
