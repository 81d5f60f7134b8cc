// Trace lines: brief lists, groups, the record format, loggers in trouble.

#include <gtest/gtest.h>

#include "tests/support/test_host.h"
#include "trace/traceproxy.h"
#include "trace/tracetarget.h"

namespace imsdk {
namespace {

using ns_log::CTraceProxy;
using ns_log::MakeTraceItem;

constexpr ns_log::TraceSite kSite{"Test::Function"};

TEST(Trace, KeyGroupTakesItsItemsWhateverTheOrder) {
  test::TestHost host;
  const std::wstring text = L"\x4F60=|";
  CTraceProxy(ns_log::kWarning, kSite, L"point")
      .Item(MakeTraceItem("session_id", L"s"))
      .Item(MakeTraceItem("result_code", -5))
      .Brief("_brief_,a, it->b,c", std::int64_t{1} << 40, text, true)
      .Item(MakeTraceItem("node_name", "n"))
      .Item(MakeTraceItem("trace_id", "{\"}"))
      .Item(MakeTraceItem("unique_id", L"u"));
  const auto lines = host.log->Lines(L"point");
  ASSERT_EQ(lines.size(), 1u);
  const std::wstring keys = LR"({"result_code":"-5","node_name":"n","unique_id":"u"})";
  const std::wstring others = LR"({"session_id":"s","trace_id":"{\"}"})";
  const std::wstring briefs = L" a=1099511627776,it->b=\x4F60=|,c=1";
  EXPECT_EQ(lines[0].record, std::to_wstring(keys.size()) + L"|" + std::to_wstring(others.size()) +
                                 L"|" + std::to_wstring(briefs.size()) + keys + others + briefs);
  EXPECT_EQ(lines[0].items.at("it->b"), text);
  EXPECT_EQ(lines[0].level, 2);
}

TEST(Trace, ALineWithoutValuesCarriesTheBareBriefList) {
  test::TestHost host;
  CTraceProxy(ns_log::kRoutine, kSite, L"bare");
  const auto lines = host.log->Lines(L"bare");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].brief, "_brief_,");
  EXPECT_EQ(lines[0].record, L"2|2|0{}{}");
}

TEST(Trace, TemporariesAreKeptUntilTheLineIsWritten) {
  test::TestHost host;
  const auto long_text = [] { return std::wstring(100, L'x'); };
  CTraceProxy(ns_log::kRoutine, kSite, L"late")
      .Brief("_brief_,text,view", long_text(), std::wstring_view(L"v"));
  const auto lines = host.log->Lines(L"late");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].items.at("text"), long_text());
  EXPECT_EQ(lines[0].items.at("view"), L"v");
}

TEST(Trace, SourceAndLineAreThePlaceThatTraces) {
  test::TestHost host;
  CTraceProxy(ns_log::kRoutine, {"Test::Function", "Inner"}, L"here");
  const int line = __LINE__ - 1;
  EXPECT_EQ(host.log->Lines(L"here").at(0).source, "trace_test");
  EXPECT_EQ(host.log->Lines(L"here").at(0).line, line);
  EXPECT_EQ(host.log->Lines(L"here").at(0).function, "Test::Function::Inner");
}

class Trouble final : public RefPtrCounted<ns_log::ILogger> {
 public:
  bool IsEnabled(int level) override { return level == ns_log::kError; }
  void Write(const ns_log::ITraceLine&) override {
    ++written;
    throw std::runtime_error("disk full");
  }
  int written = 0;
};

TEST(Trace, ALoggerInTroubleHurtsNobodyAndUnwantedLevelsAreNotWritten) {
  test::TestHost host;
  const RefPtr<Trouble> trouble(new Trouble);
  const RefPtr<test::LogService> service(new test::LogService(trouble));
  GetKexCOM()->RegisterService(ns_log::ILogService::kServiceId, service.get());
  ns_log::TraceTarget::Attach();
  CTraceProxy(ns_log::kRoutine, kSite, L"quiet").Brief("_brief_,a", 1);
  CTraceProxy(ns_log::kError, kSite, L"loud").Brief("_brief_,a", 1);
  EXPECT_EQ(trouble->written, 1);
}

}  // namespace
}  // namespace imsdk
