// Cases for every bound that a record describes: how to fill the field that it is about.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "link/check_bounds.h"

namespace imsdk::test {

template <class Record>
struct BoundCase {
  std::string path;  // of the field, as a refusal names it
  std::size_t most = 0;
  std::function<void(Record&, std::size_t)> fill;  // so that it has this much
};

inline void Fill(std::wstring& text, biz::BoundUnit, std::size_t n) { text.assign(n, L'x'); }
inline void Fill(std::string& text, biz::BoundUnit, std::size_t n) { text.assign(n, 'x'); }
inline void Fill(base::FilePath& path, biz::BoundUnit, std::size_t n) {
  path = base::FilePath(std::wstring(n, L'x'));
}
template <class Entry>
void Fill(std::vector<Entry>& list, biz::BoundUnit unit, std::size_t n) {
  if constexpr (std::is_same_v<Entry, std::wstring>) {
    if (unit != biz::BoundUnit::kEntries) return list.assign(2, L""), Fill(list[1], unit, n);
  }
  list.assign(n, Entry{});
}
template <class Entry>
void Fill(std::shared_ptr<const std::vector<Entry>>& list, biz::BoundUnit unit, std::size_t n) {
  std::vector<Entry> made;
  Fill(made, unit, n);
  list = std::make_shared<const std::vector<Entry>>(std::move(made));
}

template <class Record>
std::vector<BoundCase<Record>> CasesOf();

// The only entry of a list, filled by `fill`.
template <class Entry>
void FillEntry(std::vector<Entry>& list, const BoundCase<Entry>& one, std::size_t n) {
  list.assign(1, Entry{});
  one.fill(list[0], n);
}
template <class Entry>
void FillEntry(std::shared_ptr<const std::vector<Entry>>& list, const BoundCase<Entry>& one,
               std::size_t n) {
  std::vector<Entry> made;
  FillEntry(made, one, n);
  list = std::make_shared<const std::vector<Entry>>(std::move(made));
}

template <class Record, class Field>
void AddCases(std::vector<BoundCase<Record>>& cases, const biz::FieldBound<Record, Field>& bound) {
  cases.push_back({bound.name, bound.most, [bound](Record& record, std::size_t n) {
                     Fill(record.*bound.field, bound.unit, n);
                   }});
  if constexpr (requires { link::internal::ListIn(std::declval<const Field&>()); }) {
    using List = std::decay_t<decltype(link::internal::ListIn(std::declval<const Field&>()))>;
    using Entry = typename List::value_type;
    if constexpr (link::HasBounds<Entry>) {
      for (const auto& one : CasesOf<Entry>()) {
        cases.push_back({std::string(bound.name) + '.' + one.path, one.most,
                         [bound, one](Record& record, std::size_t n) {
                           FillEntry(record.*bound.field, one, n);
                         }});
      }
    }
  }
}

template <class Record, class Field, class Part>
void AddInner(std::vector<BoundCase<Record>>& cases, const biz::InnerBound<Record, Field>& bound,
              const std::function<Part&(Field&)>& part) {
  for (const auto& one : CasesOf<Part>()) {
    cases.push_back({link::internal::Join(bound.name, one.path.c_str()), one.most,
                     [bound, one, part](Record& record, std::size_t n) {
                       one.fill(part(record.*bound.field), n);
                     }});
  }
}
template <class Record, class Field>
void AddCases(std::vector<BoundCase<Record>>& cases, const biz::InnerBound<Record, Field>& bound) {
  if constexpr (link::HasBounds<Field>) {
    AddInner<Record, Field, Field>(cases, bound, [](Field& field) -> Field& { return field; });
  } else {
    const auto of_each = [&]<class... Part>(const std::variant<Part...>*) {
      (AddInner<Record, Field, Part>(cases, bound,
                                     [](Field& field) -> Part& {
                                       return std::holds_alternative<Part>(field)
                                                  ? std::get<Part>(field)
                                                  : field.template emplace<Part>();
                                     }),
       ...);
    };
    of_each(static_cast<const Field*>(nullptr));
  }
}
// What a record holds all together is tried by itself.
template <class Record>
void AddCases(std::vector<BoundCase<Record>>&, const biz::WholeBound&) {}

template <class Record>
std::vector<BoundCase<Record>> CasesOf() {
  std::vector<BoundCase<Record>> cases;
  std::apply([&](const auto&... bound) { (AddCases(cases, bound), ...); }, Record::Bounds());
  return cases;
}

}  // namespace imsdk::test
