// A past that was written into a fresh server.
#include <fstream>

#include "kexbase/md5.h"
#include "server_fixture.h"

namespace imsdk::test {
namespace {

using Ids = std::vector<std::int64_t>;

class ServerSeed : public ServerTest {
 protected:
  embedded::PastMessage Past(const wchar_t* from, const biz::IMConversationID& cid,
                             std::int64_t time, biz::IMCIDType kind = biz::kCIDUser) {
    embedded::PastMessage past{{}, kind};
    past.message.cid = cid;
    past.message.from = Person(from);
    past.message.msgid = past.message.msgtime = past.message.svrtime = time;
    return past;
  }
};

TEST_F(ServerSeed, IsHistoryOfTheRightTimesAndNothingNew) {
  options_.file_life_ms = 0;
  Start();
  embedded::Seeding seeding;
  seeding.users = {Person(L"harbor"), Person(L"mariner")};
  seeding.password = L"demo";
  seeding.tribes = {{kTribe.tribe, L"t", Person(L"harbor"), {Person(L"mariner")}}};
  seeding.messages = {Past(L"harbor", With(L"mariner"), 1000),
                      Past(L"mariner", kTribe, 2000),
                      Past(L"mariner", With(L"harbor"), 3000),
                      Past(L"harbor", kTribe, 4000),
                      Past(L"mariner", kTribe, 5000),
                      Past(L"system", With(L"harbor"), 6000, biz::kCIDSystem)};
  const link::File file{base::MD5String("content") + ".txt", {}, 7};
  seeding.messages[3].message.files = {file};
  std::ofstream(folder_ / "file") << "content";
  seeding.files[file.name] = folder_ / "file";

  EXPECT_FALSE(server_->Seed(
      seeding, [](const auto&) { throw std::runtime_error("the other half cannot be filled"); }));
  EXPECT_FALSE(server_->HasAccounts()) << "all or nothing";
  std::vector<link::Message> written;
  ASSERT_TRUE(server_->Seed(seeding, [&](const auto& messages) { written = messages; }));
  EXPECT_FALSE(server_->Seed(seeding, [](const auto&) {})) << "it has a past";

  const auto mariner = Connect(L"mariner");
  const auto harbor = Connect(L"harbor");
  const auto tribe = mariner->Ask(link::GetHistory{.cid = kTribe, .count = 9}).reply.msgs;
  EXPECT_EQ(MsgidsOf(tribe), (Ids{2000, 4000, 5000}));
  EXPECT_EQ(tribe[2].previous, 2000);
  for (std::size_t i = 0; i < tribe.size(); ++i) {
    const auto& told = written[i == 0 ? 1 : i + 2];
    EXPECT_EQ(told.msgid, tribe[i].msgid);
    EXPECT_EQ(told.place, tribe[i].place);
    EXPECT_EQ(told.previous, tribe[i].previous);
    EXPECT_EQ(told.files, tribe[i].files);
    EXPECT_EQ(told.svrtime, tribe[i].svrtime);
  }
  ASSERT_EQ(tribe[1].files.size(), 1U);
  EXPECT_TRUE(mariner->Ask(link::Download{tribe[1].files[0], folder_ / "fetched", {}}).result.ok());
  const link::GetHistory chat{.cid = With(L"mariner"), .time = 2000, .older = false, .count = 9};
  EXPECT_EQ(MsgidsOf(harbor->Ask(chat).reply.msgs), Ids{3000});
  const biz::IMConversationID system(Person(L"system"), biz::kCIDSystem);
  EXPECT_EQ(MsgidsOf(harbor->Ask(link::GetHistory{.cid = system, .count = 9}).reply.msgs),
            Ids{6000});
  EXPECT_TRUE(harbor->Say(kTribe, 7000).result.ok());
  mariner->Settle();
  EXPECT_EQ(mariner->Msgids(), Ids{7000});
  EXPECT_EQ(mariner->All<link::Message>()[0].previous, 4000);
}

}  // namespace
}  // namespace imsdk::test
