#include "embedded/embedded_server.h"

#include <chrono>
#include <future>
#include <stdexcept>
#include <utility>

#include "kexbase/callback.h"
#include "kexbase/strings.h"

namespace imsdk {

namespace embedded {

namespace {

// The server's folder, made when it is missing.
std::filesystem::path FolderIn(const base::FilePath& data) {
  const std::string utf8 = data.AsUTF8();
  const auto folder = std::filesystem::path(std::u8string(utf8.begin(), utf8.end())) / "server";
  std::filesystem::create_directories(folder);
  return folder;
}

// Whether accounts kept something in the folder: they were the server's.
bool AccountsKeptIn(const std::filesystem::path& data) {
  std::error_code missing;
  const auto entries = std::filesystem::directory_iterator(data / "accounts", missing);
  return entries != std::filesystem::directory_iterator();
}

// What accounts hold of the server. It may live longer, and then reaches nobody.
class Door final : public link::ServerLink {
 public:
  Door(std::weak_ptr<Gate> gate, std::shared_ptr<base::TaskRunner> runner)
      : gate_(std::move(gate)), runner_(std::move(runner)) {}

  void Login(const link::LoginRequest& request, link::LoginCallback done) override {
    if (const auto why = link::CheckBounds(request); !why.ok()) return done(why, {});
    runner_->PostTask(FROM_HERE,
                      base::BindWeak(gate_, [request, done = std::move(done)](Gate& gate) {
                        gate.Login(request, done);
                      }));
  }

  void Connect(const link::ConnectRequest& request, link::ConnectCallback done) override {
    if (const auto why = link::CheckBounds(request); !why.ok()) return done(why, {});
    runner_->PostTask(FROM_HERE,
                      base::BindWeak(gate_, [request, done = std::move(done)](Gate& gate) {
                        gate.Connect(request, done);
                      }));
  }

 private:
  const std::weak_ptr<Gate> gate_;
  const std::shared_ptr<base::TaskRunner> runner_;
};

}  // namespace

Server::Server(const EmbeddedServerOptions& options, const HashCost& hash_cost)
    : hash_cost_(hash_cost),
      folder_(FolderIn(options.data)),
      store_({folder_ / "server.db", folder_.parent_path() / "stores" / "server",
              AccountsKeptIn(folder_.parent_path())}),
      presence_(store_),
      desks_(store_, presence_, std::chrono::milliseconds(options.withdraw_limit_ms),
             {options.file_life_ms, options.largest_file, options.file_quota}),
      files_(folder_ / "files"),
      store_thread_("ImServerStore"),
      commit_([this]() -> sqlite::Database& { return store_.database(); },
              [this] { OnStore([this] { commit_.Flush(); }); }) {
  if (store_.loss() && options.report) options.report(store_.loss()->Text("the server's store"));
  if (!InitCredentials()) throw std::runtime_error("the system gives no random numbers");
  const auto here = store_thread_.task_runner();
  room_ = std::make_shared<MailRoom>(store_, desks_, presence_, commit_, files_, here);
  gate_ = std::make_shared<Gate>(store_, commit_, *room_, here, options.token_life_ms);
  if (!store_thread_.Start()) throw std::runtime_error("the system gives no threads");
}

Server::~Server() {
  gate_->Stop();
  files_.Stop();
  OnStore([this] {
    gate_->RefuseAll();
    room_->CloseAll();
    commit_.Flush();
  });
  store_thread_.Stop();
}

std::shared_ptr<link::ServerLink> Server::Link() {
  return std::make_shared<Door>(gate_, store_thread_.task_runner());
}

bool Server::HasAccounts() {
  bool any = false;
  // Whatever cannot be read is no empty server.
  return !DoOnStore([&] { any = store_.accounts().Any(); }).ok() || any;
}

bool Server::CreateAccount(const biz::IMUserID& user, const std::wstring& password) {
  if (!user.valid()) return false;
  const std::string hash = HashPassword(base::WideToUTF8(password), hash_cost_);
  bool added = false;
  return !hash.empty() && WriteOnStore([&] { added = store_.accounts().Add(user, hash); }).ok() &&
         added;
}

biz::ResultCode Server::IssueToken(const biz::IMUserID& user, std::wstring* token) {
  biz::ResultCode issued;
  const biz::ResultCode done = DoOnStore([&] { issued = gate_->IssueToken(user, token); });
  return done.ok() ? issued : done;
}

template <class Reply, class Request>
Reply Server::Administer(const Request& request, bool* good) {
  std::promise<Reply> answer;
  *good = false;
  const bool posted = OnStore([&] {
    room_->Administer(request, [&](const biz::ResultCode& result, const Reply& reply) {
      *good = result.ok();
      answer.set_value(reply);
    });
    commit_.Flush();
  });
  return posted ? answer.get_future().get() : Reply{};
}

bool Server::Publish(VirtualKind kind, const biz::IMUserID& from, const biz::IMUserID& to,
                     const std::wstring& body) {
  const bool known = kind == VirtualKind::kSystem || kind == VirtualKind::kSubscription;
  if (!known || !from.valid() || body.empty()) return false;
  const auto of = kind == VirtualKind::kSystem ? biz::kCIDSystem : biz::kCIDSubscribe;
  bool good = false;
  Administer<link::Nothing>(Publication{of, from, to, body}, &good);
  return good;
}

biz::IMTribeID Server::CreateTribe(const NewTribe& tribe) {
  bool good = false;
  return Administer<biz::IMTribeID>(tribe, &good);
}

bool Server::Change(const SetMember& change) {
  bool good = false;
  Administer<link::Nothing>(change, &good);
  return good;
}

bool Server::Change(const SetOpenHistory& change) {
  bool good = false;
  Administer<link::Nothing>(change, &good);
  return good;
}

bool Server::Seed(const Seeding& seeding,
                  const std::function<void(const std::vector<link::Message>&)>& before_commit) {
  std::vector<std::string> hashes;
  // No password fits an empty hash, so a crowd that logs in by tokens costs no hashing.
  hashes.resize(seeding.users.size());
  for (std::string& hash : hashes) {
    if (seeding.password.empty()) break;
    hash = HashPassword(base::WideToUTF8(seeding.password), hash_cost_);
    if (hash.empty()) return false;
  }
  for (const PastMessage& past : seeding.messages) {
    for (const link::File& file : past.message.files) {
      const auto from = seeding.files.find(file.name);
      if (from == seeding.files.end()) return false;
      std::promise<bool> kept;
      files_.Receive({from->second, file, {}}, 0,
                     [&](const biz::ResultCode& result) { kept.set_value(result.ok()); });
      if (!kept.get_future().get()) return false;
    }
  }
  return WriteOnStore([&] { before_commit(WritePast(store_, desks_, seeding, hashes)); }).ok();
}

bool Server::OnStore(const std::function<void()>& task) {
  return store_thread_.task_runner()->PostTask(FROM_HERE, task);
}

biz::ResultCode Server::DoOnStore(const std::function<void()>& work) {
  std::promise<biz::ResultCode> answer;
  const bool posted = OnStore([&] {
    commit_.Flush();
    answer.set_value(sqlite::Guarded(work));
  });
  return posted ? answer.get_future().get() : ServerStops();
}

biz::ResultCode Server::WriteOnStore(const std::function<void()>& work) {
  return DoOnStore([&] {
    sqlite::Transaction transaction(store_.database());
    work();
    transaction.Commit();
  });
}

}  // namespace embedded

std::unique_ptr<EmbeddedServer> StartEmbeddedServer(const EmbeddedServerOptions& options,
                                                    std::string* error) {
  try {
    return std::make_unique<embedded::Server>(options);
  } catch (const std::exception& failure) {
    *error = failure.what();
    return nullptr;
  }
}

}  // namespace imsdk
