// Writes JSON as wide text, straight from records: the answer's one serialisation.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace imsdk::bridge {

// A JSON text in the making. Calls come in document order; commas come by themselves. Text that is
// no valid Unicode becomes U+FFFD.
class JsonText {
 public:
  void BeginObject() { Open(L'{'); }
  void EndObject() { Close(L'}'); }
  void BeginList() { Open(L'['); }
  void EndList() { Close(L']'); }
  // `key` is ASCII that needs no escaping.
  void Key(std::string_view key);
  void String(std::wstring_view text);
  void Integer(std::int64_t value);
  // A 64-bit value as its decimal text.
  void DecimalString(std::int64_t value);

  std::wstring Take() { return std::move(text_); }

 private:
  void Separate();
  void Open(wchar_t bracket);
  void Close(wchar_t bracket);
  void AppendDigits(std::int64_t value);
  void AppendSpecial(std::wstring_view text, std::size_t* index);

  std::wstring text_;
  bool comma_ = false;  // the next value in this object or list needs a comma before it
};

}  // namespace imsdk::bridge
