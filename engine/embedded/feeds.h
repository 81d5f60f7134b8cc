// What each session is sent by itself: its account's stream and those of its tribes, merged by the
// order of the server.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "embedded/streams.h"
#include "link/server_link.h"

namespace imsdk::embedded {

// Where a session begins.
struct Start {
  Position after = 0;      // with what is behind this
  bool placeless = false;  // the device named no position, so it is given one at once
  bool restore = false;    // with what the account itself sent before the session, too
};

// Lives on the store's thread; listeners are called there. A session remembers where each of its
// streams goes on, so that nothing is asked for that has nothing new, and what many sessions are to
// hear is read once for all of them.
class Feeds {
 public:
  // `schedule` has `Push` called soon.
  Feeds(ServerStore& store, std::function<void()> schedule);

  // Begins to feed a session. May throw `sqlite::Error`.
  void Open(std::int64_t session, const Caller& caller, const Start& start,
            std::weak_ptr<link::SessionListener> listener);
  // Answers that wait are given. Nothing happens for a session that is not fed.
  void Close(std::int64_t session);
  // Tells the session why it ends, and closes it.
  void End(std::int64_t session, const biz::ResultCode& why);

  // Takes note of what the store has now.
  void Note(const Effects& effects);
  // Tells the account's sessions except one.
  void Signal(const Typing& typing, std::int64_t except);
  // Tells one session who is online in a tribe.
  void Tell(std::int64_t session, const link::TribePresence& presence);
  // Tells the account's sessions who of its contacts came or went.
  void Tell(std::int64_t account, const link::ContactPresence& presence);
  // Sends what was noted.
  void Push();
  // Calls `answer` when the session was sent all that is noted now.
  void AfterNews(std::int64_t session, std::function<void()> answer);
  // The session has everything up to `upto`; returns how much of that is true.
  Position Acknowledge(std::int64_t session, Position upto);

 private:
  // A stream as a session sees it.
  struct View {
    Stream stream;
    Position joined = 0;  // sees nothing up to this
    Position until = kNever;
  };
  struct Client {
    std::int64_t session = 0;
    Caller who;
    std::weak_ptr<link::SessionListener> listener;
    Position began = 0;               // up to here everything is offline
    Position pushed = 0;              // up to here it was sent
    bool placeless = false;           // was given no position yet
    std::deque<Position> open{};      // ends of the batches that wait for their acknowledgement
    std::map<Position, View> news{};  // streams that have more, by where they go on
    std::set<Stream> watched{};
    std::vector<std::function<void()>> waiting{};
  };
  // A session that hears what a stream has to tell from now on.
  struct Watch {
    Position joined = 0;
    bool noted = false;  // the client's news have the stream
  };
  // What the sessions of one push share: streams' parts from the first position that is new to all
  // of them.
  struct Round {
    std::map<Stream, Position> first;
    std::map<Stream, StreamPart> parts{};
  };
  struct Filling;

  // Calls `act` with each session of the account.
  template <class Do>
  void ForEachOf(std::int64_t account, const Do& act);
  void See(Client& client, const View& view, Position after);
  void Watching(Client& client, const Stream& stream, const Watch& watch);
  void StopWatching(Client& client, const Stream& stream, Position until);
  void NoteStay(const StayChange& change);
  void NoteNews(const News& news);
  void PushTo(Client& client, Round& round);
  // False when the store could not be read.
  bool Fill(Client& client, Round& round, Filling& filling);
  // Takes the view's elements from a position on; returns where it goes on.
  Position Take(const Client& client, const View& view, Position from, Position stop, Round& round,
                Filling& filling);
  const StreamPart* Shared(const View& view, Position from, Round& round);

  ServerStore& store_;
  const std::function<void()> schedule_;
  std::map<std::int64_t, Client> clients_;                      // by session
  std::set<std::pair<std::int64_t, std::int64_t>> by_account_;  // account, session
  std::map<Stream, std::map<std::int64_t, Watch>> watches_;     // by session
  std::set<std::int64_t> push_soon_;                            // sessions
  std::map<Stream, Position> fresh_;                            // since the last push
  // Up to here the store's news were noted. A commit may hold more, of operations whose turn to be
  // noted comes: whoever was sent those too soon would be sent them again, or others before them.
  Position noted_ = 0;
};

}  // namespace imsdk::embedded
