// The item record of a trace line: one text that holds its values, for log collectors.
#pragma once

#include <string>
#include <string_view>

#include "kexbase/values.h"

namespace base {

// Puts the record "%d|%d|%d%s%s%s" together: three lengths in characters of wide text, then the key
// group, the group of the other trace items, and the brief values. The items named "node_name",
// "unique_id" and "result_code" are the key group; both groups are JSON objects of strings. One
// thread; throws for lack of memory only.
class TraceRecord {
 public:
  // Both keep the order of the calls. `name` is UTF-8. An item of a name that is there replaces it.
  void AddItem(std::string_view name, std::wstring_view value);
  void AddBrief(std::string_view name, std::wstring_view value);

  std::wstring Text() const;

 private:
  DictionaryValue keys_;
  DictionaryValue others_;
  std::wstring briefs_;  // " a=1,b=2"
};

}  // namespace base
