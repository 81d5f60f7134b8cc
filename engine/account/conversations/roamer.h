// Brings the account's history from the server.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "account/session/account_state.h"
#include "account/session/mailbox.h"
#include "imsdk/biz/callback.h"
#include "imsdk/biz/history.h"
#include "imsdk/biz/mentions.h"
#include "link/operations.h"

namespace imsdk::account {

// What comes from the server is stored together with how far the conversation is complete by it, so
// that a failure in the middle leaves a store that is right. The operations on one conversation run
// one after another. Used on the account's worker; callbacks are called there.
class Roamer : public std::enable_shared_from_this<Roamer> {
 public:
  // The mailbox lives as long as the account.
  Roamer(std::shared_ptr<AccountState> state, std::shared_ptr<Mailbox> mailbox)
      : state_(std::move(state)), mailbox_(std::move(mailbox)) {}

  // A page of the account's store; what it lacks for that is fetched first.
  void LocalPage(const biz::IMConversationID& cid, const biz::IMPageRequest& request,
                 biz::IMCallback<biz::IMMessagePage> done);
  // A page of the server's store; with `autoroam` it is kept.
  void RemotePage(const biz::IMConversationID& cid, const biz::IMPageRequest& request,
                  biz::IMCallback<biz::IMMessagePage> done);
  void Roam(const biz::IMConversationID& cid, const biz::IMRoamRequest& request,
            biz::IMCallback<biz::IMRoamed> done);
  // roamer_mentions.cpp: what is kept of these says nothing of what lies between.

  // A page of the server's messages that mention the account.
  void MentionPage(const biz::IMConversationID& cid, const biz::IMPageRequest& request,
                   biz::IMCallback<biz::IMMessagePage> done);
  // The messages around one.
  void Context(const biz::IMConversationID& cid, const biz::IMAtContextRequest& request,
               biz::IMCallback<biz::IMMessagePage> done);
  // Forgets how far the conversation is complete.
  void Clear(const biz::IMConversationID& cid, biz::IMCallback<> done);
  // Fetches what the conversation was found to lack: the newest messages of a tribe that was
  // joined, or what is missing in a hole. Tried again with the next link until it is done, also
  // when the server refuses: what it does not give is not taken for what is not there.
  void CatchUp(const biz::IMConversationID& cid);
  // The link is there.
  void Connected();

 private:
  // An operation on a conversation calls its argument once, at its end, to let the next one begin.
  using Job = std::function<void(const std::function<void()>& leave)>;
  struct PageJob;
  struct RoamJob;
  // A walk towards older messages from where the complete part ends.
  struct Descent {
    biz::IMConversationID cid;
    Walk walk{};
    std::string next{};
  };
  // The outcome of a fetch, and how many messages the store did not have.
  using Fetched =
      std::function<void(const biz::ResultCode&, const link::History&, std::int32_t fresh)>;
  // Where a page of the server's goes on: conversation, position, and whether towards older ones.
  using Turn = std::tuple<biz::IMConversationID, Position, bool>;

  void Enter(const biz::IMConversationID& cid, Job job);
  void Leave(const biz::IMConversationID& cid);
  void Begin(const biz::IMConversationID& cid, const Job& job);

  void FillPage(const std::shared_ptr<PageJob>& job);
  void GoOn(const std::shared_ptr<RoamJob>& job);
  void Descend(const std::shared_ptr<Descent>& descent, Fetched done);
  void CatchUpNext();
  void FillHole(const std::shared_ptr<Descent>& descent, const std::function<void()>& leave);
  void EndCatchUp(const biz::IMConversationID& cid, bool close, const std::function<void()>& leave);

  // Asks the server, and stores what comes when `walk` is given.
  void Fetch(const link::GetHistory& request, std::shared_ptr<Walk> walk, Fetched done);
  void Keep(const link::GetHistory& request, const link::History& history,
            std::shared_ptr<Walk> walk, Fetched done);
  void KeepScattered(const std::vector<link::Message>& messages, bool ends,
                     biz::IMCallback<biz::IMMessagePage> done);
  // Messages of the server as pages see them, with what the account knows better: its own flags.
  biz::ResultCode Show(const std::vector<link::Message>& messages, biz::IMMessagePage* page);
  // Keeps how to fetch the files of messages that are shown and not stored.
  void KeepFiles(const link::History& history);
  link::GetHistory Wanted(const biz::IMConversationID& cid, const biz::IMPageRequest& request);
  void Remember(const link::GetHistory& request, const link::History& history);
  void Remember(const Turn& turn, const std::string& place);

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Mailbox> mailbox_;
  // The first one is under way.
  std::unordered_map<biz::IMConversationID, std::deque<Job>> jobs_;
  std::deque<biz::IMConversationID> wanting_;
  std::set<biz::IMConversationID> catching_up_;  // waiting or under way
  int under_way_ = 0;
  std::map<Turn, std::string> places_;  // of pages that were handed out, the latest ones
  std::deque<Turn> places_order_;
};

}  // namespace imsdk::account
