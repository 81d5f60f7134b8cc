// Pages and searches of a store of a million messages, as a page of the client asks for them.

#include <benchmark/benchmark.h>

#include <fstream>
#include <future>
#include <string>

#include "account/files/data_folder.h"
#include "bench/million_messages.h"
#include "imsdk/biz/account.h"
#include "imsdk/embedded_server.h"
#include "imsdk/engine.h"
#include "kexcore/kexcom.h"

namespace imsdk::bench {
namespace {

// The greatest memory of the process since `Reset`, as the kernel counts it.
class PeakMemory {
 public:
  static void Reset() { std::ofstream("/proc/self/clear_refs") << 5; }
  static double Megabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string key; status >> key;) {
      double kilobytes = 0;
      if (key == "VmHWM:" && status >> kilobytes) return kilobytes / 1024;
    }
    return 0;
  }
};

// An engine on the store, and the largest conversation of its account.
class History {
 public:
  History() {
    MakeMillionMessages(BENCH_STORE);
    std::string error;
    server_ = StartEmbeddedServer({account::FromPath(BENCH_STORE)}, &error);
    if (!server_) return;
    EngineOptions options;
    options.data = account::FromPath(BENCH_STORE);
    options.link = [this] { return server_->Link(); };
    engine_ = StartEngine(options, &error);
    if (!engine_) return;
    const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
    std::promise<void> answered;
    accounts->LoginByPassword({kOwner, kOwnerPassword},
                              [&](const auto&, const auto&) { answered.set_value(); });
    answered.get_future().wait();
    const auto account = accounts->GetAccount(kOwner);
    if (account)
      chat_ = account->GetIMSingleChatMgr()->GetConversation(biz::IMConversationID(kLargestPeer));
  }

  bool there() const { return static_cast<bool>(chat_); }

  std::size_t Page(const biz::IMPageRequest& request) {
    std::promise<std::size_t> answer;
    chat_->GetLocalHisMsg(request, [&](const biz::ResultCode&, const biz::IMMessagePage& page) {
      answer.set_value(page.msgs.size());
    });
    return answer.get_future().get();
  }

  std::int32_t Search(const biz::IMSearchRequest& request) {
    std::promise<std::int32_t> answer;
    chat_->SearchMsg(request, [&](const biz::ResultCode&, const biz::IMSearchPage& page) {
      answer.set_value(page.msgs.empty() ? 0 : page.totalcount);
    });
    return answer.get_future().get();
  }

 private:
  std::unique_ptr<EmbeddedServer> server_;
  std::unique_ptr<Engine> engine_;
  RefPtr<biz::IIMConversation> chat_;
};

// Runs `step` for each iteration; a figure counts only when every step held.
template <class Step>
void Measure(benchmark::State& state, Step step) {
  History history;
  PeakMemory::Reset();
  const double before = PeakMemory::Megabytes();
  bool good = history.there() && step(history);  // opens the store
  for (auto iteration : state) good = good && step(history);
  state.counters["peak_growth_MB"] = PeakMemory::Megabytes() - before;
  if (!good) state.SkipWithError("the history did not answer as it should");
}

void BM_FirstPage(benchmark::State& state) {
  Measure(state, [](History& history) { return history.Page({.count = 20}) == 20; });
}

void BM_DeepPage(benchmark::State& state) {
  const biz::IMPageRequest deep{
      .msgtime = kFirstTime + 1000 * kPause, .count = 20, .gohistory = true};
  Measure(state, [&](History& history) { return history.Page(deep) == 20; });
}

void SearchWord(benchmark::State& state, const std::wstring& word, std::int32_t most) {
  biz::IMSearchRequest request;
  request.keywords = {word};
  request.needpage = true;
  request.page = 1;
  request.count = 20;
  Measure(state, [&](History& history) {
    const std::int32_t found = history.Search(request);
    return found > most / 2 && found <= most;
  });
}

void BM_SearchOneWord(benchmark::State& state) { SearchWord(state, kRareWord, 1200); }
void BM_SearchCommonWord(benchmark::State& state) { SearchWord(state, kCommonWord, 60'000); }

void Settings(benchmark::internal::Benchmark* benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly();
}
BENCHMARK(BM_FirstPage)->Name("BM_History/FirstPage")->Apply(Settings);
BENCHMARK(BM_DeepPage)->Name("BM_History/DeepPage")->Apply(Settings);
BENCHMARK(BM_SearchOneWord)->Name("BM_History/SearchOneWord")->Apply(Settings);
BENCHMARK(BM_SearchCommonWord)->Name("BM_History/SearchCommonWord")->Apply(Settings);

}  // namespace
}  // namespace imsdk::bench
