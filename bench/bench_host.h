// A host for benchmarks: the shipped library from its file, an engine that answers from memory, a
// logger that keeps nothing, and a page that counts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

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
  void Notify(const std::wstring&, const std::wstring& json) override { bytes += json.size(); }

  std::int64_t answers = 0;
  std::int64_t failures = 0;
  std::size_t bytes = 0;
  std::wstring* keep = nullptr;  // takes each answer's payload, unless null
};

// One bound view of `test::kHarbor`. Ends the process with a message when the library cannot be
// had: a figure without it would mean nothing.
class BenchHost {
 public:
  BenchHost();
  ~BenchHost();

  // One call; its answer has come when this returns.
  void Invoke(const std::wstring& method, const std::wstring& seq, const std::wstring& bizmethod,
              const std::wstring& json);

  CountingPage page;
  test::MemoryEngine engine;

 private:
  base::MessageLoop loop_;
  RefPtr<bridge::IIMBridgeMgr> manager_;
  RefPtr<bridge::IIMSDKBridge> bridge_;
};

}  // namespace imsdk::bench
