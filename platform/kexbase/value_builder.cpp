#include "kexbase/value_builder.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>

namespace base::internal {

namespace {

using Entry = DictionaryValue::Entry;

// Up to this many keys are compared each with each, which is faster than sorting them.
constexpr size_t kFewKeys = 16;

bool AreFewAndDistinct(const std::vector<Entry>& entries) {
  if (entries.size() > kFewKeys) return false;
  for (size_t i = 1; i < entries.size(); ++i) {
    for (size_t j = 0; j < i; ++j) {
      if (entries[i].key == entries[j].key) return false;
    }
  }
  return true;
}

// Gives the last value of each key to the first pair with that key and drops the pairs after it.
void ResolveDuplicates(std::vector<Entry>* entries) {
  std::vector<Entry*> order;
  order.reserve(entries->size());
  for (Entry& entry : *entries) order.push_back(&entry);
  std::sort(order.begin(), order.end(), [](const Entry* a, const Entry* b) {
    const int compared = a->key.compare(b->key);
    return compared != 0 ? compared < 0 : a < b;
  });
  std::vector<bool> dropped(entries->size());
  for (size_t first = 0; first < order.size();) {
    size_t next = first + 1;
    for (; next < order.size() && order[next]->key == order[first]->key; ++next) {
      dropped[static_cast<size_t>(order[next] - entries->data())] = true;
    }
    if (next > first + 1) order[first]->value = std::move(order[next - 1]->value);
    first = next;
  }
  size_t kept = 0;
  for (size_t i = 0; i < entries->size(); ++i) {
    if (dropped[i]) continue;
    if (kept != i) (*entries)[kept] = std::move((*entries)[i]);
    ++kept;
  }
  entries->resize(kept);
}

template <class Number>
std::optional<Number> NumberOf(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// Whether a number that no double holds is too small for one, not too large. It is not zero.
bool IsTiny(std::string_view text) {
  const size_t mark = text.find_first_of("eE");
  const std::string_view digits = text.substr(0, mark);
  const auto point = static_cast<int64_t>(std::min(digits.find('.'), digits.size()));
  const auto first = static_cast<int64_t>(digits.find_first_of("123456789"));
  if (mark == std::string_view::npos) return first > point;
  std::string_view exponent = text.substr(mark + 1);
  if (exponent.front() == '+') exponent.remove_prefix(1);
  // One beyond any integer is longer than the digits could outweigh.
  const auto power = NumberOf<int64_t>(exponent);
  return power ? point - first + *power < 0 : exponent.front() == '-';
}

}  // namespace

bool ValueBuilder::RawNumber(const char* characters, unsigned length, bool) {
  const std::string_view text(characters, length);
  if (text.find_first_of(".eE") == std::string_view::npos) {
    if (const auto number = NumberOf<int64_t>(text)) return Add(*number);
    if (const auto number = NumberOf<uint64_t>(text)) return Add(*number);
  }
  if (const auto number = NumberOf<double>(text)) return Add(*number);
  if (IsTiny(text)) return Add(text.front() == '-' ? -0.0 : 0.0);
  number_too_big_ = true;
  return false;
}

bool ValueBuilder::EndObject(unsigned count) {
  const auto first = stack_.end() - static_cast<ptrdiff_t>(count);
  std::vector<Entry> entries(std::make_move_iterator(first), std::make_move_iterator(stack_.end()));
  if (!AreFewAndDistinct(entries)) ResolveDuplicates(&entries);
  return Close(count, DictionaryValue(std::move(entries)));
}

bool ValueBuilder::EndArray(unsigned count) {
  std::vector<Value> values;
  values.reserve(count);
  for (auto it = stack_.end() - static_cast<ptrdiff_t>(count); it != stack_.end(); ++it) {
    values.push_back(std::move(it->value));
  }
  return Close(count, ListValue(std::move(values)));
}

}  // namespace base::internal
