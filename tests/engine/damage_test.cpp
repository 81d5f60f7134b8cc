// Stores that are damaged, cut short, emptied or gone: what is left is there, and it is told.
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <random>
#include <set>

#include "account/files/data_folder.h"
#include "device.h"
#include "embedded/embedded_server.h"
#include "imsdk/check_folder.h"
#include "sqlite/database.h"

namespace imsdk::test {
namespace {

namespace fs = std::filesystem;

const biz::IMUserID kHarbor = User(L"harbor");
const biz::IMUserID kMariner = User(L"mariner");
const biz::IMUserID kPilot = User(L"pilot");  // whom harbor wrote to, and who never answered
constexpr int kRounds = 30;
constexpr std::size_t kMessages = 2 * kRounds;  // between harbor and mariner

std::string Content(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void Write(const fs::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

fs::path Wal(const fs::path& store) { return store.string() + "-wal"; }

// The page that begins at a place of the file, or what there is of it.
void SpoilPage(const fs::path& file, std::size_t number) {
  std::string content = Content(file);
  for (std::size_t i = number * 4096; i < std::min(content.size(), (number + 1) * 4096); ++i) {
    content[i] = static_cast<char>(i * 131 + 7);
  }
  Write(file, content);
}

void SpoilIndex(const fs::path& store, const char* name) {
  std::int64_t root = 0;
  {
    sqlite::Database database(store);
    auto row =
        database.Prepare("SELECT rootpage FROM sqlite_schema WHERE name=?", std::string(name));
    ASSERT_TRUE(row.Step());
    root = row.Int64(0);
  }
  SpoilPage(store, static_cast<std::size_t>(root - 1));
}

// One bit of its first page: what is behind it does not count any more.
void SpoilLog(const fs::path& store) {
  std::string log = Content(Wal(store));
  log.at(500) = static_cast<char>(log.at(500) ^ 8);
  Write(Wal(store), log);
}

// A folder in which two accounts wrote to each other, as it is after a clean stop, and as it was a
// moment before, which is what a kill leaves.
struct Past {
  TempFolder stopped;
  TempFolder killed;

  Past() {
    TempFolder here;
    auto server = ServerKinds().front().start(here.path());
    for (const auto& user : {kHarbor, kMariner, kPilot}) server->CreateAccount(user, L"pass");
    EngineSetup setup = QuickSetup(here.path());
    setup.options.link = [&server] { return server->Link(); };
    auto engine = Start(setup);
    Login(kHarbor);
    Login(kMariner);
    {
      Witness harbor(kHarbor);
      Witness mariner(kMariner);
      for (int i = 0; i < kRounds; ++i) {
        Send(kHarbor, kMariner, L"out " + std::to_wstring(i));
        Send(kMariner, kHarbor, L"in " + std::to_wstring(i));
      }
      Send(kHarbor, kPilot, L"ahoy");
      harbor.AwaitReceived(kRounds);
      mariner.AwaitReceived(kRounds);
      harbor.AwaitStatuses(kRounds + 1);
      mariner.AwaitStatuses(kRounds);
    }
    Copy(here.path(), killed.path());
    engine.reset();
    server.reset();
    Copy(here.path(), stopped.path());
  }
  static void Copy(const fs::path& from, const fs::path& to) {
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  }
};

const Past& ThePast() {
  static const Past past;
  return past;
}

class DamageTest : public testing::Test {
 protected:
  explicit DamageTest() { Again(false); }

  // A folder as it was.
  void Again(bool killed) {
    Stop();
    folder_ = std::make_unique<TempFolder>();
    Past::Copy((killed ? ThePast().killed : ThePast().stopped).path(), folder_->path());
    told_.clear();
  }
  fs::path Store(const biz::IMUserID& user) const {
    return account::DataFolder(folder_->path()).MessageStore(user);
  }
  fs::path ServerStore() const { return folder_->path() / "server" / "server.db"; }

  bool Start() {
    std::string error;
    const auto report = [this](const std::string& text) {
      std::lock_guard hold(lock_);
      told_.push_back(text);
    };
    EmbeddedServerOptions options;
    options.data = account::FromPath(folder_->path());
    options.report = report;
    server_ = std::make_unique<embedded::Server>(options, embedded::HashCost{1, 8192});
    EngineSetup setup = QuickSetup(folder_->path());
    setup.options.link = [this] { return server_->Link(); };
    setup.options.report = report;
    engine_ = test::Start(setup);
    return engine_ != nullptr;
  }
  void Stop() {
    engine_.reset();
    server_.reset();
  }
  std::size_t Told() {
    std::lock_guard hold(lock_);
    return told_.size();
  }
  static std::size_t Shown(const biz::IMUserID& self, const biz::IMUserID& peer) {
    const auto bodies = Bodies(History(self, peer, {.count = 1000}).msgs);
    const std::set<std::wstring> different(bodies.begin(), bodies.end());
    EXPECT_EQ(different.size(), bodies.size()) << "shown twice";
    return bodies.size();
  }
  std::size_t SetAside(const fs::path& store) const {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(store.parent_path())) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with(store.filename().string() + ".aside-") &&
          name.find("-wal") == std::string::npos && name.find("-shm") == std::string::npos) {
        ++count;
      }
    }
    return count;
  }

  std::unique_ptr<TempFolder> folder_;
  std::mutex lock_;
  std::vector<std::string> told_;
  std::unique_ptr<EmbeddedServer> server_;
  std::unique_ptr<Engine> engine_;
};

struct Case {
  const char* what;
  bool killed;
  std::function<void(const fs::path& store)> spoil;
  bool aside;  // there is something to set aside
};

const Case kCases[] = {
    {"missing", false, [](const fs::path& store) { fs::remove(store); }, false},
    {"emptied", false, [](const fs::path& store) { fs::resize_file(store, 0); }, true},
    {"half of it", false,
     [](const fs::path& store) { fs::resize_file(store, fs::file_size(store) / 2); }, true},
    {"an odd length", false,
     [](const fs::path& store) { fs::resize_file(store, fs::file_size(store) - 5000); }, true},
    {"no store at all", false, [](const fs::path& store) { Write(store, std::string(9000, '#')); },
     true},
    {"the first page", false, [](const fs::path& store) { SpoilPage(store, 0); }, true},
};

TEST_F(DamageTest, AnAccountsStoreComesBackFromTheServer) {
  std::vector<Case> cases(std::begin(kCases), std::end(kCases));
  cases.push_back({"a page of an index", false,
                   [](const fs::path& store) { SpoilIndex(store, "messages_by_id"); }, true});
  cases.push_back({"a bit of the write-ahead log", true, SpoilLog, false});
  cases.push_back({"a short write-ahead log", true,
                   [](const fs::path& store) { fs::resize_file(Wal(store), 20'000); }, false});
  cases.push_back(
      {"no write-ahead log", true, [](const fs::path& store) { fs::remove(Wal(store)); }, false});
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    Again(one.killed);
    one.spoil(Store(kHarbor));
    ASSERT_TRUE(Start());
    const auto login = Login(kHarbor).result;
    EXPECT_EQ(login.code, biz::kEngineOk) << "what is left can be used";
    EXPECT_EQ(login.subcode, biz::kEngineDamaged);
    EXPECT_FALSE(login.text.empty());
    EXPECT_EQ(Told(), 1U);
    EXPECT_EQ(SetAside(Store(kHarbor)), one.aside ? 1U : 0U);
    Eventually([] { return Shown(kHarbor, kMariner) == kMessages; }, "all of it is back");
    Eventually([] { return Shown(kHarbor, kPilot) == 1; }, "what only harbor knew is back");
    EXPECT_EQ(Shown(kHarbor, kMariner), kMessages);
    // It goes on, and the next login has nothing to tell.
    Witness mariner(kMariner);
    Login(kMariner);
    Send(kHarbor, kMariner, L"again");
    Eventually([] { return Shown(kMariner, kHarbor) == kMessages + 1; }, "it goes on");
    Stop();
    ASSERT_TRUE(Start());
    EXPECT_EQ(Login(kHarbor).result.subcode, 0);
    EXPECT_EQ(Shown(kHarbor, kMariner), kMessages + 1);
  }
}

TEST_F(DamageTest, NothingIsTakenFromAnAccountWhenTheServerLosesItsStore) {
  std::vector<Case> cases(std::begin(kCases), std::end(kCases));
  cases.push_back({"a page of an index", false,
                   [](const fs::path& store) { SpoilIndex(store, "messages_of"); }, true});
  cases.push_back({"a bit of the write-ahead log", true, SpoilLog, false});
  cases.push_back({"the server's folder and every record", false,
                   [](const fs::path& store) {
                     fs::remove_all(store.parent_path());
                     fs::remove_all(store.parent_path().parent_path() / "stores");
                   },
                   false});
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    Again(one.killed);
    one.spoil(ServerStore());
    ASSERT_TRUE(Start());
    EXPECT_EQ(Told(), 1U);
    EXPECT_EQ(SetAside(ServerStore()), one.aside ? 1U : 0U);
    const auto login = Login(kHarbor).result;
    EXPECT_TRUE(login.code == biz::kEngineDamaged || login.subcode == biz::kEngineDamaged)
        << login.code << " of an account that is lost, or that is told";
    if (login.ok()) {
      Eventually([] { return Shown(kHarbor, kMariner) == kMessages; }, "its own store has them");
      Login(kMariner);
      Witness mariner(kMariner);
      Send(kHarbor, kMariner, L"after");
      mariner.AwaitReceived(1);
    }
    Stop();
    sqlite::Database store(Store(kHarbor));
    auto row = store.Prepare("SELECT count(*) FROM messages");
    ASSERT_TRUE(row.Step());
    EXPECT_GE(row.Int64(0), static_cast<std::int64_t>(kMessages)) << "nothing was removed";
  }
}

// Wherever a page is spoilt: nothing is missing in the end, and nothing was lost in silence.
TEST_F(DamageTest, AnyPage) {
  const char* wanted = std::getenv("IMSDK_DAMAGES");
  const int count = wanted ? std::atoi(wanted) : 12;
  std::mt19937 random(11);
  for (int i = 0; i < count; ++i) {
    const bool servers = i % 3 == 2;
    Again(false);
    const fs::path store = servers ? ServerStore() : Store(kHarbor);
    const std::size_t page = random() % (fs::file_size(store) / 4096);
    SCOPED_TRACE((servers ? "server, page " : "account, page ") + std::to_string(page));
    SpoilPage(store, page);
    ASSERT_TRUE(Start());
    const auto login = Login(kHarbor).result;
    if (servers && !login.ok()) {
      EXPECT_EQ(login.code, biz::kEngineDamaged);
    } else {
      ASSERT_TRUE(login.ok()) << login.code;
      Eventually([] { return Shown(kHarbor, kMariner) == kMessages; }, "all of it is there");
    }
    EXPECT_EQ(Told(), SetAside(store)) << "what is set aside is told";
  }
}

TEST_F(DamageTest, ANewerStoreIsRefusedAndLeftAsItIs) {
  sqlite::Database(Store(kHarbor)).Execute("PRAGMA user_version=1000");
  ASSERT_TRUE(Start());
  const auto login = Login(kHarbor).result;
  EXPECT_EQ(login.code, biz::kEngineStorage);
  EXPECT_NE(login.text.find(L"newer program"), std::wstring::npos);
  EXPECT_EQ(SetAside(Store(kHarbor)), 0U);
  EXPECT_TRUE(Login(kMariner).result.ok());
}

// From here to its end no file grows.
class FullDisk {
 public:
  FullDisk() {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit full = before_;
    full.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &full);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

TEST_F(DamageTest, AFullDiskIsNamedAsWhatItIs) {
  ASSERT_TRUE(Start());
  ASSERT_TRUE(Login(kHarbor).result.ok());
  Witness harbor(kHarbor);
  const auto chat = Chat(kHarbor, kMariner);
  {
    FullDisk full;
    EXPECT_EQ(SendItems(chat, {Text(L"too much")}), biz::kEngineStorage);
    std::wstring token;
    EXPECT_EQ(server_->IssueToken(kHarbor, &token).code, biz::kEngineStorage);
    EXPECT_EQ(server_->IssueToken(User(L"nobody"), &token).code, biz::kEngineUnknownUser);
    EXPECT_EQ(Login(kMariner).result.code, biz::kEngineStorage);
  }
  EXPECT_EQ(SendItems(chat, {Text(L"there is room again")}), 0);
  ASSERT_TRUE(harbor.AwaitStatuses(1));
  EXPECT_EQ(Bodies(harbor.sent), std::vector<std::wstring>{L"there is room again"})
      << "what was refused is not announced";
  EXPECT_EQ(Told(), 0U) << "nothing is damaged by it";
}

TEST_F(DamageTest, TheFolderIsChecked) {
  const auto not_whole = [this] {
    std::vector<std::string> names;
    for (const auto& finding : CheckFolder(account::FromPath(folder_->path()))) {
      if (finding.state == FolderFinding::State::kDamaged) names.push_back(finding.name);
    }
    return names;
  };
  const auto name_of = [this](const fs::path& store) {
    return store.lexically_relative(folder_->path()).generic_string();
  };
  EXPECT_EQ(CheckFolder(account::FromPath(folder_->path())).size(), 4U);
  EXPECT_TRUE(not_whole().empty());
  SpoilIndex(ServerStore(), "messages_of");
  fs::remove(Store(kMariner));
  EXPECT_EQ(not_whole(), (std::vector{name_of(ServerStore()), name_of(Store(kMariner))}));
  Again(true);
  fs::remove(Wal(Store(kHarbor)));
  EXPECT_EQ(not_whole(), std::vector{name_of(Store(kHarbor))});
}

}  // namespace
}  // namespace imsdk::test
