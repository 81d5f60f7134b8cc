// "im.tribemgr": what each method asks of the engine, and what it answers.

#include "tests/bridge/single_msg_fixture.h"

namespace imsdk::test {
namespace {

TEST_F(SingleMsg, TribeMethodsAnswerWhatTheEngineSays) {
  const struct {
    const wchar_t* method;
    const wchar_t* request;
    const wchar_t* answer;
  } rows[] = {
      {L"GetAllClass", L"not read", LR"("classlist":[{"index":3,"name":"Work"}]})"},
      {L"SetTribeName", LR"({"tribeid":"7","str":"Quay"})", LR"("result":"Quay"})"},
  };
  for (const auto& row : rows) {
    const Delivery answer = host.Call(L"im.tribemgr", row.method, row.request);
    EXPECT_TRUE(answer.payload.ends_with(row.answer)) << answer.payload;
    EXPECT_FALSE(answer.failed);
  }
}

}  // namespace
}  // namespace imsdk::test
