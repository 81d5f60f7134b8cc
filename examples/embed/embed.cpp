// The shortest honest embedding: register an engine, load the library, make its objects, carry the
// calls of a page (log in, send a message), print the answers and the notifications, and give
// everything back. Ends with status 0 when the page heard what it should.

#include <cstdio>
#include <string>

#include "bridge/imbridgemgr.h"
#include "bridge/imsdkbridge.h"
#include "kexbase/message_loop.h"
#include "kexbase/native_library.h"
#include "kexbase/strings.h"
#include "kexcom/factory.h"
#include "kexcore/kexcom.h"
#include "tiny_engine.h"

using imsdk::bridge::IIMBridgeMgr;
using imsdk::bridge::IIMSDKBridge;

namespace {

// A host hands these texts to the script of its browser view; here they are printed. The object
// lives in main(), so there is nothing to count.
class Page final : public imsdk::bridge::IPageHandler {
 public:
  void AddRef() override {}
  void Release() override {}
  void DeliverAnswer(const std::wstring& page, const std::wstring& seq, bool failed,
                     const std::wstring& payload) override {
    if (!failed) ++answers;
    std::printf("page %s, call %s %s: %s\n", base::WideToUTF8(page).c_str(),
                base::WideToUTF8(seq).c_str(), failed ? "failed" : "answered",
                base::WideToUTF8(payload).c_str());
  }
  void Reserved() override {}
  void Notify(const std::wstring& event, const std::wstring& json) override {
    ++notifications;
    std::printf("event %s: %s\n", base::WideToUTF8(event).c_str(), base::WideToUTF8(json).c_str());
  }

  int answers = 0;  // good ones
  int notifications = 0;
};

template <class I>
RefPtr<I> Create(IKexCOMFactory& factory, const char* class_name, const char* iid) {
  void* object = nullptr;
  factory.CreateInstance(class_name, iid, &object);
  return RefPtr<I>::Adopt(static_cast<I*>(object));
}

}  // namespace

int main() {
  // The registry's reference ends the engine.
  GetKexCOM()->RegisterService(tiny::Accounts::kServiceId, new tiny::Accounts);

  std::string error;
  const auto library = base::NativeLibrary::Open(base::FilePath::FromUTF8(BRIDGE_FILE), &error);
  const auto get_factory = library.Function<IKexCOMFactory*()>("GetKexCOMFactory");
  if (!get_factory) {
    std::fprintf(stderr, "the bridge cannot be loaded: %s\n", error.c_str());
    return 1;
  }
  IKexCOMFactory& factory = *get_factory();
  const auto manager = Create<IIMBridgeMgr>(factory, kClassIMBridgeMgr, kIID_IIMBridgeMgr);
  const auto bridge = Create<IIMSDKBridge>(factory, kClassIMSDKBridge, kIID_IIMSDKBridge);
  if (!manager || !bridge) return 1;
  manager->Init();

  base::MessageLoop loop;  // the view's thread is this one
  Page page;
  bridge->BindPage({L"view-1", &page, loop.task_runner(), {}});
  const auto invoke = [&](const wchar_t* path, const wchar_t* call, const wchar_t* method,
                          const wchar_t* json) {
    bridge->JsInvoke({L"view-1", path, {call, method, json}});
    loop.RunUntilIdle();  // what engine threads answered, and notifications
  };
  invoke(L"workbench.im.login.invoke", L"call-1", L"DoLoginByPassWord",
         LR"({"userid":{"appkey":"cnbazaro","nick":"harbor"},"password":"demo"})");
  invoke(L"workbench.im.event_register", L"call-2", L"register",
         LR"({"events":["onReceiveNewMsg"]})");
  invoke(L"workbench.im.singlemsg.invoke", L"call-3", L"SendNormalChatMsg",
         LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"},)"
         LR"("msgbody":[{"type":0,"value":"Is anybody there?"}]})");

  bridge->UnbindPage();
  manager->Uninit();
  GetKexCOM()->UnregisterService(tiny::Accounts::kServiceId);
  return page.answers == 3 && page.notifications == 1 ? 0 : 1;
}
