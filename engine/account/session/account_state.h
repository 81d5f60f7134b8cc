// What the parts of one logged-in account share.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "account/conversations/chat_state.h"
#include "account/files/data_folder.h"
#include "account/files/file_box.h"
#include "account/sending/message_ids.h"
#include "account/session/admission.h"
#include "account/session/line.h"
#include "account/session/worker_pool.h"
#include "account/store/message_store.h"
#include "imsdk/biz/chat_mgr.h"
#include "imsdk/biz/contact.h"
#include "imsdk/biz/file_transfer.h"
#include "imsdk/biz/tribe_mgr.h"
#include "link/server_link.h"
#include "sqlite/group_commit.h"

namespace imsdk::account {

// How long the server may take, and how soon a lost link is tried again (the pause doubles with
// each failure up to `longest_retry`).
struct Timeouts {
  std::chrono::milliseconds login{30'000};
  std::chrono::milliseconds send{20'000};
  std::chrono::milliseconds request{20'000};
  std::chrono::milliseconds transfer{60'000};  // of a file, since the last byte crossed
  std::chrono::milliseconds logout{5'000};
  std::chrono::milliseconds first_retry{1'000};
  std::chrono::milliseconds longest_retry{60'000};
};

// What all accounts of an engine share.
struct Environment {
  std::shared_ptr<link::ServerLink> link;
  std::shared_ptr<MessageIds> ids;
  DataFolder folder;
  Timeouts timeouts;
  std::string device;                                // the accounts' name for this installation
  std::vector<std::filesystem::path> send_from;      // folders whose files may be sent
  std::function<void(const std::string&)> report{};  // of what a person should know; may be empty
};

// Store, commit, line and the raising of events belong to the account's worker; the rest to any
// thread.
struct AccountState : std::enable_shared_from_this<AccountState> {
  AccountState(std::shared_ptr<const Environment> env, const biz::IMUserID& user,
               const Worker& worker);

  const std::shared_ptr<const Environment> environment;
  const biz::IMUserID self;
  const std::shared_ptr<base::TaskRunner> runner;
  const std::shared_ptr<std::atomic<bool>> closing = std::make_shared<std::atomic<bool>>(false);
  std::atomic<bool>& closed = *closing;  // logged out: operations fail from now on
  std::atomic<bool> online{false};
  const std::shared_ptr<const Patience> patience;
  const std::shared_ptr<base::TaskRunner> aside;  // see `Worker`
  const std::shared_ptr<Admission> admission = std::make_shared<Admission>();
  bool ended = false;  // on the worker: the store is closed for good
  MessageStore store;
  sqlite::GroupCommit commit;
  const std::shared_ptr<Line> line;
  FileBox files;
  const std::wstring files_in_tokens;  // the folder of the account's files as tokens write it
  ChatState chat;
  biz::IMSingleChatEvents events;
  biz::IMTribeChatEvents tribe_events;
  biz::IMTribeEvents tribe_mgr_events;
  biz::IMVirtualChatEvents virtual_events;
  biz::IMFileEvents file_events;
  biz::IMContactEvents contact_events;

  // For what takes long, on any thread, also when this is gone: ends it when the account ends.
  GivesUp Ending() const {
    return [closing = closing, patience = patience] { return *closing || patience->over(); };
  }

  // Has what the store's index lacks added when the account is quiet for a moment.
  void IndexSoon();
  // Has it added now, in slices between which others have their turn.
  void Index(biz::IMCallback<> done);

  // Raise the event of the message's kind of conversation.
  void RaiseSent(const biz::IMMessage& message);
  void RaiseStatus(const biz::IMMessage& message, std::int64_t svrtime,
                   const biz::ResultCode& result);
  void RaiseWithdrawn(const biz::IMMsgWithdraw& what);

 private:
  void Flush();

  std::uint64_t flushes_ = 0;
  bool indexes_soon_ = false;
};

}  // namespace imsdk::account
