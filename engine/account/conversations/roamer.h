// Brings the account's history from the server.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

#include "account/session/account_state.h"
#include "imsdk/biz/history.h"
#include "link/server_link.h"

namespace imsdk::account {

// What comes from the server is stored together with how far the conversation is complete by it, so
// that a failure in the middle leaves a store that is right. The operations on one conversation run
// one after another. Used on the account's worker; callbacks are called there.
class Roamer : public std::enable_shared_from_this<Roamer> {
 public:
  explicit Roamer(std::shared_ptr<AccountState> state) : state_(std::move(state)) {}

  // A page of the account's store; what it lacks for that is fetched first.
  void LocalPage(const biz::IMUserID& cid, const biz::IMPageRequest& request,
                 biz::IMPageCallback done);
  // A page of the server's store; with `autoroam` it is kept.
  void RemotePage(const biz::IMUserID& cid, const biz::IMPageRequest& request,
                  biz::IMPageCallback done);
  void Roam(const biz::IMUserID& cid, const biz::IMRoamRequest& request, biz::IMRoamCallback done);
  // Forgets how far the conversation is complete.
  void Clear(const biz::IMUserID& cid, biz::IMDoneCallback done);

 private:
  // An operation on a conversation calls its argument once, at its end, to let the next one begin.
  using Job = std::function<void(const std::function<void()>& leave)>;
  struct PageJob;
  struct RoamJob;
  // The outcome of a fetch, and how many messages the store did not have.
  using Fetched = std::function<void(const biz::ResultCode&, const link::History&, int fresh)>;

  void Enter(const biz::IMUserID& cid, Job job);
  void Leave(const biz::IMUserID& cid);
  void Begin(const biz::IMUserID& cid, const Job& job);

  void FillPage(const std::shared_ptr<PageJob>& job);
  void GoOn(const std::shared_ptr<RoamJob>& job);
  // Asks the server, and stores what comes when `keep` is set.
  void Fetch(const link::HistoryRequest& request, bool keep, Fetched done);
  void Keep(const link::HistoryRequest& request, const link::History& history, Fetched done);

  const std::shared_ptr<AccountState> state_;
  std::unordered_map<biz::IMUserID, std::deque<Job>> jobs_;  // the first one is under way
};

}  // namespace imsdk::account
