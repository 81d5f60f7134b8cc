// A call from `JsInvoke` to the page's answer, measured whole, and the JSON of the same request and
// answer measured alone: the floor below which no bridge gets.
#pragma once

#include <benchmark/benchmark.h>

#include <string>

#include "bench/bench_host.h"

namespace imsdk::bench {

struct MeasuredCall {
  std::wstring module;
  std::wstring method;
  std::wstring request;
};

// Each is an error of the benchmark when a call is not answered, or answered as failed.
void MeasureCall(benchmark::State& state, BenchHost& host, const MeasuredCall& call);
void MeasureFloor(benchmark::State& state, BenchHost& host, const MeasuredCall& call);

}  // namespace imsdk::bench
