#include "embedded/feeds.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "sqlite/group_commit.h"

namespace imsdk::embedded {

namespace {

constexpr std::size_t kEntriesInBatch = 500;
// A client that does not acknowledge gets no more than this many batches ahead.
constexpr std::size_t kOpenBatches = 4;

constexpr Stream::Kind kTribeKinds[] = {Stream::Kind::kTribe, Stream::Kind::kTribeMessages};

}  // namespace

// A batch that is being put together.
struct Feeds::Filling {
  MentionTable& mentions;
  std::int64_t account = 0;
  link::Batch batch{};
  Position last = 0;
  std::size_t text = 0;

  bool full() const { return batch.entries.size() >= kEntriesInBatch || text >= kMostBytes; }

  void Add(const View& view, Position position, Position previous, link::Entry entry) {
    text += TextOf(entry);
    last = position;
    // Whoever cannot see the message before need not miss it.
    auto* message = std::get_if<link::Message>(&entry);
    if (message && previous <= view.joined) message->previous = 0;
    // Another device may have read what this one has missed.
    if (message && batch.offline && message->at.type != biz::kAtNobody) {
      message->at.read = mentions.HasRead(position, account);
    }
    batch.entries.push_back(std::move(entry));
  }
};

Feeds::Feeds(ServerStore& store, std::function<void()> schedule)
    : store_(store), schedule_(std::move(schedule)) {}

void Feeds::Open(std::int64_t session, const Caller& caller, const Start& start,
                 std::weak_ptr<link::SessionListener> listener) {
  const Position after = start.after;
  noted_ = store_.mail().newest();
  Client client{session, caller, std::move(listener), noted_, after, start.placeless};
  See(client, {{Stream::Kind::kAccount, caller.account}}, after);
  if (start.restore) {
    See(client, {{Stream::Kind::kSent, caller.account}, 0, client.began}, after);
  }
  for (const Stay& stay : store_.conversations().StaysAfter(caller.account, after)) {
    for (const Stream::Kind kind : kTribeKinds) {
      See(client, {{kind, stay.conversation}, stay.joined, stay.until}, after);
    }
  }
  clients_.emplace(session, std::move(client));
  by_account_.emplace(caller.account, session);
  push_soon_.insert(session);
  schedule_();
}

void Feeds::See(Client& client, const View& view, Position after) {
  const Position next = ReadStream(store_.database(), {.stream = view.stream,
                                                       .from = std::max(after, view.joined) + 1,
                                                       .until = view.until,
                                                       .device = client.who.device})
                            .next;
  if (next != 0) client.news.emplace(next, view);
  if (view.until == kNever) Watching(client, view.stream, {view.joined, next != 0});
}

void Feeds::Watching(Client& client, const Stream& stream, const Watch& watch) {
  watches_[stream][client.session] = watch;
  client.watched.insert(stream);
}

void Feeds::StopWatching(Client& client, const Stream& stream, Position until) {
  if (client.watched.erase(stream) == 0) return;
  const auto watches = watches_.find(stream);
  watches->second.erase(client.session);
  if (watches->second.empty()) watches_.erase(watches);
  const auto noted = std::find_if(client.news.begin(), client.news.end(), [&](const auto& news) {
    return news.second.stream == stream && news.second.until == kNever;
  });
  if (noted == client.news.end()) return;
  noted->second.until = until;
  if (noted->first > until) client.news.erase(noted);
}

void Feeds::Close(std::int64_t session) {
  const auto found = clients_.find(session);
  if (found == clients_.end()) return;
  Client client = std::move(found->second);
  clients_.erase(found);
  by_account_.erase({client.who.account, session});
  for (const Stream& stream : std::set<Stream>(client.watched)) StopWatching(client, stream, 0);
  for (const auto& answer : client.waiting) answer();
}

template <class Do>
void Feeds::ForEachOf(std::int64_t account, const Do& act) {
  for (auto entry = by_account_.lower_bound({account, 0});
       entry != by_account_.end() && entry->first == account; ++entry) {
    act(clients_.at(entry->second));
  }
}

void Feeds::End(std::int64_t session, const biz::ResultCode& why) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) return;
  const auto listener = client->second.listener.lock();
  Close(session);
  if (listener) listener->OnEnded(why);
}

void Feeds::Note(const Effects& effects) {
  noted_ = std::max(noted_, effects.upto);
  // Who joins hears of it in the tribe, and so does who leaves.
  const auto note_stays = [&](bool joining) {
    for (const StayChange& change : effects.stays) {
      if (change.member == joining) NoteStay(change);
    }
  };
  note_stays(true);
  for (const News& news : effects.news) NoteNews(news);
  note_stays(false);
}

void Feeds::Tell(std::int64_t session, const link::TribePresence& presence) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) return;
  if (const auto listener = client->second.listener.lock()) listener->OnTribePresence(presence);
}

void Feeds::Tell(std::int64_t account, const link::ContactPresence& presence) {
  ForEachOf(account, [&](const Client& client) {
    if (const auto listener = client.listener.lock()) listener->OnContactPresence(presence);
  });
}

void Feeds::NoteStay(const StayChange& change) {
  ForEachOf(change.account, [&](Client& client) {
    for (const Stream::Kind kind : kTribeKinds) {
      const Stream stream{kind, change.conversation};
      if (change.member) {
        Watching(client, stream, {change.position, false});
      } else {
        StopWatching(client, stream, change.position);
      }
    }
  });
}

void Feeds::NoteNews(const News& news) {
  const auto watches = watches_.find(news.stream);
  if (watches == watches_.end()) return;
  fresh_.try_emplace(news.stream, news.position);
  for (auto& [session, watch] : watches->second) {
    Client& client = clients_.at(session);
    const bool known = news.device != 0 && news.device == client.who.device;
    if (known || watch.noted) continue;
    watch.noted = true;
    client.news.emplace(news.position, View{news.stream, watch.joined});
    if (push_soon_.insert(session).second && push_soon_.size() == 1) schedule_();
  }
}

void Feeds::Signal(const Typing& typing, std::int64_t except) {
  ForEachOf(typing.account, [&](const Client& client) {
    if (client.session == except) return;
    const auto listener = client.listener.lock();
    if (listener) listener->OnTyping(typing.cid, typing.status);
  });
}

void Feeds::Push() {
  Round round{std::exchange(fresh_, {})};
  for (const std::int64_t session : std::exchange(push_soon_, {})) {
    const auto client = clients_.find(session);
    if (client != clients_.end()) PushTo(client->second, round);
  }
}

void Feeds::AfterNews(std::int64_t session, std::function<void()> answer) {
  const auto client = clients_.find(session);
  if (client == clients_.end()) return answer();
  client->second.waiting.push_back(std::move(answer));
  Round alone;
  PushTo(client->second, alone);
}

Position Feeds::Acknowledge(std::int64_t session, Position upto) {
  const auto found = clients_.find(session);
  if (found == clients_.end()) return 0;
  Client& client = found->second;
  upto = std::min(upto, client.pushed);
  while (!client.open.empty() && client.open.front() <= upto) client.open.pop_front();
  Round alone;
  PushTo(client, alone);
  return upto;
}

void Feeds::PushTo(Client& client, Round& round) {
  const auto listener = client.listener.lock();
  if (!listener) return;
  if (std::exchange(client.placeless, false) && client.news.empty()) {
    listener->OnBatch({.entries = {}, .position = store_.PositionText(client.pushed)});
  }
  while (client.open.size() < kOpenBatches) {
    if (client.news.empty()) {
      for (const auto& answer : std::exchange(client.waiting, {})) answer();
      return;
    }
    Filling filling{store_.mentions(), client.who.account};
    // A batch is offline as a whole or not at all.
    filling.batch.offline = client.news.begin()->first <= client.began;
    // A store that cannot be read now is asked again at the next message or acknowledgement.
    const bool read = Fill(client, round, filling);
    if (!filling.batch.entries.empty()) {
      filling.batch.position = store_.PositionText(filling.last);
      filling.batch.more = filling.batch.offline && !client.news.empty() &&
                           client.news.begin()->first <= client.began;
      client.pushed = filling.last;
      client.open.push_back(filling.last);
      listener->OnBatch(std::move(filling.batch));
    }
    if (!read) return;
  }
}

bool Feeds::Fill(Client& client, Round& round, Filling& filling) {
  const Position end = filling.batch.offline ? client.began : kNever;
  while (!client.news.empty() && client.news.begin()->first <= end && !filling.full()) {
    const auto [from, view] = *client.news.begin();
    const auto second = std::next(client.news.begin());
    Position stop = std::min(end, noted_);
    if (second != client.news.end()) stop = std::min(stop, second->first);
    Position next = 0;
    const biz::ResultCode read = sqlite::Guarded(
        [&, from = from, &view = view] { next = Take(client, view, from, stop, round, filling); });
    if (!read.ok()) return false;
    client.news.erase(client.news.begin());
    if (next != 0 && next <= noted_) {
      client.news.emplace(next, view);
    } else if (view.until == kNever) {
      watches_[view.stream][client.session].noted = false;
    }
  }
  return true;
}

Position Feeds::Take(const Client& client, const View& view, Position from, Position stop,
                     Round& round, Filling& filling) {
  const std::int64_t device = client.who.device;
  if (const StreamPart* shared = Shared(view, from, round)) {
    auto element = std::lower_bound(
        shared->elements.begin(), shared->elements.end(), from,
        [](const Element& some, Position position) { return some.position < position; });
    for (; element != shared->elements.end(); ++element) {
      if (element->device != 0 && element->device == device) continue;
      if (element->position > view.until) return 0;
      if (element->position > stop || filling.full()) return element->position;
      filling.Add(view, element->position, element->previous, element->entry);
    }
    return shared->next > view.until ? 0 : shared->next;
  }
  StreamPart part =
      ReadStream(store_.database(), {.stream = view.stream,
                                     .from = from,
                                     .until = view.until,
                                     .stop = stop,
                                     .device = device,
                                     .count = kEntriesInBatch - filling.batch.entries.size(),
                                     .bytes = kMostBytes - filling.text});
  for (Element& element : part.elements) {
    filling.Add(view, element.position, element.previous, std::move(element.entry));
  }
  return part.next;
}

const StreamPart* Feeds::Shared(const View& view, Position from, Round& round) {
  const auto first = round.first.find(view.stream);
  if (first == round.first.end() || from < first->second) return nullptr;
  auto part = round.parts.find(view.stream);
  if (part == round.parts.end()) {
    part = round.parts
               .emplace(view.stream, ReadStream(store_.database(), {.stream = view.stream,
                                                                    .from = first->second,
                                                                    .count = kEntriesInBatch}))
               .first;
  }
  const auto& elements = part->second.elements;
  return !elements.empty() && from <= elements.back().position ? &part->second : nullptr;
}

}  // namespace imsdk::embedded
