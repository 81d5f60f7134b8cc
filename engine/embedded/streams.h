// What happened, in the order of the server: the streams that an account's feed is merged from.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "link/message.h"
#include "sqlite/database.h"

namespace imsdk::embedded {

// A place in the order of the server, one order for everything; counted from 1.
using Position = std::int64_t;
inline constexpr Position kNever = std::numeric_limits<Position>::max();

// A sequence of happenings that has its readers: what concerns one account alone, what happens to
// the messages of a tribe, and those messages themselves, which are in no other place than their
// conversation; and, for a device that lost them, the messages that an account sent to others.
struct Stream {
  enum class Kind : std::int32_t { kAccount, kTribe, kTribeMessages, kSent };
  Kind kind = Kind::kAccount;
  std::int64_t id = 0;  // an account, or a tribe's conversation

  friend auto operator<=>(const Stream&, const Stream&) = default;
};

// One happening of a stream.
struct Element {
  Position position = 0;
  std::int64_t device = 0;  // knows it already; 0 for none
  Position previous = 0;    // of a message: where its sender's one before it is
  link::Entry entry;
};

// The elements of a stream from one position on.
struct StreamPart {
  std::vector<Element> elements;
  Position next = 0;  // where the stream goes on; 0 when it does not
};

// The text that goes to a client at once, about.
inline constexpr std::size_t kMostBytes = 4 * 1024 * 1024;

struct StreamRequest {
  Stream stream;
  Position from = 1;
  Position until = kNever;  // behind it there is nothing to see
  Position stop = kNever;   // up to and with this at most
  std::int64_t device = 0;  // without what this one knows; 0 for everything
  // At most this many, and no more after this much text. None tells just where the stream goes on.
  std::size_t count = 0;
  std::size_t bytes = kMostBytes;
};

// By the index of the streams, whatever lies between their elements. Throws `sqlite::Error`.
StreamPart ReadStream(sqlite::Database& database, const StreamRequest& request);

// The text that an entry carries, in bytes.
std::size_t TextOf(const link::Message& message);
std::size_t TextOf(const link::Entry& entry);

// A place as the link has it: a decimal number from 1 on.
std::optional<Position> ParsePosition(const std::string& text);

}  // namespace imsdk::embedded
