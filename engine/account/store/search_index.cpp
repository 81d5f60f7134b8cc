#include "account/store/search_index.h"

#include "account/store/message_schema.h"

namespace imsdk::account {

namespace {

constexpr std::int64_t kLittleCount = 16;
constexpr std::int64_t kLittleText = 16 * 1024;
// Some hundredths of a second of work, after which others have their turn.
constexpr std::int64_t kSliceCount = 512;
constexpr std::int64_t kSliceText = 64 * 1024;

}  // namespace

bool SearchIndex::IsBehind() {
  return store_.Use().Prepare("SELECT 1 FROM unindexed LIMIT 1").Step();
}

std::optional<SearchIndex::Missing> SearchIndex::First(std::int64_t count, std::int64_t text) {
  auto row = store_.Use().Prepare(
      "SELECT u.place, coalesce(length(m.body), 0) FROM unindexed u "
      "LEFT JOIN messages m ON m.place=u.place ORDER BY u.place LIMIT ?",
      count + 1);
  std::optional<Missing> first;
  while (row.Step()) {
    text -= row.Int64(1);
    if (first && (count == 0 || text < 0)) {
      first->all = false;
      break;
    }
    first = Missing{row.Int64(0), text >= 0};
    --count;
  }
  return first;
}

void SearchIndex::AddLittle() {
  const auto first = First(kLittleCount, kLittleText);
  if (first && first->all) IndexMessages(store_.Use(), first->last);
}

void SearchIndex::AddSlice() {
  if (const auto first = First(kSliceCount, kSliceText)) IndexMessages(store_.Use(), first->last);
}

}  // namespace imsdk::account
