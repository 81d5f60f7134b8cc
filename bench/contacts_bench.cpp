// What it costs to ask for the base information of many users.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench/measured_call.h"

namespace imsdk::bench {
namespace {

// A nick of about 60 characters, some of them beyond ASCII.
std::wstring Nick(std::int64_t number) {
  const std::wstring text =
      L"a-member-of-the-watch-with-a-long-name-\x6E2F\x53E3-" + std::to_wstring(100'000 + number);
  return text + std::wstring(60 - text.size(), L'x');
}

MeasuredCall BaseInfo(BenchHost& host, std::int64_t users) {
  MeasuredCall call{L"workbench.im.contact.invoke", L"GetContactBaseInfo", {}};
  auto& contacts = host.engine.Account().contacts->AnswerOf<biz::IMContacts>().contacts;
  for (std::int64_t i = 0; i < users; ++i) {
    contacts.push_back({.userid = {L"cnbazaro", Nick(i)},
                        .status = biz::kContactOnline,
                        .display = L"Name " + std::to_wstring(i),
                        .portrait = L"portraits/" + std::to_wstring(i) + L".png",
                        .unreadnum = static_cast<std::int32_t>(i)});
    call.request += i == 0 ? L'[' : L',';
    call.request += LR"({"userid":{"appkey":"cnbazaro","nick":")" + Nick(i) + LR"("}})";
  }
  call.request += L']';
  return call;
}

void BM_Invoke(benchmark::State& state) {
  BenchHost host;
  MeasureCall(state, host, BaseInfo(host, state.range(0)));
}
BENCHMARK(BM_Invoke)->Name("BM_Invoke/GetContactBaseInfo")->Arg(20)->Arg(200);

void BM_Floor(benchmark::State& state) {
  BenchHost host;
  MeasureFloor(state, host, BaseInfo(host, state.range(0)));
}
BENCHMARK(BM_Floor)->Name("BM_Floor/GetContactBaseInfo")->Arg(20)->Arg(200);

}  // namespace
}  // namespace imsdk::bench
