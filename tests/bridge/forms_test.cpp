// Forms of records that modules may use, and a form of conversation: tribes.

#include <gtest/gtest.h>

#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"
#include "kexcom/result.h"
#include "source/bridge/conversationform.h"
#include "source/bridge/conversationrows.h"
#include "source/bridge/description.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"

namespace imsdk {
namespace bridge {
namespace {

// Records that stand in for those of modules to come.

enum Change : std::int32_t { kName = 1, kNotice = 2 };

// A user's or a tribe's.
struct Owner {
  biz::IMConversationID id;
  bool is_user() const { return id.is_user(); }
  bool is_tribe() const { return id.is_tribe(); }
};

struct File {
  Owner owner;
  std::uint32_t size = 0;
  base::FilePath path;
  std::map<Change, std::wstring> changes;
};

struct Texts {
  std::vector<std::wstring> texts;
};
struct Users {
  std::vector<biz::IMUserID> users;
};

}  // namespace

template <>
struct Record<Owner> {
  using Id = biz::IMConversationID;
  static constexpr auto kFields = FieldList(
      OfKind("user", &Owner::is_user,
             Field("appkey", Path(&Owner::id, &Id::user, &biz::IMUserID::appkey), "Application."),
             Field("nick", Path(&Owner::id, &Id::user, &biz::IMUserID::nick), "Name.")),
      OfKind("tribe", &Owner::is_tribe,
             Field("tribeid", Path(&Owner::id, &Id::tribe, &biz::IMTribeID::id), "Tribe."),
             Field("type", Path(&Owner::id, &Id::type), "Kind of conversation.")));
  static void Complete(Owner* owner) {
    if (owner->id.tribe.id != 0) owner->id.type = biz::kCIDTribe;
  }
};

template <>
struct Record<File> {
  static constexpr bool kUnderResult = true;
  static constexpr auto kFields = FieldList(Field("owner", &File::owner, "Whose it is."),
                                            Field("size", &File::size, "Size in bytes."),
                                            Field("path", &File::path, "Where it lies."),
                                            Field("changes", &File::changes, "What was changed."));
};

template <>
struct Record<Texts> {
  static constexpr auto kItems = &Texts::texts;
};
template <>
struct Record<Users> {
  static constexpr auto kItems = &Users::users;
};

namespace {

// What im.tribemsg will say of itself: the identifier, its message list.
struct TribeForm : PlainForm {
  static constexpr biz::IMCIDType kType = biz::kCIDTribe;
  static constexpr auto kIdFields = FieldList(Field(
      "tribeid", Path(&InConversation::cid, &biz::IMConversationID::tribe, &biz::IMTribeID::id),
      "The tribe."));
  static constexpr auto kId = FieldList(
      Field("tribeid", Path(&biz::IMConversationID::tribe, &biz::IMTribeID::id), "The tribe."));
  static RefPtr<biz::IIMChatMgr> ChatMgrOf(biz::IIMAccount& account) {
    return account.GetIMTribeChatMgr();
  }
};

}  // namespace

template <>
struct FormRecord<biz::IMMessage, TribeForm> {
  using R = biz::IMMessage;
  static constexpr auto kFields =
      FieldList(Field("msgid", &R::msgid, kMsgIdSays), Field("msgtime", &R::msgtime, kMsgTimeSays),
                Field("cid", &R::cid, kCidSays), Field("fromid", &R::fromid, kFromIdSays),
                Field("msgtype", &R::msgtype, kMsgTypeSays, &kMsgType),
                Field("msgbody", &R::msgbody, "Text."));
};

namespace {

class TribeModule final : public ConversationModule<TribeForm> {
 public:
  static constexpr Name kName = "CBridgeTribeMsg";
  static constexpr RowTexts kTexts{.invalid = L"invalid"};
  using ConversationModule::ConversationModule;
  std::span<const MethodRow> Methods() const override;

  void GetFile(const Users& request, Call<File> call) {
    if (request.users.empty()) return call.Fail(E_UNEXPECTED, L"no users");
    call.Succeed({{biz::IMConversationID(request.users.front())}, 4'000'000'000u, {}, {}});
  }
  void GetTexts(const Texts& request, Call<> call) {
    call.Fail(static_cast<std::int32_t>(request.texts.size()), L"texts");
  }
};

using Rows = ConversationRows<TribeModule>;
constexpr MethodRow kMethods[] = {
    Rows::kGetNewMsg,
    Rows::kGetUnreadCountInBulk,
    With({.input = L"discard", .invalid = L"invalid!"}, Rows::kDeleteLocalMsg),
    Rows::kSearchDBMsg,
    Rows::kForwardChatMsg,
    Rows::kGetMsgPicture<"GetMsgPictures">,
    Row<TribeModule, "SendNormalTribeMsg", &TribeModule::SendMsg<false>>("Sends a message."),
    Row<TribeModule, "GetFile", &TribeModule::GetFile>("A file."),
    Row<TribeModule, "GetTexts", &TribeModule::GetTexts>("Texts.",
                                                         {.unreadable = L"PARAM ERROR, JSON:"}),
};
std::span<const MethodRow> TribeModule::Methods() const { return kMethods; }

class TribeForms : public ::testing::Test {
 protected:
  TribeForms()
      : host([](ModuleTable& modules, const ModuleContext& context) {
          modules[L"im.tribemsg"] = std::make_shared<TribeModule>(context);
        }),
        tribe(engine.Account().tribe_chats->Chat(biz::IMConversationID(biz::IMTribeID{10001}))) {
    host.Bind(test::kHarbor);
  }
  std::wstring Payload(const std::wstring& method, const std::wstring& json) {
    return host.Call(L"im.tribemsg", method, json).payload;
  }
  static std::wstring Answer(const std::wstring& keys) {
    return LR"({"code":0,"subcode":0,"result":"success",)" + keys + L"}";
  }

  test::MemoryEngine engine;
  test::TestHost host;
  test::MemoryConversation& tribe;
};

TEST_F(TribeForms, ServeTribesByTheSameHandlers) {
  tribe.page.msgs = {test::MakeMessage(5, test::kLighthouse, {}, L"hello")};
  tribe.page.msgs[0].cid = tribe.GetCID();
  tribe.unread = 2;
  EXPECT_EQ(Payload(L"GetNewMsg", LR"({"tribeid":"10001","count":3})"),
            Answer(LR"("outofcache":0,"msgs":[{"msgid":"5","msgtime":"1700000000005",)"
                   LR"("cid":{"tribeid":"10001"},"fromid":{"appkey":"cnbazaro",)"
                   LR"("nick":"lighthouse"},"msgtype":0,"msgbody":"hello"}])"));
  EXPECT_EQ(tribe.last_request.count, 3);
  EXPECT_EQ(host.log->Lines(L"window is NOT visible and BeActived!!").at(0).items.at("userid"),
            L"10001");
  EXPECT_EQ(Payload(L"GetUnreadCountInBulk", LR"({"cids":[{"tribeid":"10001"}]})"),
            Answer(LR"("unreads":[{"cid":{"tribeid":"10001"},"count":2}])"));
  EXPECT_EQ(Payload(L"SearchDBMsg", LR"({"tribeid":"10001","keywords":["a"]})"),
            Answer(LR"("tribeid":"10001","keywords":["a"],"msgtypes":[],"currentpage":0,)"
                   LR"("totalpage":0,"totalcount":0,"msgs":[])"));
  EXPECT_TRUE(
      Payload(L"SendNormalTribeMsg", LR"({"tribeid":"10001","msgbody":[{"type":0,"value":"hi"}]})")
          .starts_with(LR"({"code":0)"));
  EXPECT_EQ(tribe.sent.at(0).value, L"hi");
  Payload(L"ForwardChatMsg", LR"({"cids":[{"tribeid":"10001"}],"msgid":"9"})");
  EXPECT_EQ(tribe.sent_request.forward_msgid, 9);
  Payload(L"GetMsgPicture", LR"({"tribeid":"10001"})");
  EXPECT_EQ(host.log->Lines(L"GetMsgPicture").at(0).function, "CBridgeTribeMsg::GetMsgPictures");
}

TEST_F(TribeForms, HaveTheirOwnTexts) {
  const std::wstring invalid = LR"({"code":-2147024809,"subcode":0,"result":"invalid"})";
  EXPECT_EQ(Payload(L"GetNewMsg", L"{oops"), invalid);
  EXPECT_TRUE(Payload(L"DeleteLocalMsg", LR"({"tribeid":"10001"})").ends_with(LR"("invalid!"})"));
  EXPECT_EQ(host.log->Lines(L"discard").size(), 1u);
  EXPECT_EQ(Payload(L"GetTexts", L"[oops"), invalid);
  EXPECT_EQ(host.log->Lines(L"PARAM ERROR, JSON:").at(0).items.at("jsonStr"), L"[oops");
  // A user's name is no tribe.
  for (const wchar_t* json : {L"{}", LR"({"tribeid":10001})", LR"({"tribeid":"7"})",
                              LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"}})"}) {
    EXPECT_TRUE(Payload(L"GetNewMsg", json).ends_with(LR"("GetConversation failed!!"})")) << json;
  }
}

TEST_F(TribeForms, BareListsAreCheckedAndAnswersMayStandUnderResult) {
  for (const wchar_t* json : {L"{}", L"7", L"\"x\"", L"null", L"[oops"}) {
    EXPECT_EQ(Payload(L"GetFile", json), LR"({"code":-2147024809,"subcode":0,"result":"invalid"})");
    EXPECT_EQ(Payload(L"GetTexts", json).find(L"texts"), std::wstring::npos) << json;
  }
  EXPECT_TRUE(Payload(L"GetTexts", LR"(["a",7,{},"b"])").starts_with(LR"({"code":2,)"));
  EXPECT_EQ(Payload(L"GetFile", L"[]"), LR"({"code":-2147418113,"subcode":0,"result":"no users"})");
  EXPECT_EQ(Payload(L"GetFile", LR"([7,{"appkey":"a","nick":"n"}])"),
            LR"({"code":0,"subcode":0,"result":{"owner":{"appkey":"a","nick":"n"},)"
            LR"("size":4000000000,"path":"","changes":[]}})");
  EXPECT_EQ(kMethods[7].request->item->kind, JsonKind::kRecord);
  EXPECT_TRUE(kMethods[7].answer->under_result);
}

TEST(RecordForms, AreReadAndWrittenBack) {
  for (const std::wstring& json : {
           std::wstring(LR"({"owner":{"tribeid":"10001","type":3},"size":4294967295,"path":"a/b",)"
                        LR"("changes":[{"key":1,"value":"x"},{"key":2,"value":""}]})"),
           std::wstring(LR"({"owner":{"appkey":"a","nick":"n"},"size":0,"path":"","changes":[]})"),
       }) {
    File file;
    ReadValue<PlainForm>(*base::JSONReader::Read(base::WideToUTF8(json)), &file);
    EXPECT_EQ(RecordText<PlainForm>(file), json);
  }
  File file;
  ReadValue<PlainForm>(
      *base::JSONReader::Read(R"({"size":-1,"path":7,"changes":[{"value":"x","key":2},7,"y"]})"),
      &file);
  EXPECT_EQ(file.size, 0u);
  EXPECT_TRUE(file.path.empty());
  EXPECT_EQ(file.changes, (std::map<Change, std::wstring>{{kNotice, L"x"}}));
}

TEST(RecordForms, CanBeWalkedAlong) {
  const auto& fields = TypeInfoOf<PlainForm, File>::kInfo.fields;
  ASSERT_EQ(fields.size(), 4u);
  const auto& owner = fields[0].type->fields;
  ASSERT_EQ(owner.size(), 4u);
  EXPECT_STREQ(owner[1].of_kind, "user");
  EXPECT_STREQ(owner[2].of_kind, "tribe");
  EXPECT_EQ(owner[2].type->kind, JsonKind::kDecimal);
  EXPECT_EQ(fields[1].type->kind, JsonKind::kUnsigned);
  EXPECT_EQ(fields[2].type->kind, JsonKind::kFile);
  ASSERT_EQ(fields[3].type->kind, JsonKind::kList);
  const auto& change = fields[3].type->item->fields;
  ASSERT_EQ(change.size(), 2u);
  EXPECT_EQ(change[0].key, "key");
  EXPECT_EQ(change[0].type->kind, JsonKind::kInteger);
  EXPECT_EQ(change[1].type->kind, JsonKind::kText);
}

// What stands at the place in the document, "/" between its keys, as JSON.
std::string JsonAt(const base::Value& document, const std::string& place) {
  const base::Value* at = &document;
  for (std::size_t start = 0; at && start < place.size();) {
    const std::size_t end = std::min(place.find('/', start), place.size());
    at = at->is_dict() ? at->GetIfDict()->Find(place.substr(start, end - start)) : nullptr;
    start = end + 1;
  }
  std::string json;
  if (at) base::JSONWriter::Write(*at, &json);
  return json;
}

TEST(Description, NamesShapesOfOneRecordApart) {
  base::MessageLoop loop;
  const ModuleContext context{std::make_shared<PageChannel>(nullptr, loop.task_runner()), {}, {}};
  ModuleTable modules = MakeBridgeModules(context);
  modules[L"im.tribemsg"] = std::make_shared<TribeModule>(context);
  const auto document =
      base::JSONReader::Read(base::WideToUTF8(ProtocolDescription(modules, L"1")));
  ASSERT_TRUE(document);
  const auto schema = [&](const std::string& place) {
    return JsonAt(*document, "components/schemas/" + place);
  };
  const std::string to = R"({"$ref":"#/components/schemas/)";
  EXPECT_TRUE(schema("IMMessage/properties/cid").starts_with(to + "IMConversationID\""));
  EXPECT_TRUE(
      schema("TribemsgIMMessage/properties/cid").starts_with(to + "TribemsgIMConversationID\""));
  EXPECT_EQ(schema("TribemsgIMMessagePage/properties/msgs/items"), to + R"(TribemsgIMMessage"})");
  EXPECT_NE(schema("IMUserID/required"), "");
  EXPECT_NE(schema("TribemsgIMPageRequest/properties/tribeid"), "");
  EXPECT_EQ(schema("TribemsgIMPageRequest/required"), "");
  EXPECT_NE(schema("EmotionText/required"), "");  // an answer, and a request of its own
  EXPECT_EQ(schema("EmotionTextRequest/required"), "");

  std::string methods = JsonAt(*document, "methods");
  const auto method = methods.find(R"({"name":"im.tribemsg.GetFile")");
  ASSERT_NE(method, std::string::npos);
  methods = methods.substr(method, methods.find(R"("message":"invalid"})", method) - method);
  EXPECT_NE(methods.find(R"({"type":"array","items":)" + to + R"(IMUserID"}})"), std::string::npos)
      << methods;
  EXPECT_NE(methods.find(R"("result":)" + to + R"(File"})"), std::string::npos) << methods;
}

// Another payload under a notification does not compile.
constexpr Notification<Texts> kOnTexts{L"onTexts", "Texts came."};
template <class Payload>
concept CanBeSent = requires(Listener& listener, const Payload& payload) {
  listener.Notify(kOnTexts, payload);
};
static_assert(CanBeSent<Texts> && !CanBeSent<Users> && !CanBeSent<std::vector<std::wstring>>);

}  // namespace
}  // namespace bridge
}  // namespace imsdk
