#include "account/store/message_search.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <set>
#include <utility>

#include "account/conversations/page_limits.h"
#include "account/files/file_tokens.h"
#include "account/store/message_schema.h"
#include "account/store/search_words.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

// Whether a message `m` passes a `Filter`.
#define PASSES(senders, relations)                                                 \
  "(" senders "='' OR instr(" senders ", ',' || m.sender || ',')) AND (" relations \
  "='' OR instr(" relations ", ',' || m.relation || ','))"

constexpr std::int32_t kMostNumbered = 100;  // on a page that goes by number, which is never cut

std::string InConversation(std::int64_t conversation) {
  return "facets : \"c" + base::NumberToString(conversation) + '"';
}

std::string OfKinds(const ChatKinds& kinds) {
  std::string expression;
  for (const biz::IMCIDType kind : kinds) {
    expression += expression.empty() ? "facets : (" : " OR ";
    expression += "\"k" + base::NumberToString(static_cast<std::int32_t>(kind)) + '"';
  }
  return expression + ')';
}

// The index's expression for what a request looks for, then `where`; nothing when no message can
// fit. A keyword stands in quotes, inside which only the quote itself means something.
std::optional<std::string> Expression(const biz::IMSearchRequest& request,
                                      const std::string& where) {
  std::string expression;
  std::set<std::string> known;
  for (const std::wstring& wide : request.keywords) {
    const std::string keyword = base::WideToUTF8(wide);
    if (!known.insert(keyword).second) continue;
    const KeywordUnits has = UnitsOf(keyword);
    if (has.count == 0) return std::nullopt;
    expression += "body : \"";
    for (const char letter : keyword) {
      if (letter == '"') expression += '"';
      expression += letter == '\0' ? ' ' : letter;
    }
    expression += has.ends_in_word ? "\" * AND " : "\" AND ";
  }
  if (!request.msgtypes.empty()) {
    const char* before = "facets : (";
    for (const std::int32_t type : request.msgtypes) {
      const auto bits = static_cast<unsigned long long>(std::int64_t{type});
      expression += before + base::StringPrintf("\"t%llx\"", bits);
      before = " OR ";
    }
    expression += ") AND ";
  }
  return expression + where;
}

}  // namespace

MessageSearch::Visible MessageSearch::VisiblePart(std::int64_t conversation, bool ignore_boundary) {
  Visible visible;
  if (ignore_boundary) return visible;
  const Part part = parts_.Current(conversation);
  if (part.whole) return visible;
  visible.part = part.number;
  visible.range.first =
      part.floor.is_end() ? visible.range.last : places_.LastBefore(part.floor) + 1;
  return visible;
}

MessageSearch::Filter MessageSearch::FilterOf(const biz::IMSearchRequest& request) {
  Filter filter;
  for (const biz::IMUserID& user : request.fromids) {
    if (filter.senders.empty()) filter.senders = ",";
    if (user == self_) filter.senders += base::NumberToString(kOwn) + ',';
    auto row = store_.Use().Prepare("SELECT id FROM users WHERE appkey=? AND nick=?", user.appkey,
                                    user.nick);
    if (row.Step()) filter.senders += base::NumberToString(row.Int64(0)) + ',';
  }
  for (const std::int32_t relation : request.atrelations) {
    if (filter.relations.empty()) filter.relations = ",";
    filter.relations += base::NumberToString(relation) + ',';
  }
  return filter;
}

void MessageSearch::Walk(const std::string& expression, const Visible& visible,
                         const Filter& filter, bool older,
                         const std::function<bool(std::int64_t place)>& take) {
  const bool looks = visible.part != kAllParts || !filter.empty();
  auto row = older ? store_.Use().Prepare(
                         "SELECT rowid FROM search WHERE search MATCH ? "
                         "AND rowid BETWEEN ? AND ? ORDER BY rowid DESC",
                         expression, visible.range.first, visible.range.last)
                   : store_.Use().Prepare(
                         "SELECT rowid FROM search WHERE search MATCH ? "
                         "AND rowid BETWEEN ? AND ? ORDER BY rowid",
                         expression, visible.range.first, visible.range.last);
  while (row.Step()) {
    const std::int64_t place = row.Int64(0);
    if (looks) {
      auto fits = store_.Use().Prepare(
          "SELECT 1 FROM messages m WHERE m.place=?1 AND "
          "(?2=-1 OR m.part=?2) AND " PASSES("?3", "?4"),
          place, visible.part, filter.senders, filter.relations);
      if (!fits.Step()) continue;
    }
    if (!take(place)) return;
  }
}

std::vector<biz::IMMessage> MessageSearch::Load(const std::vector<std::int64_t>& places,
                                                std::size_t most_text) {
  std::vector<biz::IMMessage> messages;
  std::size_t text = 0;
  for (const std::int64_t place : places) {
    if (text > most_text) break;
    auto row = store_.Use().Prepare(MESSAGE_QUERY "WHERE m.place=?", place);
    if (!row.Step()) continue;
    messages.push_back(ReadMessage(row, self_));
    text += messages.back().msgbody.size() + messages.back().extinfo.others.size();
  }
  return messages;
}

biz::IMSearchPage MessageSearch::Find(const std::string& expression, Visible visible,
                                      const biz::IMSearchRequest& request) {
  const std::int32_t count = CountOf(request.count, request.needpage ? kMostNumbered : kMostCount);
  const Position at{request.msgtime, request.msgid};
  bool older = true;
  std::int64_t skip = 0;
  biz::IMSearchPage page;
  if (request.needpage) {
    page.currentpage = std::max(request.page, 1);
    skip = std::int64_t{page.currentpage - 1} * count;
  } else {
    older = request.gohistory || at.is_end();
    visible.range.GoOnFrom(places_, at, older);
  }
  visible.range.Between(request.btime, request.etime);

  std::int64_t found = 0;
  std::vector<std::int64_t> places;
  Walk(expression, visible, FilterOf(request), older, [&](std::int64_t place) {
    if (found++ >= skip && places.size() < static_cast<std::size_t>(count)) {
      places.push_back(place);
    }
    return request.needpage || places.size() < static_cast<std::size_t>(count);
  });
  if (request.needpage) {
    page.totalcount = static_cast<std::int32_t>(found);
    page.totalpage = static_cast<std::int32_t>((found + count - 1) / count);
  }
  page.msgs = Load(places, request.needpage ? std::numeric_limits<std::size_t>::max() : kMostText);
  if (older) std::reverse(page.msgs.begin(), page.msgs.end());
  return page;
}

biz::IMSearchPage MessageSearch::Search(const biz::IMConversationID& cid,
                                        const biz::IMSearchRequest& request) {
  const std::int64_t conversation = conversations_.Find(cid);
  const auto expression = Expression(request, InConversation(conversation));
  if (!expression) return {};
  return Find(*expression, VisiblePart(conversation, request.ignoreboundary || request.needpage),
              request);
}

biz::IMSearchPage MessageSearch::SearchAll(const ChatKinds& kinds,
                                           const biz::IMSearchRequest& request) {
  const auto expression = Expression(request, OfKinds(kinds));
  if (!expression) return {};
  return Find(*expression, {}, request);
}

std::vector<biz::IMConversationID> MessageSearch::Conversations(
    const ChatKinds& kinds, const biz::IMSearchRequest& request) {
  const auto expression = Expression(request, OfKinds(kinds));
  if (!expression) return {};
  PlaceRange range;
  range.Between(request.btime, request.etime);
  const Filter filter = FilterOf(request);
  auto row = store_.Use().Prepare(
      "SELECT " CONVERSATION_COLUMNS
      " FROM "
      "(SELECT m.conversation AS id, max(m.place) AS newest FROM search s "
      "CROSS JOIN messages m ON m.place=s.rowid "
      "WHERE s.search MATCH ?1 AND s.rowid BETWEEN ?2 AND ?3 AND " PASSES("?4", "?5")
      " GROUP BY m.conversation) f "
      "JOIN conversations c ON c.id=f.id ORDER BY f.newest DESC",
      *expression, range.first, range.last, filter.senders, filter.relations);
  std::vector<biz::IMConversationID> found;
  while (row.Step()) found.push_back(ReadConversation(row, 0));
  return found;
}

std::vector<biz::IMMsgPicture> MessageSearch::Pictures(const biz::IMConversationID& cid,
                                                       const biz::IMPictureRequest& request) {
  // The position's own message is read again: others of its pictures may lie beyond.
  Position at{request.msgtime, 0};
  std::int32_t index = 0;
  const auto parted = request.pictureid.find(L'_');
  const bool whole =
      parted != request.pictureid.npos &&
      base::StringToInt64(std::wstring_view(request.pictureid).substr(0, parted), &at.msgid) &&
      base::StringToInt(std::wstring_view(request.pictureid).substr(parted + 1), &index);
  const bool older = request.gohistory || at.is_end();
  const std::int64_t conversation = conversations_.Find(cid);
  Visible visible = VisiblePart(conversation, request.ignoreboundary);
  PlaceRange& range = visible.range;
  range.Between(request.btime, request.etime);
  if (!at.is_end() && older) range.last = std::min(range.last, places_.FirstAfter(at) - 1);
  if (!at.is_end() && !older) range.first = std::max(range.first, places_.LastBefore(at) + 1);

  const auto count = static_cast<std::size_t>(CountOf(request.count));
  std::size_t text = 0;
  std::vector<biz::IMMsgPicture> pictures;
  const std::string expression = "facets : \"p\" AND " + InConversation(conversation);
  Walk(expression, visible, {}, older, [&](std::int64_t place) {
    for (const biz::IMMessage& message : Load({place}, kMostText)) {
      std::vector<biz::IMMsgPicture> inside;
      for (const std::wstring_view path : PicturePaths(message.msgbody)) {
        const auto number = static_cast<std::int32_t>(inside.size());
        inside.push_back({base::NumberToWide(message.msgid) + L"_" + base::NumberToWide(number),
                          std::wstring(path), message.msgid, number, message.msgtime,
                          message.fromid, message.toid, message.extinfo.others});
      }
      if (whole && PositionOf(message) == at) {
        std::erase_if(inside, [&](const biz::IMMsgPicture& picture) {
          return older ? picture.index >= index : picture.index <= index;
        });
      }
      if (older) std::reverse(inside.begin(), inside.end());
      for (auto& picture : inside) {
        if (pictures.size() == count || text > kMostText) break;
        text += picture.url.size() + picture.extInfo.size();
        pictures.push_back(std::move(picture));
      }
    }
    return pictures.size() < count && text <= kMostText;
  });
  if (older) std::reverse(pictures.begin(), pictures.end());
  return pictures;
}

}  // namespace imsdk::account
