#include "kexbase/file_path.h"

#include "kexbase/path_syntax.h"
#include "kexbase/strings.h"

namespace base {

namespace {

using internal::kPathSeparators;
using View = std::wstring_view;

// The length of what a path cannot lose at its beginning: the drive and the separators after it.
size_t RootLength(View path) {
  const size_t drive = internal::DriveLength(path);
  const size_t first = path.find_first_not_of(kPathSeparators, drive);
  return first == View::npos ? path.size() : first;
}

View WithoutTrailingSeparators(View path) {
  const size_t root = RootLength(path);
  const size_t last = path.find_last_not_of(kPathSeparators);
  return path.substr(0, last == View::npos ? root : std::max(root, last + 1));
}

// The root with one separator at most: "///" is "/".
View ShortRoot(View path) {
  return path.substr(0, std::min(RootLength(path), internal::DriveLength(path) + 1));
}

// Where the last component of a path without trailing separators begins.
size_t LastComponent(View path) {
  const size_t separator = path.find_last_of(kPathSeparators);
  return std::max(RootLength(path), separator == View::npos ? 0 : separator + 1);
}

}  // namespace

FilePath FilePath::FromUTF8(std::string_view utf8) { return FilePath(UTF8ToWide(utf8)); }

std::string FilePath::AsUTF8() const { return WideToUTF8(value_); }

FilePath FilePath::Append(View component) const {
  if (empty()) return FilePath(std::wstring(component));
  const size_t first = component.find_first_not_of(kPathSeparators);
  if (first == View::npos) return *this;
  std::wstring joined = value_;
  const bool mere_drive = internal::DriveLength(value_) == value_.size();
  if (!mere_drive && kPathSeparators.find(joined.back()) == View::npos) {
    joined += kPathSeparators.front();
  }
  joined += component.substr(first);
  return FilePath(std::move(joined));
}

FilePath FilePath::BaseName() const {
  const View path = WithoutTrailingSeparators(value_);
  const size_t component = LastComponent(path);
  if (component < path.size()) return FilePath(std::wstring(path.substr(component)));
  return FilePath(std::wstring(ShortRoot(path).substr(internal::DriveLength(path))));
}

std::wstring FilePath::Extension() const {
  const std::wstring name = BaseName().value();
  const size_t dot = name.rfind(L'.');
  if (dot == std::wstring::npos || dot == 0 || name == L"..") return {};
  return name.substr(dot);
}

}  // namespace base
