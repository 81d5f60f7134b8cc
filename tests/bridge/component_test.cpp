#include "component/comfactory.h"

#include <gtest/gtest.h>

#include "component/comobject.h"
#include "tests/support/test_host.h"

namespace imsdk {
namespace {

using component::CKexCOMFactory;
using component::CKexCOMObject;
using component::CKexCOMObjectRuntime;

struct IProbe {
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  virtual int Memory() = 0;

 protected:
  ~IProbe() = default;
};

int g_alive = 0;

struct Probe : IProbe {
  using Interface = IProbe;
  static constexpr const char* kClassName = "Probe";
  static constexpr const char* kClassId = "{probe}";
  static constexpr const char* kInterfaceId = "{iprobe}";
  Probe() { ++g_alive; }
  virtual ~Probe() { --g_alive; }
  int Memory() override { return 7; }
};

TEST(Factory, MakesObjectsByExactNameAndCountsThem) {
  CKexCOMObjectRuntime<Probe> runtime;
  CKexCOMFactory factory("bridge", "bridge", {{"Probe", &runtime}});
  EXPECT_STREQ(factory.Name(), "bridge");
  EXPECT_STREQ(factory.SecondName(), "bridge");

  void* first = nullptr;
  void* second = nullptr;
  ASSERT_EQ(factory.CreateInstance("Probe", "{iprobe}", &first), 0);
  ASSERT_EQ(factory.CreateInstance("Probe", "{iprobe}", &second), 0);
  EXPECT_NE(first, second);
  EXPECT_EQ(static_cast<IProbe*>(first)->Memory(), 7);
  static_cast<IProbe*>(first)->AddRef();
  static_cast<IProbe*>(first)->Release();
  EXPECT_EQ(g_alive, 2);
  static_cast<IProbe*>(first)->Release();
  static_cast<IProbe*>(second)->Release();
  EXPECT_EQ(g_alive, 0);

  void* root = nullptr;
  ASSERT_EQ(factory.CreateInstance("Probe", kIID_IKexCOMRefCounted, &root), 0);
  static_cast<IKexCOMRefCounted*>(root)->Release();
  EXPECT_EQ(g_alive, 0);
}

TEST(Factory, RefusesWithoutMakingAnything) {
  CKexCOMObjectRuntime<Probe> runtime;
  CKexCOMFactory factory("bridge", "bridge", {{"Probe", &runtime}});
  struct {
    const char* name;
    const char* iid;
    std::int32_t result;
  } const cases[] = {
      {"probe", "{iprobe}", kKexCOMUnknownClass}, {"Prob", "{iprobe}", kKexCOMUnknownClass},
      {"", "{iprobe}", kKexCOMUnknownClass},      {nullptr, "{iprobe}", kKexCOMUnknownClass},
      {"Probe", "{other}", E_NOINTERFACE},        {"Probe", nullptr, E_NOINTERFACE},
  };
  for (const auto& c : cases) {
    void* object = &object;
    EXPECT_EQ(factory.CreateInstance(c.name, c.iid, &object), c.result);
    EXPECT_EQ(object, nullptr);
  }
  EXPECT_EQ(factory.CreateInstance("Probe", "{iprobe}", nullptr), E_POINTER);
  EXPECT_EQ(g_alive, 0);
}

TEST(Factory, RegisteringANameAgainReplacesItsCreator) {
  CKexCOMObjectRuntime<Probe> first;
  CKexCOMObjectRuntime<Probe> second;
  CKexCOMFactory factory("bridge", "bridge", {{"B", &first}, {"A", &first}});
  const auto before = RefPtr<IKexCOMEnum>::Adopt(factory.Enumerate());
  factory.Register("B", &second);
  factory.Register("C", nullptr);

  const auto entries = [](IKexCOMEnum& classes) {
    std::vector<std::pair<std::string, IKexCOMCreator*>> found;
    const char* name = nullptr;
    IKexCOMCreator* creator = nullptr;
    while (classes.Next(&name, &creator)) found.emplace_back(name, creator);
    return found;
  };
  using Entries = decltype(entries(*before));
  const auto after = RefPtr<IKexCOMEnum>::Adopt(factory.Enumerate());
  EXPECT_EQ(entries(*after), (Entries{{"A", &first}, {"B", &second}}));
  EXPECT_EQ(entries(*before), (Entries{{"A", &first}, {"B", &first}}));  // a snapshot
  before->Reset();
  EXPECT_EQ(entries(*before).size(), 2u);
}

struct DirtyProbe : IProbe {
  int memory;
  // Left uninitialised on purpose: the object's memory is zero before construction.
  DirtyProbe() {}  // NOLINT
  virtual ~DirtyProbe() = default;
  int Memory() override { return memory; }
};

TEST(ComObject, MemoryIsZeroBeforeConstruction) {
  for (int i = 0; i < 50; ++i) {
    const RefPtr<CKexCOMObject<DirtyProbe>> probe(new CKexCOMObject<DirtyProbe>);
    ASSERT_EQ(probe->Memory(), 0);
    probe->memory = 0x5A5A5A5A;  // for the next object in the same place
  }
}

TEST(Bridge, IsNotBoundTwiceNorWithoutAPage) {
  test::TestHost host;
  EXPECT_EQ(host.bridge->BindPage({}), E_POINTER);
  host.Bind();
  EXPECT_EQ(host.bridge->BindPage({L"view-2", &host.page, host.loop.task_runner(), {}}),
            E_UNEXPECTED);
  EXPECT_EQ(host.page.refs, 1);
  host.bridge->UnbindPage();
  EXPECT_EQ(host.page.refs, 0);
}

TEST(Manager, TracesItsStartWithTheVersion) {
  test::TestHost host;
  const auto lines = host.log->Lines(L"Biz Init Begin.");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].items.at("version"), L"3.2.17_IMSDK");
  EXPECT_EQ(lines[0].function, "CIMBridgeMgr::Init");
}

}  // namespace
}  // namespace imsdk
