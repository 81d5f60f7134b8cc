// A page of `kHarbor` that listens to everything, and one conversation of it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "imsdk/client/chat_window.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"

namespace imsdk::test {

// A service of the client, registered as long as this lives.
template <class I>
class Registered {
 public:
  explicit Registered(RefPtr<I> service) : service_(std::move(service)) {
    GetKexCOM()->RegisterService(I::kServiceId, service_.get());
  }
  ~Registered() { GetKexCOM()->UnregisterService(I::kServiceId); }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;
  I* operator->() const { return service_.get(); }

 private:
  const RefPtr<I> service_;
};

inline const std::wstring kPath = L"im.singlemsg";
inline const std::wstring kCid = LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"}})";
inline const std::wstring kSuccess = LR"({"code":0,"subcode":0,"result":"success"})";

inline const biz::IMConversationID kChat{kLighthouse};

// A request to the chat with `kLighthouse` with further keys.
inline std::wstring WithCid(const std::wstring& keys) {
  return LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"},)" + keys + L"}";
}

// An answer that is a success, with the keys behind the envelope.
inline std::wstring Answer(const std::wstring& keys) {
  return LR"({"code":0,"subcode":0,"result":"success",)" + keys + L"}";
}

// The conversation `cid`, which the module of `path` serves.
class ChatPage : public ::testing::Test {
 protected:
  ChatPage(std::wstring path, const biz::IMConversationID& cid)
      : chat(engine.Account().Chat(cid)), path_(std::move(path)) {
    Bind();
  }

  void Bind() {
    host.Bind(kHarbor);
    host.Invoke(L"workbench.im.event_register", L"r", L"register_all");
  }
  std::wstring Payload(const std::wstring& method, const std::wstring& json) {
    return host.Call(path_, method, json).payload;
  }

  MemoryEngine engine;
  TestHost host;
  MemoryConversation& chat;

 private:
  const std::wstring path_;
};

class SingleMsg : public ChatPage {
 protected:
  SingleMsg() : ChatPage(kPath, kChat) {}
};

}  // namespace imsdk::test
