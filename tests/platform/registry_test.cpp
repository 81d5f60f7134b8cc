#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "kexcore/kexcom.h"

namespace {

class Service : public RefPtrCounted<IKexCOMRefCounted> {
 public:
  static constexpr char kServiceId[] = "test.Service";

  explicit Service(std::function<void()> on_end) : on_end_(std::move(on_end)) {}
  ~Service() override { on_end_(); }

 private:
  const std::function<void()> on_end_;
};

TEST(Registry, HoldsOneReferenceForEachName) {
  IKexCOM* const registry = GetKexCOM();
  std::string log;
  // A service may use the registry while it ends.
  registry->RegisterService("test.a", new Service([&] {
                              log += "first ";
                              registry->UnregisterService("test.unknown");
                            }));
  {
    auto held = RefPtr<IKexCOMRefCounted>::Adopt(registry->QueryService("test.a"));
    ASSERT_TRUE(held);
    registry->RegisterService("test.a", new Service([&] { log += "second "; }));
    EXPECT_EQ(log, "");
    auto other = RefPtr<IKexCOMRefCounted>::Adopt(registry->QueryService("test.a"));
    EXPECT_NE(held.get(), other.get());
  }
  EXPECT_EQ(log, "first ");
  registry->UnregisterService("test.a");
  EXPECT_EQ(log, "first second ");
  EXPECT_EQ(registry->QueryService("test.a"), nullptr);
  registry->UnregisterService("test.a");

  registry->RegisterService("test.a", nullptr);
  registry->RegisterService(nullptr, nullptr);
  registry->UnregisterService(nullptr);
  EXPECT_EQ(registry->QueryService(nullptr), nullptr);
  EXPECT_EQ(registry->QueryService("test.a"), nullptr);
}

TEST(Registry, IsUsedByManyThreads) {
  std::atomic<int> made{0};
  std::atomic<int> ended{0};
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 2000; ++i) {
        if (t < 2) {
          ++made;
          GetKexCOM()->RegisterService(Service::kServiceId, new Service([&] { ++ended; }));
        }
        kexcore::GetService<Service>();
        if (t == 3) GetKexCOM()->UnregisterService(Service::kServiceId);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  GetKexCOM()->UnregisterService(Service::kServiceId);
  EXPECT_EQ(made, ended);
}

}  // namespace
