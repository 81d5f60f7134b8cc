// What pages do with conversations, whatever they are held with: one table, single chats and
// tribes.

#include <optional>

#include "imsdk/client/picture_editor.h"
#include "tests/bridge/chat_fixture.h"

namespace imsdk::test {
namespace {

// How a module's conversations are named. In the texts of the tests "%in" stands for the keys by
// which a request names the conversation, "%search" for those of a search, "%cid" for its
// identifier and "%other" for that of a second conversation.
struct Kind {
  const char* name;
  std::wstring path;
  std::wstring in;
  std::wstring cid;
  std::wstring other;
  std::wstring send;     // the method that sends
  std::string module;    // as traces name it
  std::wstring invalid;  // answers what cannot be used
  biz::IMConversationID id;
  biz::IMConversationID other_id;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class Conversations : public ChatPage, public ::testing::WithParamInterface<Kind> {
 protected:
  Conversations()
      : ChatPage(GetParam().path, GetParam().id),
        kind(GetParam()),
        other(engine.Account().Chat(kind.other_id)) {}

  std::wstring Filled(std::wstring text) const {
    const std::pair<std::wstring, const std::wstring&> places[] = {
        {L"%search", kind.id.is_tribe() ? tribe_search_ : kind.in},
        {L"%in", kind.in},
        {L"%cid", kind.cid},
        {L"%other", kind.other}};
    for (const auto& [place, value] : places) {
      for (auto at = text.find(place); at != text.npos; at = text.find(place)) {
        text.replace(at, place.size(), value);
      }
    }
    return text;
  }
  Delivery Call(const std::wstring& method, const std::wstring& json = L"{%in}") {
    return host.Call(kind.path, method, Filled(json));
  }
  std::wstring Says(const std::wstring& method, const std::wstring& json = L"{%in}") {
    return Call(method, json).payload;
  }

  const Kind kind;
  MemoryConversation& other;

 private:
  const std::wstring tribe_search_ = L"\"cid\":" + kind.cid;
};

// A window of one conversation.
class Windows final : public RefPtrCounted<client::IChatWindowService> {
 public:
  Windows(biz::IMConversationID cid, bool visible, bool activated)
      : cid_(std::move(cid)), visible_(visible), activated_(activated) {}
  void SetViewAccount(const std::wstring&, const biz::IMUserID&) override {}
  bool IsVisible(const biz::IMUserID& account, const biz::IMConversationID& cid) override {
    return visible_ && account == kHarbor && cid == cid_;
  }
  bool IsActivated(const biz::IMUserID&, const biz::IMConversationID&) override {
    return activated_;
  }

 private:
  const biz::IMConversationID cid_;
  const bool visible_;
  const bool activated_;
};

TEST_P(Conversations, GetNewMsgMarksReadOnlyWhatIsSeen) {
  const struct {
    bool service, visible, activated;
    int unread;
    const wchar_t* trace;
  } cases[] = {{false, false, false, 3, L"window is NOT visible and BeActived!!"},
               {true, false, false, 3, L"window is NOT visible and BeActived!!"},
               {true, true, false, 0, L"window is visible or BeActived!!"},
               {true, false, true, 0, L"window is visible or BeActived!!"}};
  for (const auto& c : cases) {
    std::optional<Registered<client::IChatWindowService>> windows;
    if (c.service) windows.emplace(RefPtr(new Windows(kind.id, c.visible, c.activated)));
    host.log->Clear();
    chat.unread = 3;
    EXPECT_FALSE(Call(L"PeekNewMsg").failed);
    EXPECT_EQ(chat.unread, 3);
    EXPECT_FALSE(Call(L"GetNewMsg").failed);
    EXPECT_EQ(chat.unread, c.unread);
    const auto lines = host.log->Lines(c.trace);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].brief, "_brief_,this,userid");
    EXPECT_EQ(lines[0].function, kind.module + "::GetNewMsg");
    const std::size_t marked = c.unread == 0 ? 1 : 0;
    EXPECT_EQ(host.log->Lines(L"SetNewMsgReaded req").size(), marked);
    EXPECT_EQ(host.log->Lines(L"SetNewMsgReaded rsp").size(), marked);
  }
}

TEST_P(Conversations, GetOfflineMsgMarksReadOnlyWhatThePageGot) {
  const Registered<client::IChatWindowService> windows(RefPtr(new Windows(kind.id, true, true)));
  const struct {
    bool good;
    int unread;
    bool marked;
  } cases[] = {{true, 1, true}, {true, 2, false}, {false, 1, false}};
  for (const auto& c : cases) {
    chat.page.msgs = {MakeMessage(5, kLighthouse, kHarbor, L"a")};
    chat.page.outofcache = !c.marked;
    chat.result = {c.good ? 0 : biz::kEngineStorage, 0, {}};
    chat.unread = c.unread;
    host.log->Clear();
    const auto answer = Says(L"GetOfflineMsg");
    if (c.good) {
      EXPECT_NE(answer.find(c.marked ? LR"("outofcache":0)" : LR"("outofcache":1)"), answer.npos);
    }
    EXPECT_EQ(chat.unread, c.marked ? 0 : c.unread);
    // What follows a good fetch follows no other.
    EXPECT_EQ(host.log->Lines(L"window is visible or BeActived!!").size(), c.good ? 1u : 0u);
    if (c.marked) {
      const Line marked = host.log->Lines(L"SetNewMsgReaded rsp").at(0);
      EXPECT_EQ(marked.function, kind.module + "::GetOfflineMsg::SetNewMsgReaded");
      EXPECT_EQ(marked.source, "source\\bridge\\bridgeconversation");
    }
  }
  chat.result = {biz::kEngineStorage, 0, {}};
  chat.unread = 1;
  EXPECT_TRUE(Call(L"GetNewMsg").failed);
  EXPECT_EQ(chat.unread, 1);
}

TEST_P(Conversations, PageRequestsReachTheEngine) {
  Call(L"GetLocalHisMsg",
       LR"({%in,"msgtime":"1700000000001","msgid":"9007199254740993",)"
       LR"("count":20,"gohistory":1,"autoroam":"1"})");
  EXPECT_EQ(chat.last_request.msgtime, 1'700'000'000'001);
  EXPECT_EQ(chat.last_request.msgid, 9'007'199'254'740'993);
  EXPECT_EQ(chat.last_request.count, 20);
  EXPECT_TRUE(chat.last_request.gohistory);
  EXPECT_FALSE(chat.last_request.autoroam);  // a string is no flag
}

TEST_P(Conversations, UnreadCountsAndReading) {
  chat.unread = 2;
  EXPECT_EQ(Says(L"GetUnreadCount"), Answer(LR"("count":2)"));
  EXPECT_EQ(Says(L"GetUnreadCountInBulk", LR"({"cids":[%other,5,%cid]})"),
            Filled(Answer(LR"("unreads":[{"cid":%other,"count":0},{"cid":%cid,"count":2}])")));
  EXPECT_NE(Says(L"GetUnreadCountInBulk", L"{}").find(Filled(LR"({"cid":%cid,"count":2})")),
            std::wstring::npos);
  EXPECT_EQ(Says(L"SetMsgRead"), kSuccess);
  EXPECT_EQ(chat.unread, 0);
  EXPECT_EQ(host.log->Lines(L"SetNewMsgReaded req").size(), 1u);
  EXPECT_EQ(host.log->Lines(L"SetNewMsgReaded rsp").at(0).brief, "_brief_,result,timeOperate");
}

TEST_P(Conversations, AnswersHaveTheirKeysInOrder) {
  chat.position = {5, 6};
  chat.pictures = {{{L"7_0", L"files/a.png", 7, 0, 70, kLighthouse, {}, L"x"}}};
  const struct {
    const wchar_t* method;
    const wchar_t* request;
    const wchar_t* keys;
  } cases[] = {
      {L"GetReadedBoundary", L"{%in}", LR"("msgtime":"5","msgid":"6")"},
      {L"DeleteLocalMsg", LR"({%in,"msgids":["1","2"]})", LR"("count":2)"},
      {L"DeleteLocalMsg", LR"({%in,"all":1})", LR"("count":100)"},
      {L"SearchDBMsgCid", LR"({"msgtypes":[1,2]})", LR"("msgtypes":[1,2],"cids":[%cid,%other])"},
      {L"GetMsgPicture", LR"({%in,"pictureid":"8_1","btime":"3","count":4})",
       LR"("pictures":[{"pictureid":"7_0","url":"files/a.png","msgid":"7","index":0,)"
       LR"("mgstime":"70","fromid":{"appkey":"cnbazaro","nick":"lighthouse"},)"
       LR"("toid":{"appkey":"","nick":""},"extInfo":"x"}])"},
      {L"RoamMsg", LR"({%in,"btime":"3","etime":"9","count":4})",
       LR"("roamedcount":9,"affectcount":7)"},
      {L"GetRoamStatus", L"{}", LR"("opentime":"0","roamstatus":0)"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Says(c.method, c.request), Filled(Answer(c.keys))) << c.method;
  }
  EXPECT_EQ(chat.last_pictures.pictureid, L"8_1");
  EXPECT_EQ(chat.last_pictures.btime, 3);
  EXPECT_EQ(chat.last_roam.etime, 9);
  EXPECT_TRUE(Says(L"DeleteLocalMsg").ends_with(L"\"" + kind.invalid + L"\"}"));
}

TEST_P(Conversations, AreSearchedAloneAndTogether) {
  chat.found.totalcount = 21;
  chat.found.totalpage = 3;
  chat.found.currentpage = 2;
  const wchar_t* numbers = LR"("currentpage":2,"totalpage":3,"totalcount":21,"msgs":[])";
  for (const wchar_t* method : {L"SearchDBMsg", L"SearchDBMsg2"}) {
    const auto answer =
        Says(method, LR"({%search,"keywords":["a b"],"msgtypes":[0],"needpage":1,"page":2})");
    EXPECT_TRUE(answer.starts_with(Filled(Answer(LR"("cid":%cid,)")).substr(0, 60))) << answer;
    EXPECT_NE(answer.find(LR"("keywords":["a b"],"msgtypes":[0],)"), answer.npos);
    EXPECT_NE(answer.find(numbers), answer.npos) << answer;
    EXPECT_EQ(chat.last_search.keywords, std::vector<std::wstring>{L"a b"});
    EXPECT_TRUE(chat.last_search.needpage);
    chat.last_search = {};
  }
  EXPECT_NE(Says(L"SearchDBMsg2", L"{}").find(LR"("totalcount":0)"), std::wstring::npos);
}

TEST_P(Conversations, RequestsWithoutKeysInTheAnswerReachTheEngine) {
  EXPECT_EQ(Says(L"DoChatMsgWithdraw", LR"({%in,"msgid":"11"})"), kSuccess);
  EXPECT_EQ(chat.msgids, std::vector<std::int64_t>{11});
  EXPECT_EQ(Says(L"SetRoamStatus", LR"({"roamstatus":1})"), kSuccess);
  EXPECT_EQ(Says(L"GetRoamStatus", L"{}"), Answer(LR"("opentime":"77","roamstatus":1)"));
  EXPECT_EQ(Says(L"SetNewMsgMaxCache", LR"({"maxmsgcount":-5})"),
            kSuccess);  // the engine's to judge
  EXPECT_TRUE(Call(L"SetNewMsgMaxCache", L"{oops").failed);
  MemoryAccount& account = engine.Account();
  EXPECT_EQ(kind.id.is_tribe() ? account.tribe_chats->max_cache : account.chats->max_cache, -5);
}

TEST_P(Conversations, SendBodyItemsInOrderAndReportTheStatus) {
  const std::wstring request =
      LR"({%in,"autosend":1,"msgbody":[{"type":0,"value":"hi","jvale":"{\"k\":1}"},)"
      LR"({"type":1,"filepath":"a.png","filecontent":"AAEC"},{"type":1,"filecontent":"A"}]})";
  EXPECT_EQ(Says(kind.send, request), kSuccess);
  ASSERT_EQ(chat.sent.size(), 3u);
  EXPECT_EQ(chat.sent[0].value, L"hi");
  EXPECT_EQ(chat.sent[0].jvale, L"{\"k\":1}");
  EXPECT_EQ(chat.sent[1].filepath.value(), L"a.png");
  EXPECT_EQ(chat.sent[1].filecontent, std::string("\0\1\2", 3));
  EXPECT_EQ(chat.sent[2].filecontent, "");
  EXPECT_TRUE(chat.sent_request.autosend);
  // Tribes trace every file, single chats those that cannot be read.
  std::wstring traced;
  for (const Line& line : host.log->Lines(L"json"))
    traced += line.items.at("it->filecontent") + L";";
  EXPECT_EQ(traced, kind.id.is_tribe() ? L"AAEC;A;" : L"A;");

  chat.send_status = 3;
  const auto taken = Call(kind.send, request);
  EXPECT_EQ(taken.payload, LR"({"code":3,"subcode":0,"result":"success"})");
  EXPECT_FALSE(taken.failed);
  chat.send_status = -7;
  const auto refused = Call(kind.send);
  EXPECT_EQ(refused.payload, LR"({"code":-7,"subcode":0,"result":"failed"})");
  EXPECT_TRUE(refused.failed);
  EXPECT_TRUE(chat.sent.empty());  // an empty body is the engine's to judge
}

TEST_P(Conversations, ResendAndForward) {
  for (const bool at_once : {false, true}) {
    Call(at_once ? L"FastReSendChatMsg" : L"ReSendChatMsg", LR"({%in,"msgid":"11"})");
    EXPECT_EQ(chat.msgids, std::vector<std::int64_t>{11});
    EXPECT_EQ(chat.at_once, at_once);
    chat.msgids.clear();
  }
  const wchar_t* request = LR"({"cids":[%other,%cid],"msgid":"9","msgtype":1})";
  EXPECT_EQ(Says(L"ForwardChatMsg", request), kSuccess);
  for (const MemoryConversation* to : {&chat, &other}) {
    EXPECT_EQ(to->sent_request.forward_msgid, 9);
    EXPECT_EQ(to->sent_request.forward_msgtype, biz::kMsgPicture);
  }
  chat.send_status = biz::kEngineNotFound;
  EXPECT_EQ(Says(L"ForwardChatMsg", request), LR"({"code":-9,"subcode":0,"result":"failed"})");
}

// Edits "good.png" only.
class Editor final : public RefPtrCounted<client::IPictureEditorService> {
 public:
  void EditImage(const base::FilePath& file, const std::wstring& md5,
                 client::IMEditCallback done) override {
    if (file.value() != L"good.png") return done({biz::kEngineNotFound, 0, L"why"}, {});
    done({}, base::FilePath(L"edited-" + md5));
  }
};

TEST_P(Conversations, EditedPicturesAreSentToEveryoneOrRefused) {
  const wchar_t* good = LR"({"cids":[%cid],"fileMD5":"m","filepath":"good.png"})";
  EXPECT_EQ(Says(L"EditPic2SendMsg", good),
            LR"({"code":-2147418113,"subcode":0,"result":"EditImage failed!"})");

  const Registered<client::IPictureEditorService> editor(RefPtr(new Editor));
  const struct {
    const wchar_t* request;
    const wchar_t* result;
  } refused[] = {
      {L"{}", L"invalid filepath"},
      {LR"({"cids":[{"appkey":"cnbazaro","nick":""}],"filepath":"good.png"})", L"IsInvalid cid"},
      {LR"({"cids":[%cid],"filepath":"bad.png"})", L"EditImage failed!"},
      {LR"({"filepath":"good.png"})", L"failed"},
  };
  for (const auto& c : refused) {
    EXPECT_TRUE(
        Says(L"EditPic2SendMsg", c.request).ends_with(std::wstring(L"\"") + c.result + L"\"}"))
        << c.result;
  }
  EXPECT_EQ(host.log->Lines(L"IsInvalid cid").at(0).brief, "_brief_,cid");
  EXPECT_TRUE(chat.sent.empty());

  EXPECT_EQ(Says(L"EditPic2SendMsg", good), kSuccess);
  ASSERT_EQ(chat.sent.size(), 1u);
  EXPECT_EQ(chat.sent[0].type, biz::kMsgPicture);
  EXPECT_EQ(chat.sent[0].filepath.value(), L"edited-m");
  EXPECT_EQ(host.log->Lines(L"EditImage").back().brief, "_brief_,vecCIDs");
}

TEST_P(Conversations, AreMissedUnlessTheyAreNamedAsTheirKindIs) {
  // A user's name is no tribe, a tribe's number no user.
  const wchar_t* foreign = kind.id.is_tribe()
                               ? LR"({"cid":{"appkey":"cnbazaro","nick":"lighthouse"}})"
                               : LR"({"tribeid":"10001"})";
  for (const wchar_t* json :
       {L"{}", LR"({"tribeid":10001})", LR"({"tribeid":"7","cid":7})", foreign}) {
    EXPECT_TRUE(Says(L"GetNewMsg", json).ends_with(LR"("GetConversation failed!!"})")) << json;
  }
  EXPECT_EQ(Says(L"GetNewMsg", L"{oops"),
            LR"({"code":-2147024809,"subcode":0,"result":")" + kind.invalid + L"\"}");
}

const Kind kKinds[] = {
    {"Single", L"im.singlemsg", LR"("cid":{"appkey":"cnbazaro","nick":"lighthouse"})",
     LR"({"appkey":"cnbazaro","nick":"lighthouse"})", LR"({"appkey":"cnbazaro","nick":"mariner"})",
     L"SendNormalChatMsg", "CBridgeSingleMsg", L"invalid!", kChat,
     biz::IMConversationID({L"cnbazaro", L"mariner"})},
    {"Tribe", L"im.tribemsg", LR"("tribeid":"10001")", LR"({"tribeid":"10001","type":3})",
     LR"({"tribeid":"10002","type":3})", L"SendNormalTribeMsg", "CBridgeTribeMsg", L"invalid",
     biz::IMConversationID(biz::IMTribeID{10001}), biz::IMConversationID(biz::IMTribeID{10002})},
};
INSTANTIATE_TEST_SUITE_P(Kinds, Conversations, ::testing::ValuesIn(kKinds),
                         [](const auto& param) { return param.param.name; });

}  // namespace
}  // namespace imsdk::test
