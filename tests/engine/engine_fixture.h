// An engine in a folder of its own, and accounts that remember what they were told.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "engine_setup.h"
#include "imsdk/biz/account.h"

namespace imsdk::test {

// A fresh folder, removed at the end.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline biz::IMUserID User(const std::wstring& nick) { return {L"cnbazaro", nick}; }

// Cheap password hashes, and a link that fails soon.
EngineSetup QuickSetup(const std::filesystem::path& data);

// Starts an engine or fails the test.
std::unique_ptr<Engine> Start(const EngineSetup& setup);

// The outcome of an operation with a callback; fails the test after some seconds.
template <class Result>
Result Wait(const std::function<void(std::function<void(Result)>)>& operation) {
  const auto answer = std::make_shared<std::promise<Result>>();
  auto future = answer->get_future();
  operation([answer](Result result) { answer->set_value(std::move(result)); });
  if (future.wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
    ADD_FAILURE() << "no answer";
    return {};
  }
  return future.get();
}

RefPtr<biz::IIMAccountMgr> Accounts();
biz::IMLoginResult Login(const biz::IMUserID& user, const std::wstring& password = L"pass");
biz::IMLoginResult LoginByToken(const biz::IMUserID& user, const std::wstring& token);
biz::ResultCode Logout(const biz::IMUserID& user);

struct Status {
  std::int64_t msgid = 0;
  std::int64_t svrtime = 0;
  std::int32_t code = 0;
};

// What one account's events have told so far.
class Witness {
 public:
  // Listens from the account's next login on, or from now when it is logged in.
  explicit Witness(const biz::IMUserID& user, RefPtr<biz::IIMAccountMgr> accounts = Accounts());
  ~Witness();

  // Waits until `enough` holds for this witness, read under its lock; fails the test when it takes
  // too long.
  bool Await(const std::function<bool(const Witness&)>& enough);
  bool AwaitStatuses(std::size_t count);
  bool AwaitReceived(std::size_t count);  // new and offline ones together

  std::vector<biz::IMMessage> received;
  std::vector<biz::IMMessage> offline;  // those of `received` that came as offline messages
  std::vector<bool> more;               // of each offline event
  std::vector<biz::IMMessage> sent;
  std::vector<Status> statuses;
  std::vector<biz::IMMsgWithdraw> withdrawn;
  std::vector<biz::IMFlagMsgReaded> flags;
  std::vector<std::pair<biz::IMUserID, biz::IMInputStatus>> inputs;
  std::vector<biz::IMMessage> system;
  std::vector<biz::IMMessage> subscribed;
  std::vector<std::string> order;  // names of the message events

 private:
  struct Link;
  void Listen();

  const biz::IMUserID user_;
  const RefPtr<biz::IIMAccountMgr> accounts_;
  std::shared_ptr<Link> link_;
  base::event_handle on_login_;
};

RefPtr<biz::IIMConversation> Chat(const biz::IMUserID& self, const biz::IMUserID& peer,
                                  const RefPtr<biz::IIMAccountMgr>& accounts = Accounts());
biz::IMBodyItem Text(const std::wstring& text);
// Sends a text; the engine's status.
std::int32_t Send(const biz::IMUserID& from, const biz::IMUserID& to, const std::wstring& text);
biz::IMMessagePage History(const biz::IMUserID& self, const biz::IMUserID& peer,
                           const biz::IMPageRequest& request = {});
// The outcome of an operation that answers a result alone, and of one that answers something too.
biz::ResultCode Done(const std::function<void(biz::IMDoneCallback)>& operation);
template <class Result>
std::pair<biz::ResultCode, Result> Answer(
    const std::function<void(std::function<void(const biz::ResultCode&, Result)>)>& operation) {
  using Both = std::pair<biz::ResultCode, Result>;
  return Wait<Both>([&](auto done) {
    operation([done](const biz::ResultCode& result, Result answer) {
      done(Both{result, std::move(answer)});
    });
  });
}
std::vector<std::wstring> Bodies(const std::vector<biz::IMMessage>& messages);

}  // namespace imsdk::test
