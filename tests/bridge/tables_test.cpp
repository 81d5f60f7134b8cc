// Every row of every module's tables: sentences, bad requests, answers once and in order.

#include <gtest/gtest.h>

#include <set>

#include "kexbase/json_reader.h"
#include "kexcom/result.h"
#include "source/bridge/bridgemodules.h"
#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

using bridge::JsonKind;
using bridge::MethodRow;
using bridge::TypeInfo;

bridge::ModuleTable Tables() {
  base::MessageLoop loop;
  return bridge::MakeBridgeModules(
      {std::make_shared<bridge::PageChannel>(nullptr, loop.task_runner()), nullptr, nullptr});
}

// A JSON value of the type, or one of a wrong type in every place.
std::wstring Sample(const TypeInfo& type, bool right) {
  switch (type.kind) {
    case JsonKind::kText:
    case JsonKind::kFile:
      return right ? LR"("lighthouse")" : L"7";
    case JsonKind::kDecimal:
      return right ? LR"("7")" : L"7";
    case JsonKind::kInteger:
    case JsonKind::kUnsigned:
    case JsonKind::kWhole:
    case JsonKind::kFlag:
      return right ? L"1" : LR"("1")";
    case JsonKind::kList:
      return L"[" + Sample(*type.item, right) + L"]";
    case JsonKind::kRecord:
      break;
  }
  std::wstring json;
  for (const auto& field : type.fields) {
    json += (json.empty() ? L"{\"" : L",\"") + base::UTF8ToWide(field.key) + L"\":" +
            Sample(*field.type, right);
  }
  return json.empty() ? L"{}" : json + L"}";
}

std::vector<std::string> KeysOf(const TypeInfo& record) {
  std::vector<std::string> keys;
  for (const auto& field : record.fields) keys.emplace_back(field.key);
  return keys;
}

// That the answer is the envelope, alone or with all of the row's keys in their order.
void ExpectAnswerOf(const MethodRow& row, const Delivery& answer) {
  const auto json = base::JSONReader::Read(base::WideToUTF8(answer.payload));
  ASSERT_TRUE(json && json->is_dict()) << answer.payload;
  std::vector<std::string> keys;
  for (const auto& [key, value] : *json->GetIfDict()) keys.push_back(key);
  ASSERT_GE(keys.size(), 3u);
  const std::vector<std::string> envelope(keys.begin(), keys.begin() + 3);
  EXPECT_EQ(envelope, (std::vector<std::string>{"code", "subcode", "result"}));
  keys.erase(keys.begin(), keys.begin() + 3);
  if (row.answer->under_result && !answer.failed) {
    EXPECT_TRUE(keys.empty());
    const base::Value& result = *json->GetIfDict()->Find("result");
    if (row.answer->kind == JsonKind::kList) {
      EXPECT_TRUE(result.is_list());
      return;
    }
    for (const auto& [key, value] : *result.GetIfDict()) keys.push_back(key);
  }
  if (!keys.empty() || !answer.failed) {
    EXPECT_EQ(keys, KeysOf(*row.answer));
  }
}

// That a failed answer has left one line of the method's, with what the page was told.
void ExpectFailureTraced(const TestHost& host, const MethodRow& row, const Delivery& answer) {
  auto lines = host.log->Lines();
  std::erase_if(lines,
                [](const Line& line) { return line.level != 3 || !line.items.contains("code"); });
  ASSERT_EQ(lines.size(), answer.failed ? 1u : 0u);
  if (!answer.failed) return;
  EXPECT_EQ(lines[0].function, row.site.function);
  EXPECT_FALSE(lines[0].text.empty());
  EXPECT_TRUE(lines[0].brief.starts_with("_brief_,code,subcode,result"));
  std::wstring told = LR"({"code":)" + lines[0].items.at("code");
  EXPECT_TRUE(answer.payload.starts_with(told + LR"(,"subcode":)" + lines[0].items.at("subcode")))
      << answer.payload;
}

void ExpectSentence(const char* sentence, std::string_view of) {
  const std::string_view text = sentence;
  EXPECT_GT(text.size(), 6u) << of;
  EXPECT_TRUE(text.ends_with('.')) << of << ": " << text;
}

void ExpectDescribed(const TypeInfo& type) {
  if (type.item) ExpectDescribed(*type.item);
  std::set<std::string_view> keys;
  for (const auto& field : type.fields) {
    ExpectSentence(field.sentence, field.key);
    EXPECT_TRUE(keys.insert(field.key).second || field.of_kind) << field.key;
    ExpectDescribed(*field.type);
    if (!field.values) continue;
    const TypeInfo& of = field.type->item ? *field.type->item : *field.type;
    EXPECT_EQ(of.kind, JsonKind::kInteger) << field.key;
    for (const auto& value : field.values->values) ExpectSentence(value.sentence, value.name);
  }
}

TEST(Tables, EverythingHasItsSentence) {
  std::size_t methods = 0;
  for (const auto& [path, module] : Tables()) {
    std::set<std::string_view> names;
    for (const MethodRow& row : module->Methods()) {
      ++methods;
      EXPECT_TRUE(names.insert(row.name).second) << row.name;
      ExpectSentence(row.sentence, row.name);
      ExpectDescribed(*row.request);
      ExpectDescribed(*row.answer);
    }
    EXPECT_LE(module->listener().rows().size(), 64u);
    for (const auto* notification : module->listener().rows()) {
      ExpectSentence(notification->sentence, base::WideToUTF8(notification->name));
      ExpectDescribed(*notification->payload);
    }
  }
  EXPECT_GE(methods, 50u);
}

// What "{}" is enough for: no conversation or service is missed, or nothing is asked of it.
const std::set<std::string_view> kNeedNothing = {"GetUnreadCountInBulk", "SearchDBMsg2",
                                                 "SearchDBMsgCid",       "GetRoamStatus",
                                                 "SetRoamStatus",        "SetNewMsgMaxCache",
                                                 "GetAllClass",          "GetTranslateSetting",
                                                 "GetCurrentLoginID",    "ConvertMsgText2Emotion",
                                                 "DoNetReConnect",       "DoLogout",
                                                 "GetShallowTribeList",  "GetQuittedTribe",
                                                 "GetShallowTribeEx",    "InitTribe",
                                                 "GetEnableTribeNum",    "GetTribeVerifyMsgs",
                                                 "GetCloudFileList",     "SearchCloudFiles",
                                                 "GetFileExpireTime",    "GetAsteriskUserList",
                                                 "GetContactVerifyMsgs", "GetContactDisplayName",
                                                 "GetContactBaseInfo",   "DeleteContactVerifyMsgs",
                                                 "GetUserDisplayNick"};

TEST(Tables, EveryBadRequestIsAnsweredOnce) {
  for (const auto& [path, module] : Tables()) {
    for (const MethodRow& row : module->Methods()) {
      const bool list = row.request->kind == JsonKind::kList;
      const bool keys = list || !row.request->fields.empty();
      const struct {
        std::wstring json;
        bool readable;
      } requests[] = {
          {L"{}", !list},   {L"[]", true},     {Sample(*row.request, false), true},
          {L"null", !list}, {L"{oops", false}, {L"", false},
      };
      for (const auto& request : requests) {
        MemoryEngine engine;
        TestHost host;
        host.Bind(kHarbor);
        const Delivery answer = host.Call(path, base::UTF8ToWide(row.name), request.json);
        SCOPED_TRACE(std::string(row.name) + base::WideToUTF8(request.json));
        EXPECT_EQ(host.page.answers.size(), 1u);
        ExpectAnswerOf(row, answer);
        ExpectFailureTraced(host, row, answer);
        EXPECT_EQ(
            answer.payload.starts_with(LR"({"code":-2147024809,)") &&
                host.log->Lines(row.texts.unreadable ? row.texts.unreadable : row.texts.invalid)
                        .size() == 1,
            keys && !request.readable);
        const bool enough = kNeedNothing.contains(row.name) && (request.readable || !keys);
        EXPECT_EQ(!answer.failed, enough) << answer.payload;
      }
    }
  }
}

TEST(Tables, EveryGoodRequestIsAnsweredOnce) {
  for (const auto& [path, module] : Tables()) {
    for (const MethodRow& row : module->Methods()) {
      for (const bool logged_in : {true, false}) {
        MemoryEngine engine;
        engine.Account().virtual_chats->Chat(biz::IMUserID{L"lighthouse", L"lighthouse"});
        engine.Account().Chat(biz::IMConversationID(biz::IMTribeID{7}));
        TestHost host;
        host.Bind(logged_in ? kHarbor : biz::IMUserID());
        const Delivery answer =
            host.Call(path, base::UTF8ToWide(row.name), Sample(*row.request, true));
        SCOPED_TRACE(row.name);
        EXPECT_EQ(host.page.answers.size(), 1u);
        ExpectAnswerOf(row, answer);
        ExpectFailureTraced(host, row, answer);
        const bool without_account =
            row.name == "ConvertMsgText2Emotion" || row.name == "GetTranslateSetting";
        if (!logged_in) {
          EXPECT_EQ(answer.failed, !without_account) << answer.payload;
        } else if (path != L"im.login") {
          const bool service = row.name == "EditPic2SendMsg" || row.name == "GetDynamicMsg" ||
                               row.name == "GetTranslateMsg";  // of a client that is not there
          EXPECT_EQ(answer.failed, service) << answer.payload;
        }
      }
    }
  }
}

TEST(Tables, RoutedModulesHaveTheirMethodsInOrder) {
  const auto tables = Tables();
  const auto names = [&](const std::wstring& path) {
    std::vector<std::string_view> all;
    for (const MethodRow& row : tables.at(path)->Methods()) all.push_back(row.name);
    return all;
  };
  const auto single = names(L"im.singlemsg");
  ASSERT_EQ(single.size(), 37u);
  EXPECT_EQ(single.front(), "GetNewMsg");
  EXPECT_EQ(single[10], "DeleteLocalMsg");
  EXPECT_EQ(single[29], "ShieldAutoReply");
  EXPECT_EQ(single.back(), "GetTranslateMsg");
  const auto tribe = names(L"im.tribemgr");
  ASSERT_EQ(tribe.size(), 50u);
  EXPECT_EQ(tribe.front(), "GetShallowTribe");
  EXPECT_EQ(tribe[16], "KickTribeMember");
  EXPECT_EQ(tribe[36], "InitTribe");
  EXPECT_EQ(tribe.back(), "GetEnableTribeNum");
  const auto messages = names(L"im.tribemsg");
  ASSERT_EQ(messages.size(), 37u);
  EXPECT_EQ(messages.front(), "GetNewMsg");
  EXPECT_EQ(messages[6], "DeleteLocalMsg");
  EXPECT_EQ(messages[19], "DoChatMsgWithdraw");
  EXPECT_EQ(messages[29], "GetSendMsgTribeAtInfo");
  EXPECT_EQ(messages.back(), "GetDynamicMsg");
  EXPECT_EQ(names(L"im.virtualmsg").size(), 8u);
  EXPECT_EQ(names(L"im.login").size(), 5u);
}

}  // namespace
}  // namespace imsdk::test
