// Every bound at and beyond it: as it is described, at the server's door and at the engine's.
#include <typeinfo>

#include "bound_cases.h"
#include "engine_fixture.h"
#include "imsdk/biz/files.h"
#include "kexbase/strings.h"
#include "kexcore/kexcom.h"
#include "link/server_link.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kHarbor = User(L"harbor");
const biz::IMUserID kMariner = User(L"mariner");

// Tries each bound of a request. `ask` gives the outcome of asking with it.
template <class Request>
void TryBounds(const char* what, const std::function<biz::ResultCode(const Request&)>& ask,
               const Request& start = {}) {
  for (const auto& one : CasesOf<Request>()) {
    SCOPED_TRACE(std::string(what) + ": " + one.path);
    Request request = start;
    one.fill(request, one.most);
    EXPECT_NE(ask(request).code, biz::kEngineTooLarge);
    one.fill(request, one.most + 1);
    const biz::ResultCode result = ask(request);
    EXPECT_EQ(result.code, biz::kEngineTooLarge);
    const std::string text = base::WideToUTF8(result.text);
    EXPECT_NE(text.find('"' + one.path + '"'), text.npos) << text;
    EXPECT_NE(text.find(std::to_string(one.most)), text.npos) << text;
  }
}

// Takes what it is told, and does nothing about it.
class Nobody final : public link::SessionListener {
 public:
  void Use(const std::shared_ptr<link::Session>& session) {
    const std::lock_guard hold(lock_);
    session_ = session;
  }

 private:
  void OnBatch(link::Batch batch) override {
    const std::lock_guard hold(lock_);
    if (const auto session = session_.lock()) session->Acknowledge(batch.position);
  }
  void OnTribePresence(const link::TribePresence&) override {}
  void OnContactPresence(const link::ContactPresence&) override {}
  void OnTyping(const biz::IMConversationID&, std::int32_t) override {}
  void OnEnded(const biz::ResultCode&) override {}

  std::mutex lock_;
  std::weak_ptr<link::Session> session_;
};

class BoundsTest : public ServerTest {
 protected:
  void SetUp() override {
    setup_.timeouts.send = setup_.timeouts.request = std::chrono::seconds(10);
    ServerTest::SetUp();
    for (const auto& user : {kHarbor, kMariner}) CreateAccount(user);
  }

  // A session of harbor's by the link itself.
  std::shared_ptr<link::Session> Session() {
    listener_ = std::make_shared<Nobody>();
    const auto link = server_->Link();
    const auto grant = Wait<link::Grant>([&](auto done) {
      link->Login({kHarbor, link::Password{L"pass"}},
                  [done](const auto&, const link::Grant& given) { done(given); });
    });
    const auto session =
        Wait<link::Connected>([&](auto done) {
          link->Connect({kHarbor, grant.token, "desk", {}, listener_},
                        [done](const auto&, const auto& connected) { done(connected); });
        }).session;
    listener_->Use(session);
    return session;
  }

  std::shared_ptr<Nobody> listener_;
};

template <class Operation>
biz::ResultCode Ask(link::Session& session, const Operation& operation) {
  return Wait<biz::ResultCode>([&](auto done) {
    session.Ask(link::Asked<Operation>{
        operation, [done](const biz::ResultCode& result, const auto&) { done(result); }});
  });
}

// Whatever is added to the operations is tried too.
TEST_P(BoundsTest, TheServerLooksWhoeverSends) {
  const auto session = Session();
  ASSERT_TRUE(session);
  const auto each = [&]<class... Operation>(const std::variant<link::Asked<Operation>...>*) {
    (TryBounds<Operation>(typeid(Operation).name(),
                          [&](const Operation& operation) { return Ask(*session, operation); }),
     ...);
  };
  each(static_cast<const link::Request*>(nullptr));

  const auto link = server_->Link();
  TryBounds<link::LoginRequest>("login", [&](const link::LoginRequest& request) {
    return Wait<biz::ResultCode>([&](auto done) {
      link->Login(request, [done](const auto& result, const auto&) { done(result); });
    });
  });
  TryBounds<link::ConnectRequest>("connect", [&](const link::ConnectRequest& request) {
    return Wait<biz::ResultCode>([&](auto done) {
      link->Connect(request, [done](const auto& result, const auto&) { done(result); });
    });
  });

  // All of a message counts, not its body alone.
  link::Deliver whole;
  whole.message.cid = biz::IMConversationID(kMariner);
  whole.message.msgid = 1;
  whole.message.body.assign(biz::kMaxBodyBytes, L'x');
  whole.message.ext.others.assign(biz::kMaxExtraBytes, L'x');
  EXPECT_EQ(Ask(*session, whole).code, 0);
  whole.message.msgid = 2;
  const std::size_t left = biz::kMaxMessageBytes - biz::kMaxBodyBytes - biz::kMaxExtraBytes;
  const link::File file{std::string(200, 'x'), std::string(1000, 'x'), 1};
  whole.message.files.assign(left / 1200, file);
  EXPECT_EQ(Ask(*session, whole).code, biz::kEngineTooLarge);
}

// An outcome of an operation with any answer.
template <class Operation>
biz::ResultCode ResultOf(const Operation& operation) {
  return Wait<biz::ResultCode>([&](auto done) {
    operation([done](const biz::ResultCode& result, const auto&...) { done(result); });
  });
}

TEST_P(BoundsTest, TheEngineRefusesBeforeItKeepsAnything) {
  ASSERT_TRUE(Login(kHarbor).result.ok());
  const auto chat = Chat(kHarbor, kMariner);
  const auto chats = Chats(kHarbor);
  const auto files = kexcore::GetService<biz::IIMFileMgr>();
  Witness harbor(kHarbor);
#define TRY(Request, target, Method)                                    \
  TryBounds<biz::Request>(#Method, [&](const auto& request) {           \
    return ResultOf([&](auto done) { target->Method(request, done); }); \
  })
  TRY(IMNote, chat, AddSysMsg);
  TRY(IMMsgsRequest, chat, GetFlagsMyMsgReaded);
  TRY(IMMsgsRequest, chat, SetFlagsPeerMsgReaded);
  TRY(IMDeleteRequest, chat, DeleteLocalMsg);
  TRY(IMSearchRequest, chat, SearchMsg);
  TRY(IMSearchRequest, chats, SearchMsg);
  TRY(IMSearchRequest, chats, SearchConversations);
  TRY(IMPictureRequest, chat, GetMsgPicture);
  TRY(IMFileRequest, files, Fetch);
  const auto tribes = Accounts()->GetAccount(kHarbor)->GetIMTribeMgr();
  TRY(IMTribeMemberSearch, tribes, SearchTribeMember);
  TRY(IMTribeText, tribes, SetTribeDes);
  TRY(IMTribeUser, tribes, KickTribeMember);
  TRY(IMTribeNickname, tribes, SetTribeMemberNicknameByAdmin);
  TRY(IMMultiChatName, tribes, ChangeMultiName);
  TRY(IMTribeVerifyAction, tribes, AllowJoinTribe);
  TRY(IMNewTribe, tribes, CreateTribe);
  TRY(IMJoinTribe, tribes, JoinTribe);
  TRY(IMTribeInvitation, tribes, InviteToTribe);
  TRY(IMTribeSetting, tribes, SetTribe);
  TRY(IMPasswordLogin, Accounts(), LoginByPassword);
  TRY(IMTokenLogin, Accounts(), LoginByToken);
#undef TRY
  std::size_t taken = 0;
  TryBounds<biz::IMSendRequest>("SendMsg", [&](const biz::IMSendRequest& request) {
    const auto result = ResultOf([&](auto done) { chat->SendMsg(request, done); });
    if (result.ok()) ++taken;
    return result;
  });
  // Items that each keep their bounds and together do not.
  const struct {
    biz::IMBodyItem item;
    std::size_t items;
  } many[] = {{{biz::kMsgText, std::wstring(biz::kMaxExtraBytes, L'x'), L"x", {}, {}}, 33},
              {{biz::kMsgText, {}, std::wstring(1000, L'x'), {}, {}}, 1100},
              {{biz::kMsgFile, {}, {}, {}, std::string(biz::kMaxContentBytes / 2, 'x')}, 3}};
  for (const auto& one : many) {
    EXPECT_EQ(SendItems(chat, std::vector<biz::IMBodyItem>(one.items, one.item), {}),
              biz::kEngineTooLarge);
  }
  ASSERT_TRUE(harbor.AwaitStatuses(taken));
  EXPECT_EQ(harbor.sent.size(), taken) << "what is refused leaves nothing";
}

const std::vector<ServerKind> kEmbedded(1, ServerKinds().front());
INSTANTIATE_TEST_SUITE_P(Servers, BoundsTest, testing::ValuesIn(kEmbedded), NameOf);

}  // namespace
}  // namespace imsdk::test
