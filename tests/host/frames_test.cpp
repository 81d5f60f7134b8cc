#include "page/frames.h"

#include <gtest/gtest.h>

#include "kexbase/json_reader.h"
#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

TEST(FramesTest, RefusesWhatIsNotAnInvocationAndSaysWhy) {
  struct Case {
    std::string frame;
    std::string reason;  // what the reason begins with
  };
  const Case cases[] = {
      {"", "not JSON: "},
      {"{", "not JSON: "},
      {R"({"kind":"invoke","method":"m","args":[]} x)", "not JSON: "},
      {R"(["invoke"])", "not an object"},
      {R"({"method":"m","args":[]})", "kind is not \"invoke\""},
      {R"({"kind":"answer","method":"m","args":[]})", "kind is not \"invoke\""},
      {R"({"kind":1,"method":"m","args":[]})", "kind is not \"invoke\""},
      {R"({"kind":"invoke","args":[]})", "method is not a text"},
      {R"({"kind":"invoke","method":7,"args":[]})", "method is not a text"},
      {R"({"kind":"invoke","method":"m","browserId":null,"args":[]})", "browserId is not a text"},
      {R"({"kind":"invoke","method":"m"})", "args is not a list"},
      {R"({"kind":"invoke","method":"m","args":{"0":"seq"}})", "args is not a list"},
      {R"({"kind":"invoke","method":"m","args":)" + std::string(100000, '['), "not JSON: "},
  };
  for (const Case& c : cases) {
    std::string reason;
    EXPECT_FALSE(ReadInvoke(c.frame, L"own", &reason)) << c.frame.substr(0, 80);
    EXPECT_TRUE(reason.starts_with(c.reason)) << c.frame.substr(0, 80) << " -> " << reason;
  }
}

TEST(FramesTest, KeepsTheKindOfEveryArgument) {
  std::string reason;
  const auto call = ReadInvoke(
      R"({"kind":"invoke","browserId":"other","method":"workbench.im.x.invoke","more":1,"args":)"
      R"(["seq\u00e9\ud83d\ude00",true,9007199254740993,1.5,null,{"b":[1,"\n"],"a":null},)"
      R"(18446744073709551615]})",
      L"own", &reason);
  ASSERT_TRUE(call) << reason;
  EXPECT_EQ(call->browserId, L"other");
  EXPECT_EQ(call->method, L"workbench.im.x.invoke");
  const std::vector<bridge::ScriptArg> expected = {base::UTF8ToWide("seq\xC3\xA9\xF0\x9F\x98\x80"),
                                                   true,
                                                   std::int64_t{9007199254740993},
                                                   1.5,
                                                   std::monostate{},
                                                   std::wstring(LR"({"b":[1,"\n"],"a":null})"),
                                                   18446744073709551615.0};
  EXPECT_EQ(call->args, expected);

  const auto own = ReadInvoke(R"({"kind":"invoke","method":"","args":[]})", L"own", &reason);
  ASSERT_TRUE(own);
  EXPECT_EQ(own->browserId, L"own");
}

TEST(FramesTest, WritesTextsThatReadBackUnchanged) {
  // Everything below the blank, quotes, backslashes, right-to-left text, a pair outside the BMP.
  std::wstring text;
  for (wchar_t c = 0; c < 0x30; ++c) text += c;
  text += base::UTF8ToWide("\\\"</script>\xD7\xA9\xF0\x9F\x98\x80");
  const auto read = base::JSONReader::Read(AnswerFrame(L"id", text, true, text + L"!"));
  ASSERT_TRUE(read);
  const base::DictionaryValue& frame = *read->GetIfDict();
  EXPECT_EQ(*frame.Find("seq")->GetIfString(), base::WideToUTF8(text));
  EXPECT_EQ(*frame.Find("payload")->GetIfString(), base::WideToUTF8(text + L"!"));
  EXPECT_EQ(frame.Find("failed")->GetIfBool(), true);

  EXPECT_EQ(HelloFrame(L"A-1"), R"({"kind":"hello","browserId":"A-1"})");
  EXPECT_EQ(AnswerFrame(L"A-1", L"s", false, L""),
            R"({"kind":"answer","browserId":"A-1","seq":"s","failed":false,"payload":""})");
  EXPECT_EQ(NotifyFrame(L"onX", L"{\"a\":1}", L""),
            R"({"kind":"notify","event":"onX","payload":"{\"a\":1}"})");
  EXPECT_EQ(RefusedFrame("no \"x\""), R"({"kind":"refused","reason":"no \"x\""})");
  // A lone surrogate is not text; what surrounds it is kept.
  EXPECT_EQ(NotifyFrame(L"e", std::wstring{L'a', wchar_t(0xD83D), L'b'}, L"im.x"),
            "{\"kind\":\"notify\",\"event\":\"e\",\"payload\":\"a\xEF\xBF\xBD"
            "b\",\"path\":\"im.x\"}");
}

}  // namespace
}  // namespace imsdk::host
