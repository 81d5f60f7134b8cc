// A host for benchmarks: the shipped library from its file, an engine that answers from memory, a
// logger that keeps nothing, and a page that counts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bridge/imbridgemgr.h"
#include "bridge/imsdkbridge.h"
#include "kexbase/message_loop.h"
#include "kexcore/logger.h"
#include "tests/support/memory_engine.h"

namespace imsdk::bench {

class CountingPage final : public bridge::IPageHandler {
 public:
  void AddRef() override {}
  void Release() override {}
  void DeliverAnswer(const std::wstring&, const std::wstring&, bool failed,
                     const std::wstring& payload) override {
    ++answers;
    failures += failed;
    bytes += payload.size();
    if (keep) *keep = payload;
  }
  void Reserved() override {}
  void Notify(const std::wstring&, const std::wstring& json) override {
    ++notifications;
    bytes += json.size();
  }

  std::int64_t answers = 0;
  std::int64_t failures = 0;
  std::int64_t notifications = 0;
  std::size_t bytes = 0;
  std::wstring* keep = nullptr;  // takes each answer's payload, unless null
};

// Bound views of `test::kHarbor`, each with its own bridge, on one page. Ends the process with a
// message when the library cannot be had: a figure without it would mean nothing.
class BenchHost {
 public:
  explicit BenchHost(int views = 1);
  ~BenchHost();

  // One call of the first view; its answer has come when this returns.
  void Invoke(const std::wstring& method, const std::wstring& seq, const std::wstring& bizmethod,
              const std::wstring& json);

  // The page of every view registers for all notifications.
  void RegisterAll();

  CountingPage page;
  test::MemoryEngine engine;

 private:
  base::MessageLoop loop_;
  RefPtr<bridge::IIMBridgeMgr> manager_;
  std::vector<RefPtr<bridge::IIMSDKBridge>> bridges_;
};

}  // namespace imsdk::bench
