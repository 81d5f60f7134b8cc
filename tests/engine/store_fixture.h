// One account's message store in a folder of its own, without an engine around it.
#pragma once

#include <string>
#include <vector>

#include "account/store/message_store.h"
#include "engine_fixture.h"

namespace imsdk::test {

inline const biz::IMUserID kSelf = User(L"harbor");
inline const biz::IMUserID kPeer = User(L"mariner");

inline biz::IMConversationID With(const biz::IMUserID& peer) { return biz::IMConversationID(peer); }
inline const biz::IMConversationID kChat = With(kPeer);

inline biz::IMMessage Received(const biz::IMUserID& from, std::int64_t time, std::int64_t id,
                               const std::wstring& body = L"text") {
  biz::IMMessage message;
  message.cid = With(from);
  message.fromid = from;
  message.toid = kSelf;
  message.msgtime = time;
  message.msgid = id;
  message.msgstatus = biz::kMsgReceived;
  message.msgbody = body;
  return message;
}

inline biz::IMMessage Sent(const biz::IMUserID& to, std::int64_t time, std::int64_t id) {
  biz::IMMessage message = Received(to, time, id);
  message.fromid = kSelf;
  message.toid = to;
  message.msgstatus = biz::kMsgSent;
  return message;
}

class StoreTest : public testing::Test {
 protected:
  // What one-word searches of a conversation find, oldest first.
  std::vector<std::int64_t> Find(const std::vector<std::wstring>& keywords,
                                 const biz::IMConversationID& cid = kChat) {
    biz::IMSearchRequest request;
    request.keywords = keywords;
    request.ignoreboundary = true;
    request.count = 1000;
    return Ids(Indexed().Search(cid, request).msgs);
  }
  account::MessageSearch& Indexed() {
    while (store_.index().IsBehind()) store_.index().AddSlice();
    return store_.search();
  }

  // Adds what a fetch from the newest end brought, as it is on the server.
  account::KeptHistory Fetched(const std::vector<biz::IMMessage>& messages,
                               const std::string& next) {
    std::vector<account::Incoming> incoming;
    for (const auto& message : messages) {
      incoming.push_back({message, "p" + std::to_string(message.msgid)});
    }
    account::Walk walk;
    link::GetHistory request;
    request.cid = messages.empty() ? kChat : messages.front().cid;
    return store_.AddHistory(walk, request, next, incoming);
  }

  TempFolder folder_;
  account::MessageStore store_{folder_.path() / "messages.db", kSelf,
                               std::make_shared<account::OpenStores>()};
};

}  // namespace imsdk::test
