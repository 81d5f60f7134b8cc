// What a large tribe costs: its member list on the way to a page, beside its JSON alone, and the
// account's list of the members.

#include "account/tribes/roster.h"
#include "bench/measured_call.h"

namespace imsdk::bench {
namespace {

const MeasuredCall kGetMembers{L"workbench.im.tribemgr.invoke", L"GetTribeMemberList",
                               LR"({"tribeid":"10001"})"};

biz::IMTribeMember Member(std::int64_t number) {
  const std::wstring nick = L"member" + std::to_wstring(number);
  biz::IMTribeMember member;
  member.userid = {L"cnbazaro", nick};
  member.status = biz::kMemberOnline;
  member.display = L"Member No. " + std::to_wstring(number);
  member.name = nick;
  return member;
}

template <auto Measure>
void MemberList(benchmark::State& state) {
  BenchHost host;
  auto& roster = std::get<biz::IMTribeRoster>(host.engine.Account().tribes->answers);
  for (std::int64_t i = 0; i < state.range(0); ++i) roster.memberlist.push_back(Member(i));
  Measure(state, host, kGetMembers);
}
BENCHMARK(MemberList<MeasureCall>)
    ->Name("BM_Invoke/GetTribeMemberList")
    ->Arg(1'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(MemberList<MeasureFloor>)
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
