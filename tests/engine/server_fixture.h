// An embedded server in a folder of its own, reached through its link alone, and devices that
// remember what they were told.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "embedded/embedded_server.h"
#include "link/server_link.h"

namespace imsdk::test {

inline constexpr std::chrono::seconds kLongEnough{20};

inline biz::IMUserID Person(const std::wstring& nick) { return {L"cnbazaro", nick}; }

// The outcome of an operation that answers through a callback of two arguments.
template <class Reply>
struct Answered {
  biz::ResultCode result;
  Reply reply{};
};
template <class Reply>
Answered<Reply> Await(
    const std::function<void(std::function<void(const biz::ResultCode&, const Reply&)>)>& ask) {
  const auto answer = std::make_shared<std::promise<Answered<Reply>>>();
  auto future = answer->get_future();
  ask([answer](const biz::ResultCode& result, const Reply& reply) {
    answer->set_value({result, reply});
  });
  if (future.wait_for(kLongEnough) == std::future_status::ready) return future.get();
  ADD_FAILURE() << "no answer";
  return {{biz::kEngineTimeout, 0, {}}};
}

// A session and what it was told. Acknowledges each batch unless it is told not to.
class Device : public link::SessionListener, public std::enable_shared_from_this<Device> {
 public:
  explicit Device(bool acknowledges = true) : acknowledges_(acknowledges) {}

  template <class Operation>
  Answered<typename Operation::Reply> Ask(Operation operation) {
    return Await<typename Operation::Reply>(
        [&](auto done) { AskOnly(std::move(operation), std::move(done)); });
  }
  template <class Operation, class Done>
  void AskOnly(Operation operation, Done done) {
    session_->Ask(link::Asked<Operation>{std::move(operation), std::move(done)});
  }
  // Sends a text with this identifier, which is its time too.
  Answered<link::Delivered> Say(const biz::IMConversationID& cid, std::int64_t msgid,
                                const std::wstring& text = L"text");
  void Acknowledge(const std::string& position) { session_->Acknowledge(position); }
  void Disconnect();

  // Waits until `enough` holds, read under the lock; fails the test when it takes too long.
  bool Until(const std::function<bool(const Device&)>& enough);
  // Returns when it was told all that the server had for it.
  void Settle();

  // Read these under `Until`, or when nothing comes any more.
  template <class Kind>
  std::vector<Kind> All() const {
    std::vector<Kind> found;
    for (const auto& batch : batches) {
      for (const auto& entry : batch.entries) {
        if (const auto* some = std::get_if<Kind>(&entry)) found.push_back(*some);
      }
    }
    return found;
  }
  std::vector<std::int64_t> Msgids() const;
  std::vector<link::Batch> batches;  // that tell something
  std::string start;                 // the position of the other one
  std::vector<std::pair<biz::IMConversationID, std::int32_t>> typing;
  std::vector<link::TribePresence> presences;
  std::map<biz::IMUserID, std::vector<biz::IMContactStatus>> contact_statuses;
  std::vector<biz::ResultCode> ends;

 private:
  friend class ServerTest;
  void OnBatch(link::Batch batch) override;
  void OnTyping(const biz::IMConversationID& cid, std::int32_t status) override;
  void OnTribePresence(const link::TribePresence& presence) override;
  void OnContactPresence(const link::ContactPresence& presence) override;
  void OnEnded(const biz::ResultCode& why) override;

  const bool acknowledges_;
  std::mutex lock_;
  std::condition_variable told_;
  std::shared_ptr<link::Session> session_;
};

// A login token on the administration's word; empty when there is none.
inline std::wstring TokenOf(EmbeddedServer& server, const biz::IMUserID& user) {
  std::wstring token;
  server.IssueToken(user, &token);
  return token;
}

class ServerTest : public testing::Test {
 protected:
  ServerTest();
  ~ServerTest() override;

  // Starts the server, again when it runs. Cheap password hashes.
  void Start();
  void CreateAccounts(const std::vector<std::wstring>& nicks);
  Answered<link::Connected> TryConnect(const std::shared_ptr<Device>& device,
                                       const std::wstring& nick, const std::string& name,
                                       const std::string& position);
  std::shared_ptr<Device> Connect(const std::wstring& nick, const std::string& name = "desk",
                                  const std::string& position = {}, bool acknowledges = true);
  // Makes tribe 77 of these, owned by the first.
  biz::IMConversationID Tribe(const std::vector<std::wstring>& nicks);
  bool SetMember(const std::wstring& nick, bool member);
  // A number out of a copy of the server's store, which nobody else can open.
  std::int64_t Count(const char* sql);

  std::filesystem::path folder_;
  EmbeddedServerOptions options_;
  std::unique_ptr<embedded::Server> server_;
  std::shared_ptr<link::ServerLink> link_;
};

inline const biz::IMConversationID kTribe{biz::IMTribeID{77}};
inline biz::IMConversationID With(const std::wstring& nick) {
  return biz::IMConversationID(Person(nick));
}
std::vector<std::int64_t> MsgidsOf(const std::vector<link::Message>& messages);

}  // namespace imsdk::test
