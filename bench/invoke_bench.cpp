// What one call costs from JsInvoke to the page handler.

#include <benchmark/benchmark.h>

#include "bench/bench_host.h"

namespace imsdk::bench {
namespace {

const std::wstring kLogin = L"workbench.im.login.invoke";
const std::wstring kNobody = L"workbench.im.nobody.invoke";

// A figure counts only when every call was answered with success.
void CheckAnswers(benchmark::State& state, const BenchHost& host) {
  if (host.page.answers != state.iterations() || host.page.failures != 0) {
    state.SkipWithError("answers are missing or failed");
  }
}

void CurrentLoginID(benchmark::State& state, BenchHost& host) {
  std::int64_t seq = 0;
  for (auto step : state) {
    host.Invoke(kLogin, std::to_wstring(++seq), L"GetCurrentLoginID", L"{}");
  }
  CheckAnswers(state, host);
}

void BM_Invoke(benchmark::State& state) {
  BenchHost host;
  CurrentLoginID(state, host);
}
BENCHMARK(BM_Invoke)->Name("BM_Invoke/GetCurrentLoginID");

// The same call while others wait for answers that never come.
void BM_Pending(benchmark::State& state) {
  BenchHost host;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    host.Invoke(kNobody, L"open-" + std::to_wstring(i), L"Wait", L"{}");
  }
  CurrentLoginID(state, host);
}
BENCHMARK(BM_Pending)->Arg(1000)->Arg(100000);

}  // namespace
}  // namespace imsdk::bench
