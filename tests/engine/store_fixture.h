// One account's message store in a folder of its own, without an engine around it.
#pragma once

#include <string>
#include <vector>

#include "account/store/message_store.h"
#include "engine_fixture.h"

namespace imsdk::test {

inline const biz::IMUserID kSelf = User(L"harbor");
inline const biz::IMUserID kPeer = User(L"mariner");

inline biz::IMMessage Received(const biz::IMUserID& from, std::int64_t time, std::int64_t id,
                               const std::wstring& body = L"text") {
  biz::IMMessage message;
  message.cid = message.fromid = from;
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

inline std::vector<std::int64_t> Ids(const std::vector<biz::IMMessage>& messages) {
  std::vector<std::int64_t> ids;
  for (const auto& message : messages) ids.push_back(message.msgid);
  return ids;
}

class StoreTest : public testing::Test {
 protected:
  // What one-word searches of a conversation find, oldest first.
  std::vector<std::int64_t> Find(const std::vector<std::wstring>& keywords,
                                 const account::ChatKey& key = kPeer) {
    biz::IMSearchRequest request;
    request.keywords = keywords;
    request.ignoreboundary = true;
    request.count = 1000;
    return Ids(store_.search().Search(key, request).msgs);
  }

  TempFolder folder_;
  account::MessageStore store_{folder_.path() / "messages.db", kSelf,
                               std::make_shared<account::OpenStores>()};
};

}  // namespace imsdk::test
