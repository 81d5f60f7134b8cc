#include "bench/measured_call.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "kexbase/strings.h"

namespace imsdk::bench {

namespace {

void ErrorUnlessAnswered(benchmark::State& state, const CountingPage& page, std::int64_t calls) {
  if (page.answers != calls || page.failures != 0) {
    state.SkipWithError("answers are missing or failed");
  }
}

}  // namespace

void MeasureCall(benchmark::State& state, BenchHost& host, const MeasuredCall& call) {
  std::int64_t seq = 0;
  for (auto step : state) {
    host.Invoke(call.module, std::to_wstring(++seq), call.method, call.request);
  }
  ErrorUnlessAnswered(state, host.page, state.iterations());
}

void MeasureFloor(benchmark::State& state, BenchHost& host, const MeasuredCall& call) {
  std::wstring payload;
  host.page.keep = &payload;
  host.Invoke(call.module, L"1", call.method, call.request);
  rapidjson::Document answer;
  answer.Parse(base::WideToUTF8(payload).c_str());
  const std::string request = base::WideToUTF8(call.request);
  for (auto step : state) {
    rapidjson::Document read;
    read.Parse(request.c_str(), request.size());
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    answer.Accept(writer);
    benchmark::DoNotOptimize(read.IsObject());
    benchmark::DoNotOptimize(text.GetString());
  }
  ErrorUnlessAnswered(state, host.page, 1);
}

}  // namespace imsdk::bench
