// An engine in a folder of its own with a server, and accounts that remember what they were told.
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
#include "imsdk/embedded_server.h"

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

// A link that fails soon.
EngineSetup QuickSetup(const std::filesystem::path& data);

// A server that accounts can be tested over. Every one is administered as the embedded one is.
struct ServerKind {
  std::string name;
  std::function<std::unique_ptr<EmbeddedServer>(const std::filesystem::path& data)> start;
  bool rude = false;  // repeats what it sent, and tells time and place of a delivery only later

  friend void PrintTo(const ServerKind& kind, std::ostream* out) { *out << kind.name; }
};
// All of them: the embedded one, and one that is far away, with good manners and with bad ones.
const std::vector<ServerKind>& ServerKinds();
inline std::string NameOf(const testing::TestParamInfo<ServerKind>& info) {
  return info.param.name;
}

// A login token on the administration's word; empty when there is none.
inline std::wstring TokenOf(EmbeddedServer& server, const biz::IMUserID& user) {
  std::wstring token;
  server.IssueToken(user, &token);
  return token;
}

// An engine over a server of a kind. The server stays when the engine starts again.
class ServerTest : public testing::TestWithParam<ServerKind> {
 protected:
  void SetUp() override;
  // Starts the engine, anew if it runs.
  void Begin();
  bool CreateAccount(const biz::IMUserID& user);

  TempFolder folder_;
  EngineSetup setup_ = QuickSetup(folder_.path());
  std::unique_ptr<EmbeddedServer> server_;
  std::unique_ptr<Engine> engine_;
};

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
struct LoginOutcome {
  biz::ResultCode result;
  std::wstring token;
};
LoginOutcome Login(const biz::IMUserID& user, const std::wstring& password = L"pass");
LoginOutcome LoginByToken(const biz::IMUserID& user, const std::wstring& token);
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
  std::vector<std::pair<biz::IMUserID, biz::InputStatus>> inputs;
  std::vector<biz::IMMessage> system;
  std::vector<biz::IMMessage> subscribed;
  std::vector<std::string> order;  // names of the message events
  // Of tribes: what came, offline or not, was sent, and the outcomes.
  std::vector<biz::IMMessage> tribe_received;
  std::vector<biz::IMMessage> tribe_sent;
  std::vector<Status> tribe_statuses;
  std::vector<biz::IMMsgWithdraw> tribe_withdrawn;

 private:
  struct Link;
  // With the link's lock held, so that the witness is there until it listens.
  void Listen();

  const biz::IMUserID user_;
  const RefPtr<biz::IIMAccountMgr> accounts_;
  std::shared_ptr<Link> link_;
  RefPtr<biz::IIMAccount> listens_to_;
  base::event_handle on_login_;
};

RefPtr<biz::IIMConversation> Chat(const biz::IMUserID& self, const biz::IMConversationID& cid,
                                  const RefPtr<biz::IIMAccountMgr>& accounts = Accounts());
inline RefPtr<biz::IIMConversation> Chat(const biz::IMUserID& self, const biz::IMUserID& peer,
                                         const RefPtr<biz::IIMAccountMgr>& accounts = Accounts()) {
  return Chat(self, biz::IMConversationID(peer), accounts);
}
RefPtr<biz::IIMSingleChatMgr> Chats(const biz::IMUserID& self);

biz::IMBodyItem Text(const std::wstring& text);
// The engine's status of a send, when it is stored or refused.
std::int32_t SendItems(const RefPtr<biz::IIMConversation>& chat, std::vector<biz::IMBodyItem> items,
                       biz::IMSendRequest request = {});
// Operations that are answered at once.
std::int32_t Resend(const RefPtr<biz::IIMConversation>& chat, std::int64_t msgid, bool at_once);
std::int32_t Unread(const RefPtr<biz::IIMConversation>& chat);
biz::IMMessagePage NewMessages(const RefPtr<biz::IIMConversation>& chat,
                               const biz::IMPageRequest& request = {});
template <class Manager>
std::vector<biz::IMUnreadCount> Unreads(const RefPtr<Manager>& chats) {
  std::vector<biz::IMUnreadCount> unreads;
  chats->GetUnreadCounts(
      {}, [&](const auto&, const biz::IMUnreads& found) { unreads = found.unreads; });
  return unreads;
}
// Sends a text; the engine's status.
std::int32_t Send(const biz::IMUserID& from, const biz::IMUserID& to, const std::wstring& text);
// The outcome of an operation that answers a result alone, and of one that answers something too.
biz::ResultCode Done(const std::function<void(biz::IMCallback<>)>& operation);
template <class Result>
std::pair<biz::ResultCode, Result> Answer(
    const std::function<void(biz::IMCallback<Result>)>& operation) {
  using Both = std::pair<biz::ResultCode, Result>;
  return Wait<Both>([&](auto done) {
    operation([done](const biz::ResultCode& result, const Result& answer) {
      done(Both{result, answer});
    });
  });
}
biz::IMMessagePage LocalPage(const RefPtr<biz::IIMConversation>& chat,
                             const biz::IMPageRequest& request = {});
biz::IMMessagePage History(const biz::IMUserID& self, const biz::IMUserID& peer,
                           const biz::IMPageRequest& request = {});
std::vector<std::wstring> Bodies(const std::vector<biz::IMMessage>& messages);
std::vector<std::int64_t> Ids(const std::vector<biz::IMMessage>& messages);

// Waits until `holds`; fails the test when it takes too long.
void Eventually(const std::function<bool()>& holds, const char* what);

}  // namespace imsdk::test
