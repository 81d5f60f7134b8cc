// The shortest honest embedding: load the library, make its objects, carry one call of a page,
// print the answer, give everything back. There is no messaging engine here, so the page learns
// that nobody is logged in.

#include <cstdio>
#include <string>

#include "bridge/imbridgemgr.h"
#include "bridge/imsdkbridge.h"
#include "kexbase/message_loop.h"
#include "kexbase/native_library.h"
#include "kexbase/strings.h"
#include "kexcom/factory.h"

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
    std::printf("page %s, call %s %s: %s\n", base::WideToUTF8(page).c_str(),
                base::WideToUTF8(seq).c_str(), failed ? "failed" : "answered",
                base::WideToUTF8(payload).c_str());
  }
  void Reserved() override {}
  void Notify(const std::wstring& event, const std::wstring& json) override {
    std::printf("event %s: %s\n", base::WideToUTF8(event).c_str(), base::WideToUTF8(json).c_str());
  }
};

template <class I>
RefPtr<I> Create(IKexCOMFactory& factory, const char* class_name, const char* iid) {
  void* object = nullptr;
  factory.CreateInstance(class_name, iid, &object);
  return RefPtr<I>::Adopt(static_cast<I*>(object));
}

}  // namespace

int main() {
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
  bridge->JsInvoke(
      {L"view-1", L"workbench.im.login.invoke", {L"call-1", L"GetCurrentLoginID", L"{}"}});
  loop.RunUntilIdle();  // answers from engine threads would come here

  bridge->UnbindPage();
  manager->Uninit();
  return 0;
}
