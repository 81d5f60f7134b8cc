// What messages cost on their way to a page, beside the JSON of the same messages alone.

#include "bench/measured_call.h"

namespace imsdk::bench {
namespace {

const MeasuredCall kGetNewMsg{
    L"workbench.im.singlemsg.invoke", L"GetNewMsg",
    LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"},"msgtime":"","msgid":"","count":20,)"
    LR"("gohistory":1,"ignoreboundary":0,"autoroam":0})"};

std::vector<biz::IMMessage> Messages(std::int64_t count) {
  std::vector<biz::IMMessage> msgs;
  for (std::int64_t i = 1; i <= count; ++i) {
    msgs.push_back(test::MakeMessage(1'700'000'000'000 + i, test::kLighthouse, test::kHarbor,
                                     L"The light is on, the pier is free: come in. 灯亮了"));
  }
  return msgs;
}

void BM_GetNewMsg(benchmark::State& state) {
  BenchHost host;
  host.engine.Chats().Chat(test::kLighthouse).page.msgs = Messages(state.range(0));
  MeasureCall(state, host, kGetNewMsg);
}
BENCHMARK(BM_GetNewMsg)->Name("BM_Invoke/GetNewMsg")->Arg(20);

// Every registered view of the account gets every event.
void Notify(benchmark::State& state, int views, std::int64_t count) {
  BenchHost host(views);
  host.RegisterAll();
  const auto msgs = Messages(count);
  const std::vector<biz::IMUserID> cids(msgs.size(), test::kLighthouse);
  for (auto step : state) host.engine.Chats().events.on_receive_new_msg(cids, msgs);
  if (host.page.notifications != views * state.iterations()) {
    state.SkipWithError("notifications are missing");
  }
}

void BM_Notify(benchmark::State& state) { Notify(state, 1, state.range(0)); }
BENCHMARK(BM_Notify)->Name("BM_Notify/onReceiveNewMsg")->Arg(20)->Arg(200);

void BM_NotifyViews(benchmark::State& state) { Notify(state, 8, 20); }
BENCHMARK(BM_NotifyViews)->Name("BM_Notify/views:8");

void BM_FloorGetNewMsg(benchmark::State& state) {
  BenchHost host;
  host.engine.Chats().Chat(test::kLighthouse).page.msgs = Messages(state.range(0));
  MeasureFloor(state, host, kGetNewMsg);
}
BENCHMARK(BM_FloorGetNewMsg)->Name("BM_Floor/GetNewMsg")->Arg(20);

}  // namespace
}  // namespace imsdk::bench
