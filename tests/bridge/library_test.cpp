// The shipped library as a host sees it: opened from its file, called through the function tables.
// The shapes below repeat the contracts' slot orders on their own, so that a declaration that moves
// in a contract fails here.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bridge/imbridgemgr.h"
#include "bridge/imsdkbridge.h"
#include "kexbase/message_loop.h"
#include "kexbase/native_library.h"
#include "kexcom/factory.h"

namespace imsdk {

// Not in the anonymous namespace: there the compiler would see that nobody implements them.
namespace shape {

struct FactoryShape {
  virtual const char* Slot1() const = 0;
  virtual const char* Slot2() const = 0;
  virtual IKexCOMEnum* Slot3() = 0;
  virtual std::int32_t Slot4(const char* name, const char* iid, void** object) = 0;
  virtual void Slot5(const char* name, IKexCOMCreator* creator) = 0;

 protected:
  ~FactoryShape() = default;
};

struct CreatorShape {
  virtual std::int32_t Slot1(const char* iid, void** object) = 0;
  virtual const char* Slot2() const = 0;
  virtual const char* Slot3() const = 0;
  virtual const char* Slot4() const = 0;
  virtual const KexCOMClassInfo& Slot5() const = 0;

 protected:
  ~CreatorShape() = default;
};

struct RootShape {
  virtual void Slot1() = 0;
  virtual void Slot2() = 0;
  virtual void Slot3() = 0;
  virtual void Slot4() = 0;

 protected:
  ~RootShape() = default;
};

struct ManagerShape {
  virtual void Slot1() = 0;
  virtual void Slot2() = 0;
  virtual std::int32_t Slot3() = 0;
  virtual void Slot4() = 0;
  virtual std::int32_t Slot5(bridge::TextSink sink, void* context) = 0;

 protected:
  ~ManagerShape() = default;
};

struct BridgeShape {
  virtual void Slot1() = 0;
  virtual void Slot2() = 0;
  virtual std::int32_t Slot3(const bridge::PageBinding& binding) = 0;
  virtual void Slot4(const bridge::SdkParam& sdkParam) = 0;
  virtual void Slot5() = 0;
  virtual const wchar_t* Slot6() const = 0;

 protected:
  ~BridgeShape() = default;
};

struct PageShape {
  virtual void Slot1() = 0;
  virtual void Slot2() = 0;
  virtual void Slot3(const std::wstring& page, const std::wstring& seq, bool failed,
                     const std::wstring& payload) = 0;
  virtual void Slot4() = 0;
  virtual void Slot5(const std::wstring& event, const std::wstring& json) = 0;

 protected:
  ~PageShape() = default;
};

}  // namespace shape

namespace {

using namespace shape;

// A page handler that knows the table only.
class Page final : public PageShape {
 public:
  void Slot1() override { ++refs; }
  void Slot2() override { --refs; }
  void Slot3(const std::wstring&, const std::wstring& seq, bool failed,
             const std::wstring&) override {
    calls.push_back(seq + (failed ? L" failed" : L" answered"));
  }
  void Slot4() override { calls.push_back(L"slot 4"); }
  void Slot5(const std::wstring& event, const std::wstring& json) override {
    calls.push_back(event + json);
  }

  bridge::IPageHandler* handler() {
    return reinterpret_cast<bridge::IPageHandler*>(static_cast<PageShape*>(this));
  }
  int refs = 0;
  std::vector<std::wstring> calls;
};

template <class Shape>
Shape* As(void* object) {
  return static_cast<Shape*>(object);
}

class Library : public ::testing::Test {
 protected:
  Library() {
    std::string error;
    const auto library = base::NativeLibrary::Open(base::FilePath::FromUTF8(BRIDGE_FILE), &error);
    get_factory = library.Function<IKexCOMFactory*()>("GetKexCOMFactory");
    if (!get_factory) throw std::runtime_error(error);
  }
  FactoryShape* Factory() const { return As<FactoryShape>(get_factory()); }

  GetKexCOMFactoryFn get_factory = nullptr;
};

TEST_F(Library, HasOneFactoryWithItsClasses) {
  EXPECT_EQ(get_factory(), get_factory());
  EXPECT_STREQ(Factory()->Slot1(), "bridge");
  EXPECT_STREQ(Factory()->Slot2(), "bridge");

  const auto classes = RefPtr<IKexCOMEnum>::Adopt(Factory()->Slot3());
  std::vector<std::string> found;
  const char* name = nullptr;
  IKexCOMCreator* creator = nullptr;
  while (classes->Next(&name, &creator)) {
    auto* shape = As<CreatorShape>(creator);
    EXPECT_STREQ(shape->Slot3(), name);
    EXPECT_STREQ(shape->Slot4(), name);
    EXPECT_STREQ(shape->Slot5().description, "");
    found.push_back(std::string(name) + shape->Slot2());
    void* object = nullptr;
    EXPECT_EQ(shape->Slot1(kIID_IKexCOMRefCounted, &object), 0);
    As<RootShape>(object)->Slot1();
    As<RootShape>(object)->Slot4();
    As<RootShape>(object)->Slot2();
    As<RootShape>(object)->Slot2();
  }
  EXPECT_EQ(found, (std::vector<std::string>{"IMBridgeMgr{D895EEAD-C80D-4FBA-920B-D6826E5516CD}",
                                             "IMSDKBridge{9FAD7EAB-6A8F-4C2F-8DF0-ED5BE44B6FB0}"}));
  void* none = nullptr;
  EXPECT_EQ(static_cast<std::uint32_t>(Factory()->Slot4("imsdkbridge", kIID_IIMSDKBridge, &none)),
            0xF0C90000u);
  EXPECT_EQ(none, nullptr);
}

TEST_F(Library, CarriesACallThroughItsTables) {
  void* object = nullptr;
  ASSERT_EQ(Factory()->Slot4("IMBridgeMgr", kIID_IIMBridgeMgr, &object), 0);
  auto* manager = As<ManagerShape>(object);
  void* other = nullptr;
  ASSERT_EQ(Factory()->Slot4("IMSDKBridge", kIID_IIMSDKBridge, &object), 0);
  ASSERT_EQ(Factory()->Slot4("IMSDKBridge", kIID_IIMSDKBridge, &other), 0);
  EXPECT_NE(object, other);
  As<BridgeShape>(other)->Slot2();
  auto* view = As<BridgeShape>(object);

  base::MessageLoop loop;
  Page page;
  const bridge::PageBinding binding{L"view", page.handler(), loop.task_runner(), {}};
  EXPECT_EQ(view->Slot3(binding), E_UNEXPECTED);  // the business layer does not run yet
  ASSERT_EQ(manager->Slot3(), 0);
  ASSERT_EQ(view->Slot3(binding), 0);
  EXPECT_EQ(page.refs, 1);
  view->Slot4({L"view", L"workbench.im.login.invoke", {L"1", L"NoSuchMethod", L"{}"}});
  view->Slot4({L"view", L"workbench.im.event_notify", {L"2", L"onPage", L"{}"}});
  EXPECT_EQ(page.calls, (std::vector<std::wstring>{L"1 failed", L"onPage{}", L"2 answered"}));
  view->Slot5();
  EXPECT_EQ(page.refs, 0);
  EXPECT_STREQ(view->Slot6(), L"");
  view->Slot2();
  manager->Slot4();

  std::string described;
  const bridge::TextSink sink = [](void* context, const char* text, std::size_t size) {
    static_cast<std::string*>(context)->assign(text, size);
  };
  EXPECT_EQ(manager->Slot5(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(manager->Slot5(sink, &described), 0);
  EXPECT_TRUE(described.starts_with(R"({"openrpc":"1.)")) << described.substr(0, 40);
  manager->Slot2();
}

}  // namespace
}  // namespace imsdk
