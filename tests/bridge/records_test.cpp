// Records and JSON text: field rules, escaping, broken Unicode.

#include <gtest/gtest.h>

#include <ctime>

#include "kexbase/json_reader.h"
#include "kexbase/message_loop.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/conversationform.h"
#include "source/bridge/jsparams/secretfree.h"

namespace imsdk::bridge {
namespace {

template <class R>
R Read(std::string_view json) {
  R record;
  ReadValue<SingleForm>(*base::JSONReader::Read(json), &record);
  return record;
}

using HisRequest = In<biz::IMPageRequest>;

TEST(Reader, SkipsWrongTypesFieldByField) {
  const auto request = Read<HisRequest>(
      R"({"cid":{"appkey":1,"nick":"n"},"count":"5","msgid":5,"msgtime":"7","gohistory":1.0,)"
      R"("ignoreboundary":4294967296,"autoroam":-3,"unknown":[]})");
  EXPECT_EQ(request.cid.user, (biz::IMUserID{L"", L"n"}));
  EXPECT_EQ(request.count, 0);
  EXPECT_EQ(request.msgid, 0);
  EXPECT_EQ(request.msgtime, 7);
  EXPECT_FALSE(request.gohistory);
  EXPECT_FALSE(request.ignoreboundary);
  EXPECT_TRUE(request.autoroam);
  for (const char* json : {"[]", "\"x\"", "null", R"({"cid":[]})"}) {
    EXPECT_TRUE(Read<HisRequest>(json).cid.user.empty()) << json;
  }
}

TEST(Reader, KeepsOnlyElementsOfTheRightType) {
  const auto request =
      Read<biz::IMConversations>(R"({"cids":[{"nick":"a"},null,7,{},"x",{"nick":"b"}]})");
  ASSERT_EQ(request.cids.size(), 3u);
  EXPECT_EQ(request.cids[0].user.nick, L"a");
  EXPECT_EQ(request.cids[2].user.nick, L"b");
  EXPECT_TRUE(Read<biz::IMConversations>(R"({"cids":{"0":{}}})").cids.empty());
  const auto search = Read<biz::IMSearchRequest>(
      R"({"keywords":["a",7,"b"],"msgtypes":[1,"2",3.5,5000000000,4],"btime":5,"needpage":1,"page":2})");
  EXPECT_EQ(search.keywords, (std::vector<std::wstring>{L"a", L"b"}));
  EXPECT_EQ(search.msgtypes, (std::vector<std::int32_t>{1, 4}));
  EXPECT_EQ(search.btime, 0);
  EXPECT_EQ(search.page, 2);
  EXPECT_EQ(Read<biz::IMMsgsRequest>(R"({"msgids":["9007199254740993",7,"x"]})").msgids,
            (std::vector<std::int64_t>{9'007'199'254'740'993, 0, 0}));
}

TEST(Reader, TimesAndIdentifiersThatAreNoNumbersAreZero) {
  for (const char* text : {"", "x", "9223372036854775808", " 1", "1 ", "1.0"}) {
    const auto request = Read<HisRequest>(std::string(R"({"msgid":")") + text + "\"}");
    EXPECT_EQ(request.msgid, 0) << text;
  }
  EXPECT_EQ(Read<HisRequest>(R"({"msgid":"-9223372036854775808"})").msgid,
            std::numeric_limits<std::int64_t>::min());
}

TEST(JsonText, EscapesSoThatAReaderGetsTheTextBack) {
  const std::wstring faces =
      base::UTF8ToWide("\xF0\x9F\x98\x80\xE4\xBD\xA0\xE2\x80\xA8\xEE\x80\x80");
  std::wstring controls;
  for (wchar_t c = 0; c < 0x21; ++c) controls += c;
  for (const std::wstring& text : {faces, controls, std::wstring(L"\"\\/<>\x7F"), std::wstring()}) {
    JsonText json;
    json.String(text);
    const auto value = base::JSONReader::Read(base::WideToUTF8(json.Take()));
    ASSERT_TRUE(value && value->GetIfString());
    EXPECT_EQ(base::UTF8ToWide(*value->GetIfString()), text);
  }
}

TEST(JsonText, BrokenUnicodeBecomesReplacementCharacters) {
  const wchar_t high = 0xD83D;
  const wchar_t low = static_cast<wchar_t>(0xDE00);
  for (const std::wstring& text :
       {std::wstring{high}, std::wstring{low}, std::wstring{low, high}, std::wstring{high, L'x'}}) {
    JsonText json;
    json.String(text);
    std::wstring expected = text;
    for (wchar_t& c : expected) {
      if (c != L'x') c = L'\xFFFD';
    }
    EXPECT_EQ(json.Take(), L'"' + expected + L'"');
  }
}

// Around the sizes at which a long text moves out of the buffer that is kept.
TEST(JsonText, LongListsAndTextsStayWhole) {
  for (const std::size_t length : {100, 262'143, 262'144, 600'000}) {
    std::vector<std::wstring> texts(1000, std::wstring(length / 1000, L'a'));
    texts.push_back(std::wstring(length, L'b'));
    JsonText json;
    WriteItems<PlainForm>(json, texts);
    const auto value = base::JSONReader::Read(base::WideToUTF8(json.Take()));
    ASSERT_TRUE(value && value->GetIfList());
    std::vector<std::wstring> read;
    ReadItems<PlainForm>(*value->GetIfList(), &read);
    EXPECT_EQ(read, texts);
  }
}

TEST(SecretFree, MasksWhatWasReadAndNothingElse) {
  const std::wstring gone = L" characters that are no JSON object";
  const struct {
    std::wstring json;
    std::wstring shown;  // empty: as it is
    Secrets secrets = {};
  } cases[] = {
      {LR"({"userid":{"nick":"a"},"password" : "p\"q\\","token":"t"})",
       LR"({"userid":{"nick":"a"},"password":"***","token":"***"})"},
      {LR"({"pass\u0077ord":"p","\u0074oken":"t"})", LR"({"password":"***","token":"***"})"},
      {LR"({"password":7,"x":[{"token":["a",{"b":1}]}]})",
       LR"({"password":"***","x":[{"token":"***"}]})"},
      {LR"({"token":"a","token":"b"})", LR"({"token":"***"})"},
      {LR"({"x":"{\"token\":\"t\"}","y":" [\"{\\\"p\\u0061ssword\\\":1}\"]"})",
       LR"({"x":"{\"token\":\"***\"}","y":"[\"{\\\"password\\\":\\\"***\\\"}\"]"})"},
      {LR"("\"{\\\"token\\\":1}\"")", LR"("\"{\\\"token\\\":\\\"***\\\"}\"")"},
      {LR"({ "x" : "password", "y":"{token", "pass":"t" })", L""},
      {LR"({"PassWord":"p","auth_TOKEN":1,"oldPasswd":[2],"x":{"joinPwd":"q","clientSecret":""}})",
       LR"({"PassWord":"***","auth_TOKEN":"***","oldPasswd":"***","x":{"joinPwd":"***",)"
       LR"("clientSecret":"***"}})"},
      {LR"("token")", L""},
      {L"", L""},
      {LR"({"s\u0074r":["p"],"x":"{\"str\":1}","tribeid":"1"})",
       LR"({"str":"***","x":"{\"str\":\"***\"}","tribeid":"1"})",
       {true, {"str"}}},
      {L"{oops", L""},
      {L"{oops", L"5" + gone, {true, {}}},
      {LR"({"password":"unclosed)", L"21" + gone},
      {LR"(["p"])", L"5" + gone, {true, {"str"}}},
      {LR"("p")", L"3" + gone, {true, {"str"}}},
      {LR"(["p"])", L""},
      {LR"({"p\u0061ssword":"unclosed)", L"26" + gone},
  };
  for (const auto& c : cases) {
    std::wstring made;
    EXPECT_EQ(SecretFree(c.json, c.secrets)(&made), c.shown.empty() ? c.json : c.shown);
  }
}

// Sixteen times the text: about sixteen times the work, and not its square.
TEST(SecretFree, LooksAtALongTextOnce) {
  std::clock_t took[2];
  for (const int large : {0, 1}) {
    std::wstring json = L"{";
    while (json.size() < (large ? 1 << 20 : 1 << 16)) json += LR"("token":"a",)";
    json += LR"("x":1})";
    std::wstring made;
    const std::clock_t start = std::clock();
    EXPECT_EQ(SecretFree(json, {true, {}})(&made), LR"({"token":"***","x":1})");
    took[large] = std::clock() - start;
  }
  EXPECT_LT(took[1], 80 * (took[0] + CLOCKS_PER_SEC / 1000));
}

TEST(SecretFree, ModulesThatTakeSecretsSaySo) {
  base::MessageLoop loop;
  for (const auto& [path, module] :
       MakeBridgeModules({std::make_shared<PageChannel>(nullptr, loop.task_runner()), {}, {}})) {
    for (const MethodRow& row : module->Methods()) {
      for (const auto& field : row.request->fields) {
        EXPECT_TRUE(row.takes_secrets || !IsSecretKey(field.key)) << row.name;
      }
    }
  }
}

TEST(Answer, BeginsWithTheEnvelope) {
  EXPECT_EQ(AnswerText({}), LR"({"code":0,"subcode":0,"result":"success"})");
  EXPECT_EQ(AnswerText<SingleForm>({-3, 9, {}}, biz::IMCount{4}),
            LR"({"code":-3,"subcode":9,"result":"failed","count":4})");
  EXPECT_EQ(AnswerText({-3, 0, L"why"}), LR"({"code":-3,"subcode":0,"result":"why"})");
}

}  // namespace
}  // namespace imsdk::bridge
