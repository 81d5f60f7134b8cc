// Lists without repetitions.
#pragma once

#include <unordered_set>
#include <vector>

namespace base {

// Each item of `all` once, where it comes first. T has a hash. Any thread.
template <class T>
std::vector<T> Distinct(const std::vector<T>& all) {
  std::unordered_set<T> seen;
  std::vector<T> distinct;
  for (const T& item : all) {
    if (seen.insert(item).second) distinct.push_back(item);
  }
  return distinct;
}

}  // namespace base
