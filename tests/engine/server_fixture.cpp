#include "server_fixture.h"

#include "kexbase/guid.h"
#include "sqlite/database.h"

namespace imsdk::test {

std::vector<std::int64_t> MsgidsOf(const std::vector<link::Message>& messages) {
  std::vector<std::int64_t> msgids;
  for (const auto& message : messages) msgids.push_back(message.msgid);
  return msgids;
}

Answered<link::Delivered> Device::Say(const biz::IMConversationID& cid, std::int64_t msgid,
                                      const std::wstring& text) {
  link::Deliver deliver;
  deliver.message.cid = cid;
  deliver.message.msgid = msgid;
  deliver.message.msgtime = msgid;
  deliver.message.body = text;
  return Ask(deliver);
}

void Device::Disconnect() {
  std::lock_guard hold(lock_);
  session_.reset();
}

bool Device::Until(const std::function<bool(const Device&)>& enough) {
  std::unique_lock hold(lock_);
  const bool held = told_.wait_for(hold, kLongEnough, [&] { return enough(*this); });
  EXPECT_TRUE(held) << "told too little";
  return held;
}

void Device::Settle() {
  // History is answered after everything that is new.
  EXPECT_NE(Ask(link::GetHistory{}).result.code, biz::kEngineTimeout);
}

std::vector<std::int64_t> Device::Msgids() const { return MsgidsOf(All<link::Message>()); }

void Device::OnBatch(link::Batch batch) {
  std::lock_guard hold(lock_);
  if (acknowledges_ && session_) session_->Acknowledge(batch.position);
  if (batch.entries.empty()) {
    start = batch.position;
  } else {
    batches.push_back(std::move(batch));
  }
  told_.notify_all();
}

void Device::OnTyping(const biz::IMConversationID& cid, std::int32_t status) {
  std::lock_guard hold(lock_);
  typing.emplace_back(cid, status);
  told_.notify_all();
}

void Device::OnTribePresence(const link::TribePresence& presence) {
  std::lock_guard hold(lock_);
  presences.push_back(presence);
  told_.notify_all();
}

void Device::OnContactPresence(const link::ContactPresence& presence) {
  std::lock_guard hold(lock_);
  for (const auto& [user, status] : presence.changed) contact_statuses[user].push_back(status);
  told_.notify_all();
}

void Device::OnEnded(const biz::ResultCode& why) {
  std::lock_guard hold(lock_);
  ends.push_back(why);
  told_.notify_all();
}

ServerTest::ServerTest()
    : folder_(std::filesystem::temp_directory_path() / ("imsdk-" + base::GenerateGUID())) {
  options_.data = base::FilePath::FromUTF8(folder_.string());
  Start();
}

ServerTest::~ServerTest() {
  server_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void ServerTest::Start() {
  server_.reset();
  server_ = std::make_unique<embedded::Server>(options_, embedded::HashCost{1, 8192});
  link_ = server_->Link();
}

void ServerTest::CreateAccounts(const std::vector<std::wstring>& nicks) {
  for (const auto& nick : nicks) ASSERT_TRUE(server_->CreateAccount(Person(nick), L"pass"));
}

Answered<link::Connected> ServerTest::TryConnect(const std::shared_ptr<Device>& device,
                                                 const std::wstring& nick, const std::string& name,
                                                 const std::string& position) {
  const biz::IMUserID user = Person(nick);
  return Await<link::Connected>([&](auto done) {
    link_->Connect({user, TokenOf(*server_, user), name, position, device},
                   [device, done](const biz::ResultCode& result, const link::Connected& connected) {
                     {
                       // Batches come later on this very thread.
                       std::lock_guard hold(device->lock_);
                       device->session_ = connected.session;
                     }
                     done(result, connected);
                   });
  });
}

std::shared_ptr<Device> ServerTest::Connect(const std::wstring& nick, const std::string& name,
                                            const std::string& position, bool acknowledges) {
  const auto device = std::make_shared<Device>(acknowledges);
  EXPECT_TRUE(TryConnect(device, nick, name, position).result.ok());
  return device;
}

biz::IMConversationID ServerTest::Tribe(const std::vector<std::wstring>& nicks) {
  NewTribe tribe{kTribe.tribe, L"pilots", Person(nicks[0]), {}};
  for (const auto& nick : nicks) tribe.members.push_back(Person(nick));
  EXPECT_EQ(server_->CreateTribe(tribe), kTribe.tribe);
  return kTribe;
}

bool ServerTest::SetMember(const std::wstring& nick, bool member) {
  return server_->Change(embedded::SetMember{kTribe.tribe, Person(nick), member});
}

std::int64_t ServerTest::Count(const char* sql) {
  const auto copy = folder_ / "copy.db";
  for (const char* end : {"", "-wal"}) {
    std::filesystem::copy_file(folder_ / "server" / (std::string("server.db") + end),
                               copy.string() + end,
                               std::filesystem::copy_options::overwrite_existing);
  }
  sqlite::Database store(copy);
  auto row = store.Prepare(sql);
  return row.Step() ? row.Int64(0) : -1;
}

}  // namespace imsdk::test
