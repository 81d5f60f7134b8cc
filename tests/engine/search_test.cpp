// What a search finds, and what it leaves alone.
#include "kexbase/strings.h"
#include "store_fixture.h"

namespace imsdk::test {
namespace {

using Found = std::vector<std::int64_t>;

class SearchTest : public StoreTest {};

TEST_F(SearchTest, ScriptsTokensAndSyntax) {
  const wchar_t* const bodies[] = {
      L"",
      L"Harbour lights at the caf\u00E9, 7 o'clock",
      L"\u9999\u6E2F\u7684\u706F\u5854\u5F88\u4EAE",         // the lighthouse of Hong Kong
      L"\u3082\u3081\u304C\u98DB\u3076 \u30AB\u30E2\u30E1",  // Hiragana, Han, Katakana
      L"\u041F\u0440\u0438\u0432\u0435\u0442, \u0401\u043B\u043A\u0430",
      L"\u039A\u03B1\u03BB\u03B7\u03BC\u03AD\u03C1\u03B1 \u03C4\u03BF\u03BD "
      L"\u03C6\u03AC\u03C1\u03BF\u03C2",
      L"\u0645\u064E\u0631\u0652\u062D\u064E\u0628\u064B\u0627 \u0645\u064A\u0646\u0627\u0621",
      L"\u05E9\u05C1\u05B8\u05DC\u05D5\u05B9\u05DD \u05E0\u05DE\u05DC",
      L"go \U0001F469\u200D\U0001F4BB now \U0001F44D\U0001F3FD",  // a coder, a thumb with a tone
      L"\U0001F44D only",
      L"see pic:impicture|abcdef?filepath=files%2Fsecret.png&fileMD5=abcdef&filetype=png there",
      L"file:Annual Report.pdf|filepath=files%2Fhidden.pdf",
      L"pic:imemotion|ID?filepath=smile.gif&shortcut=%2F%3A%29",
      L"quotes \" AND NOT body:harbour* NEAR(a b)",
      L"\uFF26\uFF35\uFF2C\uFF2C width \uFB01ne stra\u00DFe",
      L"profile:anchor | filepath=no token",
      L"\u597D\u7684pic:imemotion|ID?filepath=smile.gif&shortcut=%2F%3Asmile\u200B"
      L"\u660E\u5929\u89C1\u9762\u5427pic:imemotion|ID?filepath=grin.gif&shortcut=g\u200Bsoon",
      L"typed pic:imemotion|\u200BID?filepath=moored",
  };
  for (std::int64_t id = 1; id < std::ssize(bodies); ++id) {
    store_.AddIncoming(Received(kPeer, 1000 + id, id, bodies[id]));
  }
  const struct {
    std::vector<std::wstring> keywords;
    Found ids;
  } cases[] = {
      {{L"harbour"}, {1, 13}},
      {{L"HARB"}, {1, 13}},
      {{L"arbour"}, {}},
      {{L"lights at t"}, {1}},
      {{L"light at"}, {}},
      {{L"at lights"}, {}},
      {{L"at", L"lights"}, {1}},
      {{L"cafe"}, {1}},
      {{L"CAFE\u0301"}, {1}},
      {{L"o'c"}, {1}},
      {{L"7"}, {1}},
      {{L"\u706F\u5854"}, {2}},
      {{L"\u7684"}, {2, 16}},
      {{L"\u5854\u706F"}, {}},
      {{L"\u6E2F", L"\u4EAE"}, {2}},
      {{L"\u304C"}, {3}},
      {{L"\u304B"}, {}},         // the same letter without its voicing mark
      {{L"\uFF76\uFF93"}, {3}},  // half-width Katakana
      {{L"\u043F\u0440\u0438\u0412"}, {4}},
      {{L"\u0435\u043B\u043A\u0430"}, {4}},
      {{L"\u03BA\u03B1\u03BB\u03B7\u03BC\u03B5\u03C1\u03B1"}, {5}},
      {{L"\u03A6\u0391\u03A1\u039F\u03A3"}, {5}},
      {{L"\u0645\u0631\u062D\u0628\u0627"}, {6}},
      {{L"\u05E9\u05DC\u05D5\u05DD"}, {7}},
      {{L"\U0001F469"}, {8}},
      {{L"\U0001F469\u200D\U0001F4BB"}, {8}},
      {{L"\U0001F469\U0001F4BB"}, {}},
      {{L"\U0001F44D"}, {8, 9}},
      {{L"\U0001F44D\U0001F3FD"}, {8}},
      {{L"secret"}, {}},
      {{L"abcdef"}, {}},
      {{L"impicture"}, {}},
      {{L"pic"}, {17}},  // typed
      {{L"see there"}, {10}},
      {{L"file"}, {15, 17}},
      {{L"annual rep"}, {11}},
      {{L"hidden"}, {}},
      {{L"smile"}, {}},
      {{L"grin"}, {}},
      {{L"\u660E\u5929"}, {16}},
      {{L"soon"}, {16}},
      {{L"moored"}, {17}},
      {{L"shortcut"}, {}},
      {{L"quotes \" and"}, {13}},
      {{L"NEAR(a b)"}, {13}},
      {{L"harbour*"}, {1, 13}},
      {{L"harbour OR only"}, {}},
      {{L"-harbour"}, {1, 13}},
      {{L"facets:c1"}, {}},
      {{L"c1"}, {}},
      {{std::wstring(L"harb\0our", 8)}, {}},
      {{L"full"}, {14}},
      {{L"fine"}, {14}},
      {{L"STRASSE"}, {14}},
      {{L"\""}, {}},
      {{L""}, {}},
      {{L"harbour", L"*"}, {}},
      {std::vector<std::wstring>(300, L"harbour"), {1, 13}},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(Find(one.keywords), one.ids) << base::WideToUTF8(one.keywords.front());
  }
}

// The index of an older store knows other words of the bodies; a hit must not outlive its message.
TEST(SearchIndex, OfAnOlderStoreIsMadeAnew) {
  TempFolder folder;
  const auto file = folder.path() / "messages.db";
  const auto stores = std::make_shared<account::OpenStores>();
  biz::IMSearchRequest request;
  request.ignoreboundary = true;
  request.keywords = {L"soon"};
  const auto found = [&](account::MessageStore& store) {
    store.index().AddSlice();
    return Ids(store.search().Search(kChat, request).msgs);
  };
  const std::wstring body = L"pic:imemotion|ID?filepath=a&shortcut=b\x200Bsoon";
  {
    account::MessageStore store(file, kSelf, stores);
    store.AddIncoming(Received(kPeer, 1, 1, body));
    store.index().AddSlice();
    store.database().Execute(
        "INSERT INTO search(search) VALUES('delete-all'); DROP TABLE tribes;"
        "DROP INDEX messages_at_unread; DROP INDEX messages_at_untold;"
        "ALTER TABLE session DROP COLUMN tribes_known; ALTER TABLE messages DROP COLUMN at_type;"
        "ALTER TABLE messages DROP COLUMN relation; ALTER TABLE messages DROP COLUMN at_read;"
        "ALTER TABLE messages DROP COLUMN at_members; DROP TABLE unindexed;"
        "PRAGMA user_version=1");
    store.Close();
  }
  account::MessageStore store(file, kSelf, stores);
  EXPECT_EQ(found(store), Found{1});
  EXPECT_EQ(store.Find(kChat, 1)->msgbody, body);
  EXPECT_EQ(store.Find(kChat, 1)->tribeat, biz::IMTribeAt{});
}

// As a kill between any two commits would leave it.
TEST(SearchIndex, CatchesUpWithWhatIsStoredChangedAndDeleted) {
  TempFolder folder;
  const auto file = folder.path() / "messages.db";
  std::optional<account::MessageStore> store;
  const auto reopen = [&] { store.emplace(file, kSelf, std::make_shared<account::OpenStores>()); };
  const auto found = [&](const wchar_t* word) {
    biz::IMSearchRequest request{.keywords = {word}};
    request.ignoreboundary = true;
    request.count = 1000;
    return Ids(store->search().Search(kChat, request).msgs);
  };
  reopen();
  store->AddIncoming(Received(kPeer, 1, 1, L"early text"));
  store->index().AddLittle();
  EXPECT_FALSE(store->index().IsBehind()) << "a few are not put off";
  {
    sqlite::Transaction transaction(store->database());
    for (std::int64_t id = 2; id <= 600; ++id) {
      store->AddIncoming(Received(kPeer, id, id, L"late text " + std::to_wstring(id)));
    }
    store->index().AddLittle();
    transaction.Commit();
  }
  EXPECT_EQ(found(L"text"), Found{1}) << "many are";
  store->Withdraw(kChat, kPeer, 1);
  store->Withdraw(kChat, kPeer, 2);
  store->Delete(kChat, {3, 599});
  reopen();
  store->index().AddSlice();
  EXPECT_TRUE(store->index().IsBehind());
  store->Delete(kChat, {4, 598});
  store->Withdraw(kChat, kPeer, 5);
  store->Withdraw(kChat, kPeer, 597);
  reopen();
  store->index().AddSlice();
  EXPECT_FALSE(store->index().IsBehind());
  Found left;
  for (std::int64_t id = 6; id <= 600; ++id) {
    if (id < 597 || id == 600) left.push_back(id);
  }
  EXPECT_EQ(found(L"text"), left);
  store->database().Execute("INSERT INTO search(search) VALUES('integrity-check')");

  // One text may be a slice.
  store->AddIncoming(Received(kPeer, 700, 700, std::wstring(200'000, L'x')));
  store->AddIncoming(Received(kPeer, 701, 701, L"behind"));
  store->index().AddLittle();
  store->index().AddSlice();
  EXPECT_EQ(found(L"behind"), Found{});
  store->index().AddSlice();
  EXPECT_EQ(found(L"behind"), Found{701});
}

TEST_F(SearchTest, PagesByPositionAndByNumber) {
  const auto other = User(L"other");
  const biz::IMConversationID system(User(L"system"), biz::kCIDSystem);
  const biz::IMConversationID tribe(biz::IMTribeID{7});
  // In both conversations the same identifiers; 2 to 6 have one time. Stored out of order.
  for (const std::int64_t id : {6, 3, 9, 1, 5, 2, 8, 4, 7}) {
    auto message = Received(kPeer, id == 1 ? 100 : id <= 6 ? 200 : 300, id);
    message.msgtype = id % 4 == 0 ? biz::kMsgFile : biz::kMsgText;
    store_.AddIncoming(message);
    message.fromid = other;
    message.cid = With(other);
    store_.AddIncoming(message);
    message.cid = tribe;
    store_.AddIncoming(message);
    message.cid = system;
    store_.AddIncoming(message);
  }
  // The two oldest ones lie outside of what is complete.
  store_.database().Execute(
      "UPDATE messages SET part=0 WHERE msgid<3 AND conversation=1;"
      "UPDATE conversations SET floor_time=200, floor_id=3 WHERE id=1");
  using Request = biz::IMSearchRequest;
  const struct {
    const char* what;
    std::function<void(Request&)> ask;
    Found ids;
    std::int32_t pages = 0;
    std::int32_t total = 0;
  } cases[] = {
      {"newest", [](Request& r) { r.count = 3; }, {7, 8, 9}},
      {"older",
       [](Request& r) { r.msgtime = 200, r.msgid = 6, r.gohistory = true, r.count = 2; },
       {4, 5}},
      {"up to the boundary",
       [](Request& r) { r.msgtime = 200, r.msgid = 5, r.gohistory = true; },
       {3, 4}},
      {"beyond it",
       [](Request& r) { r.msgtime = 200, r.msgid = 5, r.gohistory = r.ignoreboundary = true; },
       {1, 2, 3, 4}},
      {"newer", [](Request& r) { r.msgtime = 200, r.msgid = 5, r.count = 2; }, {6, 7}},
      {"kinds",
       [](Request& r) {
         r.msgtypes = {biz::kMsgFile, biz::kMsgShake};
       },
       {4, 8}},
      {"times", [](Request& r) { r.btime = 150, r.etime = 299; }, {3, 4, 5, 6}},
      {"first number",
       [](Request& r) { r.needpage = true, r.page = 1, r.count = 4; },
       {6, 7, 8, 9},
       3,
       9},
      {"last number", [](Request& r) { r.needpage = true, r.page = 3, r.count = 4; }, {1}, 3, 9},
      {"no such number", [](Request& r) { r.needpage = true, r.page = 4, r.count = 4; }, {}, 3, 9},
      {"number and kind",
       [](Request& r) {
         r.msgtypes = {biz::kMsgText};
         r.needpage = true, r.etime = 200, r.count = 2;
       },
       {5, 6},
       3,
       5},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    Request request;
    one.ask(request);
    for (const auto& keywords : {std::vector<std::wstring>{}, {L"text"}}) {
      request.keywords = keywords;
      const auto page = Indexed().Search(kChat, request);
      EXPECT_EQ(Ids(page.msgs), one.ids);
      EXPECT_EQ(page.totalpage, one.pages);
      EXPECT_EQ(page.totalcount, one.total);
    }
  }
  Request all;
  all.keywords = {L"text"};
  all.needpage = true;
  all.count = 100;
  EXPECT_EQ(Indexed().SearchAll({biz::kCIDUser}, all).totalcount, 18);
  EXPECT_EQ(Indexed().SearchAll({biz::kCIDTribe}, all).totalcount, 9);
  EXPECT_EQ(Indexed().SearchAll({biz::kCIDSystem, biz::kCIDSubscribe}, all).totalcount, 9);
  EXPECT_EQ(Indexed().Search(system, all).totalcount, 9);
  EXPECT_TRUE(Indexed().Search(With(User(L"unknown")), all).msgs.empty());
  store_.AddIncoming(Received(kPeer, 400, 10, L"text of a lantern"));
  EXPECT_EQ(Indexed().Conversations({biz::kCIDUser}, all), (std::vector{kChat, With(other)}));
  all.btime = 400;
  all.keywords = {L"lant"};
  EXPECT_EQ(Indexed().Conversations({biz::kCIDUser, biz::kCIDTribe}, all), std::vector{kChat});
}

TEST_F(SearchTest, ThePicturesOfAConversation) {
  const auto token = [](const std::wstring& name) {
    return L"pic:impicture|m?filepath=files%2F" + name + L".png&fileMD5=m";
  };
  store_.AddIncoming(Received(kPeer, 100, 1, token(L"a")));
  store_.AddIncoming(Received(kPeer, 100, 2, L"no picture: pic:imemotion|ID?filepath=b.gif"));
  store_.AddIncoming(Received(kPeer, 200, 3, token(L"c") + L" and " + token(L"d")));
  // Tokens that only begin must not cost a look at the rest of the body each.
  std::wstring begun;
  while (begun.size() < 1'000'000) begun += L"pic:impicture|";
  store_.AddIncoming(
      Received(kPeer, 200, 4, token(L"e") + L"\n" + begun + token(L"f") + L" pic:impicture|m"));
  store_.AddIncoming(Received(User(L"other"), 200, 4, token(L"g")));
  const auto pictures = [this](const biz::IMPictureRequest& request) {
    std::wstring ids;
    for (const auto& picture : Indexed().Pictures(kChat, request)) {
      ids += picture.pictureid + L' ';
    }
    return ids;
  };
  const struct {
    std::wstring at;
    std::int64_t time;
    bool older;
    std::int32_t count;
    std::wstring ids;
  } cases[] = {
      {L"", 0, true, 0, L"1_0 3_0 3_1 4_0 4_1 "},
      {L"", 0, false, 3, L"3_1 4_0 4_1 "},
      {L"3_1", 200, true, 1, L"3_0 "},
      {L"3_0", 200, true, 0, L"1_0 "},
      {L"3_0", 200, false, 2, L"3_1 4_0 "},
      {L"4_1", 200, false, 0, L""},
  };
  for (const auto& one : cases) {
    biz::IMPictureRequest request;
    request.pictureid = one.at;
    request.msgtime = one.time;
    request.gohistory = one.older;
    request.count = one.count;
    EXPECT_EQ(pictures(request), one.ids) << base::WideToUTF8(one.at);
  }
  biz::IMPictureRequest request;
  request.etime = 199;
  EXPECT_EQ(pictures(request), L"1_0 ");
  request = {};
  request.btime = 150;
  request.count = 1;
  EXPECT_EQ(pictures(request), L"4_1 ");
  const auto last = Indexed().Pictures(kChat, request).at(0);
  EXPECT_EQ(last.url, L"files%2Ff.png");
  EXPECT_EQ(last.fromid, kPeer);
  EXPECT_EQ(last.mgstime, 200);
}

}  // namespace
}  // namespace imsdk::test
