// Names of files.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <utility>

namespace base {

// A path as wide text. A plain value: it touches no file system, resolves neither "." nor "..", and
// compares letter by letter. On Windows both "\" and "/" separate components, the first is written,
// and a path may begin with a drive ("C:"); elsewhere only "/" separates.
class FilePath {
 public:
  FilePath() = default;
  explicit FilePath(std::wstring value) : value_(std::move(value)) {}

  // Conversions as in kexbase/strings.h: any text is taken.
  static FilePath FromUTF8(std::string_view utf8);
  std::string AsUTF8() const;

  const std::wstring& value() const { return value_; }
  bool empty() const { return value_.empty(); }

  // This path, a separator if one is missing, and `component`. Separators that `component` begins
  // with are dropped, so an absolute one does not replace this path; a ".." in it still leads out.
  // An empty side gives the other one unchanged.
  FilePath Append(std::wstring_view component) const;
  FilePath Append(const FilePath& component) const { return Append(component.value_); }

  // The last component, without separators at its end: "c" for "a/b/c" and "a/b/c/", the root for a
  // root, empty for an empty path and for a mere drive.
  FilePath BaseName() const;

  // From the last "." of the last component on, "." included: ".png". Empty when there is none and
  // for names whose only "." begins them (".profile", ".", "..").
  std::wstring Extension() const;

  friend bool operator==(const FilePath& a, const FilePath& b) { return a.value_ == b.value_; }
  friend auto operator<=>(const FilePath& a, const FilePath& b) { return a.value_ <=> b.value_; }

 private:
  std::wstring value_;
};

}  // namespace base
