// Contacts as an account has them: its list, what others are called, what is told.
#include <algorithm>
#include <mutex>

#include "device.h"
#include "imsdk/biz/contact.h"

namespace imsdk::test {
namespace {

class ContactsTest : public PeersTest {
 protected:
  struct Told {
    std::mutex lock;
    std::vector<biz::IMContactVerifyMsg> verify;
    std::vector<biz::IMContact> statuses;
    std::vector<biz::IMListedContact> changed;
    std::vector<biz::IMUserID> removed;
  };

  static RefPtr<biz::IIMContactMgr> Of(const biz::IMUserID& user) {
    return Accounts()->GetAccount(user)->GetIMContactMgr();
  }
  static std::shared_ptr<Told> Listen(const biz::IMUserID& user) {
    const auto told = std::make_shared<Told>();
    const auto keep = [told](auto Told::*list) {
      return [told, list](const auto& what) {
        const std::lock_guard hold(told->lock);
        if constexpr (requires { what.begin(); }) {
          ((*told).*list).insert(((*told).*list).end(), what.begin(), what.end());
        } else {
          ((*told).*list).push_back(what);
        }
      };
    };
    biz::IMContactEvents& events = Of(user)->Events();
    events.on_contact_verify_msg.connect(keep(&Told::verify));
    events.on_contact_status.connect(keep(&Told::statuses));
    events.on_contact_changed.connect(keep(&Told::changed));
    events.on_contact_removed.connect(keep(&Told::removed));
    return told;
  }
  template <class Holds>
  static void Hears(Told& told, const char* what, Holds holds) {
    Eventually(
        [&] {
          const std::lock_guard hold(told.lock);
          return holds(told);
        },
        what);
  }
  biz::IMContactList List() {
    return Answer<biz::IMContactList>([&](auto done) { Of(kHarbor)->GetContactList({}, done); })
        .second;
  }
  biz::ResultCode AskMariner() {
    return Done([&](auto done) { Of(kHarbor)->AskContact({kMariner, 0, L"it is me"}, done); });
  }
  void Befriend() {
    ASSERT_TRUE(AskMariner().ok());
    ASSERT_TRUE(Done([&](auto done) {
                  Of(kMariner)->AgreeAndAddContact({kHarbor, 0, L"welcome", 0}, done);
                }).ok());
  }
};

INSTANTIATE_TEST_SUITE_P(Embedded, ContactsTest, testing::Values(ServerKinds().front()), NameOf);

TEST_P(ContactsTest, ARequestIsToldDecidedAndLastsOverRestarts) {
  const auto harbor = Listen(kHarbor);
  const auto mariner = Listen(kMariner);
  Befriend();
  Hears(*mariner, "the request, then the decision", [](const Told& told) {
    return told.verify.size() == 2 && told.verify[0].type == biz::kContactAsked &&
           told.verify[0].fromname == L"harbor" &&
           told.verify[1].type == biz::kContactAgreedAndAdded;
  });
  Hears(*harbor, "what became of it, and who is a contact", [&](const Told& told) {
    return !told.verify.empty() && told.verify.back().authinfo == L"welcome" &&
           !told.changed.empty() && told.changed.back().contact.userid == kMariner;
  });
  Hears(*harbor, "that the contact is there", [&](const Told& told) {
    return !told.statuses.empty() && told.statuses.back().userid == kMariner &&
           told.statuses.back().status == biz::kContactOnline;
  });
  ASSERT_TRUE(Done([&](auto done) { Of(kHarbor)->SetAsterisk({kMariner, true}, done); }).ok());
  EXPECT_EQ(Of(kHarbor)->GetAsteriskUsers().size(), 1U) << "known when it is answered";

  Again();
  const auto list = List();
  ASSERT_EQ(list.contacts.size(), 1U);
  EXPECT_EQ(list.contacts[0].contact.userid, kMariner);
  EXPECT_TRUE(list.contacts[0].asterisk);
  EXPECT_EQ(Of(kHarbor)->GetAsteriskUsers().size(), 1U);
  EXPECT_EQ(AskMariner().subcode, biz::kContactAlready);
  const auto told = Listen(kHarbor);
  ASSERT_TRUE(Done([&](auto done) { Of(kHarbor)->RemoveContact({kMariner}, done); }).ok());
  EXPECT_TRUE(List().contacts.empty());
  EXPECT_TRUE(Of(kHarbor)->GetAsteriskUsers().empty());
  EXPECT_EQ(told->removed, std::vector<biz::IMUserID>{kMariner});
}

TEST_P(ContactsTest, UsersHaveNamesAndUnreadCountsContactsOrNot) {
  const biz::IMUserID ghost = User(L"ghost");
  ASSERT_TRUE(Done([&](auto done) { Of(kMariner)->SetProfile({L"Max", L"face"}, done); }).ok());
  Witness hears(kHarbor);
  ASSERT_EQ(Send(kMariner, kHarbor, L"ahoy"), 0);
  hears.AwaitReceived(1);
  const auto infos = [&] {
    return Answer<biz::IMContacts>([&](auto done) {
             Of(kHarbor)->GetContactBaseInfo({{ghost, kMariner, kHarbor, kMariner, {}}}, done);
           })
        .second.contacts;
  };
  for (const bool contact : {false, true}) {
    if (contact) Befriend();
    const auto found = infos();
    ASSERT_EQ(found.size(), 2U) << "each once, in order, without whom there is not";
    EXPECT_EQ(found[0].userid, kMariner);
    EXPECT_EQ(found[0].display, L"Max");
    EXPECT_EQ(found[0].portrait, L"face");
    EXPECT_EQ(found[0].unreadnum, 1);
    EXPECT_EQ(found[1].userid, kHarbor);
    if (contact) continue;
    EXPECT_EQ(found[0].status, biz::kContactOffline) << "nobody's presence but contacts'";
  }
  const auto nicks = Answer<biz::IMUserNicks>([&](auto done) {
                       Of(kHarbor)->GetUserDisplayNick({{{1, L"cnbazaromariner"},
                                                         {0, L"[UNKNOW]mariner"},
                                                         {1, L"otherappmariner"},
                                                         {1, L"short"},
                                                         {0, L""}}},
                                                       done);
                     }).second.nicks;
  ASSERT_EQ(nicks.size(), 2U);
  EXPECT_EQ(nicks[0].nick, L"Max");
  EXPECT_EQ(nicks[1].identifier, L"[UNKNOW]mariner");
  EXPECT_EQ(nicks[1].nick, L"Max");
}

TEST_P(ContactsTest, ALostLinkLeavesTheListAndFetchesWhatWasMissed) {
  Befriend();
  const auto told = Listen(kHarbor);
  // The list says that the contact is there before the server tells it.
  ASSERT_TRUE(Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); }).ok());
  ASSERT_EQ(List().contacts.at(0).contact.status, biz::kContactOnline);
  ASSERT_TRUE(Done([&](auto done) { Accounts()->Logout({kMariner}, done); }).ok());
  Hears(*told, "the contact is gone", [&](const Told& heard) {
    return !heard.statuses.empty() && heard.statuses.back().status == biz::kContactOffline;
  });
  const auto group = Answer<biz::IMContactGroupRequest>([&](auto done) {
    Of(kHarbor)->SetGroup({{0, 0, L"crew"}}, done);
  });
  ASSERT_TRUE(Done([&](auto done) {
                Of(kHarbor)->MoveContact({kMariner, group.second.groupid}, done);
              }).ok());
  ASSERT_TRUE(Done([&](auto done) { Accounts()->NetReConnect({kHarbor}, done); }).ok());
  const auto info = Answer<biz::IMContactGroupInfo>(
      [&](auto done) { Of(kHarbor)->GetGroupInfo(group.second, done); });
  EXPECT_EQ(info.second.name, L"crew");
  EXPECT_EQ(info.second.uids, std::vector<biz::IMUserID>{kMariner});
  const auto root = Answer<biz::IMContactGroupInfo>(
      [&](auto done) { Of(kHarbor)->GetGroupInfo({biz::kRootGroup}, done); });
  EXPECT_EQ(root.second.subgroups.size(), 1U);
  EXPECT_TRUE(root.second.uids.empty());
  EXPECT_EQ(Answer<biz::IMContactGroupInfo>([&](auto done) {
              Of(kHarbor)->GetGroupInfo({group.second.groupid + 1}, done);
            }).first.subcode,
            biz::kContactNoSuchGroup);
}

// A message that the black list refuses is not sent again and again, and says why it failed.
TEST_P(ContactsTest, WhoIsBlackIsToldThatHisMessageWasRefused) {
  ASSERT_TRUE(Done([&](auto done) { Of(kMariner)->AddToBlack({kHarbor, 0, {}, 0}, done); }).ok());
  Witness hears(kHarbor);
  ASSERT_EQ(Send(kHarbor, kMariner, L"ahoy"), 0);
  hears.AwaitStatuses(1);
  EXPECT_EQ(hears.statuses[0].code, biz::kEngineRefused);
  EXPECT_EQ(Done([&](auto done) {
              Of(kMariner)->AddToBlack({kHarbor, 0, {}, 99}, done);
            }).subcode,
            biz::kContactNoSuchRequest);
}

}  // namespace
}  // namespace imsdk::test
