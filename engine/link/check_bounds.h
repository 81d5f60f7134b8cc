// Walks the bounds that records describe beside their fields. Both halves of the engine use it at
// their doors; see imsdk/biz/bounds.h.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <variant>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/file_path.h"
#include "kexbase/strings.h"

namespace imsdk::link {

template <class Record>
concept HasBounds = requires {
  Record::Bounds();
};

// What a record holds besides itself.
struct Held {
  std::size_t text = 0;     // texts in bytes of UTF-8, and the entries of lists
  std::size_t content = 0;  // bytes that are no text

  std::size_t all() const { return text + content; }
  Held& operator+=(const Held& other) {
    text += other.text;
    content += other.content;
    return *this;
  }
};

// What is refused for being over a bound.
inline biz::ResultCode Beyond(const std::string& path, biz::BoundUnit unit, std::size_t most) {
  const char* units[] = {"letters", "bytes", "bytes", "entries"};
  return {biz::kEngineTooLarge, 0,
          base::UTF8ToWide('"' + path + "\" is over " + base::NumberToString(most) + ' ' +
                           units[static_cast<std::size_t>(unit)])};
}

namespace internal {

// How much of a unit something has. Stops counting beyond `most`, so that a refusal costs no more
// than what is taken.
class Measure {
 public:
  Measure(biz::BoundUnit unit, std::size_t most) : unit_(unit), most_(most) {}

  void Add(const std::wstring& text) {
    const std::size_t least = text.size();
    if (found_ > most_ || least > most_ - found_) {
      found_ += least;  // beyond, however long its letters are
    } else {
      found_ +=
          unit_ == biz::BoundUnit::kLetters ? base::Utf16Length(text) : base::Utf8Length(text);
    }
  }
  void Add(const std::string& bytes) { found_ += bytes.size(); }
  void Add(const base::FilePath& path) { Add(path.value()); }
  void Add(const std::vector<std::wstring>& texts) {
    for (const std::wstring& text : texts) {
      Add(text);
      if (found_ > most_) return;
    }
  }

  std::size_t found() const { return found_; }
  bool beyond() const { return found_ > most_; }

 private:
  const biz::BoundUnit unit_;
  const std::size_t most_;
  std::size_t found_ = 0;
};

template <class Entry>
const std::vector<Entry>& ListIn(const std::vector<Entry>& list) {
  return list;
}
template <class Entry>
const std::vector<Entry>& ListIn(const std::shared_ptr<const std::vector<Entry>>& list) {
  static const std::vector<Entry> kNone;
  return list ? *list : kNone;
}

inline std::string Join(const std::string& path, const char* name) {
  if (*name == '\0') return path;
  return path.empty() ? std::string(name) : path + '.' + name;
}

template <class Record>
biz::ResultCode Check(const Record& record, const std::string& path, Held* held);

template <class Record, class Field>
biz::ResultCode CheckBound(const Record& record, const biz::FieldBound<Record, Field>& bound,
                           const std::string& path, Held* held) {
  const auto beyond = [&] { return Beyond(Join(path, bound.name), bound.unit, bound.most); };
  const Field& field = record.*bound.field;
  if constexpr (requires { ListIn(field).size(); }) {
    if (bound.unit == biz::BoundUnit::kEntries) {
      const auto& list = ListIn(field);
      using Entry = typename std::decay_t<decltype(list)>::value_type;
      if (list.size() > bound.most) return beyond();
      held->text += list.size() * sizeof(Entry);
      if constexpr (HasBounds<Entry>) {
        for (const Entry& entry : list) {
          const biz::ResultCode result = Check(entry, Join(path, bound.name), held);
          if (!result.ok()) return result;
        }
      }
      return {};
    }
  }
  if constexpr (requires(Measure & measure) { measure.Add(field); }) {
    Measure measure(bound.unit, bound.most);
    measure.Add(field);
    if (measure.beyond()) return beyond();
    (bound.unit == biz::BoundUnit::kContent ? held->content : held->text) += measure.found();
  }
  return {};
}

template <class Record, class Field>
biz::ResultCode CheckBound(const Record& record, const biz::InnerBound<Record, Field>& bound,
                           const std::string& path, Held* held) {
  const Field& field = record.*bound.field;
  const std::string inside = Join(path, bound.name);
  if constexpr (HasBounds<Field>) {
    return Check(field, inside, held);
  } else {
    return std::visit([&](const auto& one) { return Check(one, inside, held); }, field);
  }
}

template <class Record>
biz::ResultCode CheckBound(const Record&, const biz::WholeBound& bound, const std::string& path,
                           Held* held) {
  const std::size_t found = bound.unit == biz::BoundUnit::kContent ? held->content : held->text;
  return found > bound.most ? Beyond(Join(path, bound.name), bound.unit, bound.most)
                            : biz::ResultCode{};
}

template <class Record>
biz::ResultCode Check(const Record& record, const std::string& path, Held* held) {
  Held own;
  biz::ResultCode result;
  std::apply(
      [&](const auto&... bound) {
        // The first one that is broken ends the walk.
        static_cast<void>(((result = CheckBound(record, bound, path, &own), result.ok()) && ...));
      },
      Record::Bounds());
  *held += own;
  return result;
}

}  // namespace internal

// `kEngineTooLarge` for a record that breaks one of its bounds. `*held`, when it is given, becomes
// what the record holds as far as it was looked at. Any thread.
template <class Record>
biz::ResultCode CheckBounds(const Record& record, Held* held = nullptr) {
  Held here;
  biz::ResultCode result;
  if constexpr (HasBounds<Record>) result = internal::Check(record, {}, &here);
  if (held) *held = here;
  return result;
}

}  // namespace imsdk::link
