// Writes JSON as wide text, straight from records: the answer's one serialisation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace imsdk::bridge {

// A JSON text in the making. Calls come in document order; commas come by themselves. Text that is
// no valid Unicode becomes U+FFFD.
class JsonText {
 public:
  JsonText();
  ~JsonText();
  JsonText(const JsonText&) = delete;
  JsonText& operator=(const JsonText&) = delete;

  void BeginObject() { Open(L'{'); }
  void EndObject() { Close(L'}'); }
  void BeginList() { Open(L'['); }
  void EndList() { Close(L']'); }
  // `key` is ASCII that needs no escaping.
  void Key(std::string_view key);
  void String(std::wstring_view text);
  void Integer(std::int64_t value);
  void Boolean(bool value);
  // A 64-bit value as its decimal text.
  void DecimalString(std::int64_t value);

  // About so many characters are still to come: what is long is then allocated once.
  void Expect(std::size_t characters);
  std::size_t size() const { return front_.size() + size_; }

  std::wstring Take();

 private:
  // Where the next `count` characters go.
  wchar_t* Room(std::size_t count) {
    if (count > buffer_.room - size_) Grow(count);
    const std::size_t at = size_;
    size_ += count;
    return buffer_.text.get() + at;
  }
  void Grow(std::size_t count);
  void Put(wchar_t c) { *Room(1) = c; }
  void Open(wchar_t bracket);
  void Close(wchar_t bracket);
  void PutSpecial(std::wstring_view text, std::size_t* index);

  struct Buffer {
    std::unique_ptr<wchar_t[]> text;
    std::size_t room = 0;
  };
  // Each thread keeps the buffer of its last text: growing one anew costs more than writing it.
  static Buffer& Kept();

  std::wstring front_;  // of a long text, what stood before the buffer
  Buffer buffer_;
  std::size_t size_ = 0;  // of what is in the buffer
  bool comma_ = false;    // the next value in this object or list needs a comma before it
};

}  // namespace imsdk::bridge
