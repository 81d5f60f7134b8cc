// Forms of records that modules may use.

#include <gtest/gtest.h>

#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"
#include "kexcom/result.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/description.h"
#include "source/bridge/methodtable.h"
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

class FormModule final : public CBridgeBase {
 public:
  using Form = PlainForm;
  static constexpr Name kName = "CFormModule";
  static constexpr RowTexts kTexts{.invalid = L"invalid"};
  using CBridgeBase::CBridgeBase;
  std::span<const MethodRow> Methods() const override;

  void GetFile(const Users& request, Call<File> call) {
    if (request.users.empty()) return call.Fail(E_UNEXPECTED, L"no users");
    call.Succeed({{biz::IMConversationID(request.users.front())}, 4'000'000'000u, {}, {}});
  }
  void GetTexts(const Texts& request, Call<> call) {
    call.Fail(static_cast<std::int32_t>(request.texts.size()), L"texts");
  }
};

constexpr MethodRow kMethods[] = {
    Row<FormModule, "GetFile", &FormModule::GetFile>("A file."),
    Row<FormModule, "GetTexts", &FormModule::GetTexts>("Texts.",
                                                       {.unreadable = L"PARAM ERROR, JSON:"}),
};
std::span<const MethodRow> FormModule::Methods() const { return kMethods; }

class Forms : public ::testing::Test {
 protected:
  Forms()
      : host([](ModuleTable& modules, const ModuleContext& context) {
          modules[L"im.bizutil"] = std::make_shared<FormModule>(context);
        }) {
    host.Bind(test::kHarbor);
  }
  std::wstring Payload(const std::wstring& method, const std::wstring& json) {
    return host.Call(L"im.bizutil", method, json).payload;
  }

  test::MemoryEngine engine;
  test::TestHost host;
};

TEST_F(Forms, BareListsAreCheckedAndAnswersMayStandUnderResult) {
  for (const wchar_t* json : {L"{}", L"7", L"\"x\"", L"null", L"[oops"}) {
    EXPECT_EQ(Payload(L"GetFile", json), LR"({"code":-2147024809,"subcode":0,"result":"invalid"})");
    EXPECT_EQ(Payload(L"GetTexts", json).find(L"texts"), std::wstring::npos) << json;
  }
  EXPECT_TRUE(Payload(L"GetTexts", LR"(["a",7,{},"b"])").starts_with(LR"({"code":2,)"));
  EXPECT_EQ(Payload(L"GetFile", L"[]"), LR"({"code":-2147418113,"subcode":0,"result":"no users"})");
  EXPECT_EQ(Payload(L"GetFile", LR"([7,{"appkey":"a","nick":"n"}])"),
            LR"({"code":0,"subcode":0,"result":{"owner":{"appkey":"a","nick":"n"},)"
            LR"("size":4000000000,"path":"","changes":[]}})");
  EXPECT_EQ(host.log->Lines(L"PARAM ERROR, JSON:").back().items.at("jsonStr"), L"[oops");
  EXPECT_EQ(kMethods[0].request->item->kind, JsonKind::kRecord);
  EXPECT_TRUE(kMethods[0].answer->under_result);
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
  modules[L"im.bizutil"] = std::make_shared<FormModule>(context);
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
  const auto method = methods.find(R"({"name":"im.bizutil.GetFile")");
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
