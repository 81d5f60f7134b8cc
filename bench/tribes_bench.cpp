// What a large tribe costs: its member list on the way to a page, beside its JSON alone, and the
// account's list of the members.

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "account/tribes/roster.h"
#include "bench/bench_host.h"
#include "kexbase/strings.h"

namespace imsdk::bench {
namespace {

const std::wstring kTribeMgr = L"workbench.im.tribemgr.invoke";
const std::wstring kRequest = LR"({"tribeid":"10001"})";

biz::IMTribeMember Member(std::int64_t number) {
  const std::wstring nick = L"member" + std::to_wstring(number);
  return {{L"cnbazaro", nick}, biz::kMemberOnline, L"Member No. " + std::to_wstring(number), nick};
}

void BM_MemberList(benchmark::State& state) {
  BenchHost host;
  auto& roster = std::get<biz::IMTribeRoster>(host.engine.Account().tribes->answers);
  for (std::int64_t i = 0; i < state.range(0); ++i) roster.memberlist.push_back(Member(i));
  std::int64_t seq = 0;
  for (auto step : state) {
    host.Invoke(kTribeMgr, std::to_wstring(++seq), L"GetTribeMemberList", kRequest);
  }
  if (host.page.answers != state.iterations() || host.page.failures != 0) {
    state.SkipWithError("answers are missing or failed");
  }
}
BENCHMARK(BM_MemberList)
    ->Name("BM_Invoke/GetTribeMemberList")
    ->Arg(1'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);

void BM_FloorMemberList(benchmark::State& state) {
  BenchHost host;
  auto& roster = std::get<biz::IMTribeRoster>(host.engine.Account().tribes->answers);
  for (std::int64_t i = 0; i < state.range(0); ++i) roster.memberlist.push_back(Member(i));
  std::wstring payload;
  host.page.keep = &payload;
  host.Invoke(kTribeMgr, L"1", L"GetTribeMemberList", kRequest);
  rapidjson::Document answer;
  answer.Parse(base::WideToUTF8(payload).c_str());
  const std::string request = base::WideToUTF8(kRequest);
  for (auto step : state) {
    rapidjson::Document read;
    read.Parse(request.c_str(), request.size());
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    answer.Accept(writer);
    benchmark::DoNotOptimize(read.IsObject());
    benchmark::DoNotOptimize(text.GetString());
  }
}
BENCHMARK(BM_FloorMemberList)
    ->Name("BM_Floor/GetTribeMemberList")
    ->Arg(1'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);

account::Roster RosterOf(std::int64_t members) {
  account::Roster roster;
  for (std::int64_t i = 0; i < members; ++i) roster.PutFresh(Member(i));
  return roster;
}

void BM_RosterJoin(benchmark::State& state) {
  account::Roster roster = RosterOf(state.range(0));
  std::int64_t next = state.range(0);
  for (auto step : state) roster.Put(Member(next++));
}
BENCHMARK(BM_RosterJoin)->Name("BM_Roster/join")->Arg(100)->Arg(100'000);

// After each change the list is made anew.
void BM_RosterList(benchmark::State& state) {
  account::Roster roster = RosterOf(state.range(0));
  for (auto step : state) {
    ++roster.online;
    benchmark::DoNotOptimize(roster.List());
  }
}
BENCHMARK(BM_RosterList)->Name("BM_Roster/list")->Arg(100'000)->Unit(benchmark::kMillisecond);

void BM_RosterSearch(benchmark::State& state) {
  account::Roster roster = RosterOf(state.range(0));
  for (auto step : state) benchmark::DoNotOptimize(roster.Search(L"No. 9999"));
}
BENCHMARK(BM_RosterSearch)->Name("BM_Roster/search")->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace imsdk::bench
