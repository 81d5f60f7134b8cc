#include "imsdk/demo_set.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "account/conversations/link_message.h"
#include "account/files/data_folder.h"
#include "account/files/file_box.h"
#include "account/files/file_tokens.h"
#include "account/sending/message_ids.h"
#include "account/store/message_store.h"
#include "demo/demo_media.h"
#include "demo/demo_script.h"
#include "embedded/embedded_server.h"
#include "kexbase/md5.h"
#include "kexbase/message_body.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"
#include "kexnet/escape.h"

namespace imsdk {

namespace demo {

namespace {

constexpr biz::IMTribeID kTribe{10001};

biz::IMUserID User(const wchar_t* nick) { return {L"cnbazaro", nick}; }

struct Past {
  embedded::Seeding seeding;
  std::set<std::int64_t> unread;  // msgids
};

bool IsFile(const ScriptLine& line) { return line.kind != biz::kMsgText; }

std::string ContentOf(const ScriptLine& line) {
  switch (line.kind) {
    case biz::kMsgPicture:
      return HarborPicture(line.unread);  // the light is on in the newest one
    case biz::kMsgAudio:
      return ShipsBell();
    default:
      return FileText();
  }
}

// Puts the line's file among those of its sender and into the message.
void AddFile(const ScriptLine& line, const account::DataFolder& folder, embedded::Seeding& past,
             link::Message& message) {
  const std::string content = ContentOf(line);
  const base::FilePath title(line.text);
  account::KeptFile kept;
  kept.md5 = base::UTF8ToWide(base::MD5String(content));
  kept.type = base::UTF8ToWide(account::TypeOfName(title));
  kept.path = kept.md5 + L'.' + kept.type;
  message.body = line.kind == biz::kMsgPicture ? base::PictureToken(kept.path, kept.md5, kept.type)
                                               : base::FileToken(title.value(), kept.path);
  message.files.push_back({base::WideToUTF8(kept.path), {}, content.size()});
  const auto place = folder.FileOf(message.from, message.files[0].name);
  std::filesystem::create_directories(place.parent_path());
  std::ofstream out(place, std::ios::binary);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!out.flush()) throw std::runtime_error("the demo files could not be kept");
  past.files[message.files[0].name] = place;
}

embedded::PastMessage MakeMessage(const ScriptLine& line, const account::DataFolder& folder,
                                  std::int64_t now, embedded::Seeding& past) {
  embedded::PastMessage made{{}, line.sender};
  link::Message& message = made.message;
  message.from = User(line.from);
  message.cid =
      *line.to == L'\0' ? biz::IMConversationID(kTribe) : biz::IMConversationID(User(line.to));
  message.msgtime = now - line.minutes_ago * 60'000;
  message.svrtime = message.msgtime + 40;
  const auto number = static_cast<std::int64_t>(past.messages.size());
  message.msgid = ((message.msgtime << account::kCounterBits) + number) << account::kNodeBits;
  message.msgtype = line.kind;
  if (IsFile(line)) {
    AddFile(line, folder, past, message);
  } else {
    message.body = line.text;
  }
  return made;
}

Past MakePast(const account::DataFolder& folder) {
  Past past;
  embedded::Seeding& seeding = past.seeding;
  seeding.users = {User(L"harbor"), User(L"lighthouse"), User(L"mariner"), User(L"navigator")};
  seeding.password = L"demo";
  const auto& users = seeding.users;
  seeding.profiles = {{users[0], {L"Harbor Office", {}}},
                      {users[1], {L"Lighthouse Keeper", {}}},
                      {users[2], {L"Mariner Max", {}}}};
  seeding.contacts = {{users[0], L"Crew", {users[1], users[2]}}, {users[0], {}, {users[3]}},
                      {users[1], L"Ashore", {users[0]}},         {users[1], L"Afloat", {users[2]}},
                      {users[2], {}, {users[0], users[1]}},      {users[3], {}, {users[0]}}};
  seeding.tribes = {{kTribe, TribeName(), users[0], {users[1], users[2]}}};
  // The server takes them in the order of time.
  const auto script = Script();
  std::vector<ScriptLine> lines(script.begin(), script.end());
  std::stable_sort(lines.begin(), lines.end(), [](const ScriptLine& a, const ScriptLine& b) {
    return a.minutes_ago > b.minutes_ago;
  });
  const std::int64_t now = base::Time::Now().ToMilliseconds();
  for (const ScriptLine& line : lines) {
    seeding.messages.push_back(MakeMessage(line, folder, now, seeding));
    if (line.unread) past.unread.insert(seeding.messages.back().message.msgid);
  }
  return past;
}

// Whether `self` has the message, which is then put as it sees it.
bool SeenBy(const biz::IMUserID& self, const Past& past, biz::IMCIDType sender,
            link::Message& message) {
  if (message.cid.is_tribe()) {
    const NewTribe& tribe = past.seeding.tribes[0];
    return self == tribe.owner ||
           std::find(tribe.members.begin(), tribe.members.end(), self) != tribe.members.end();
  }
  if (message.from == self) return true;
  if (message.cid.user != self) return false;
  message.cid = biz::IMConversationID(message.from, sender);
  return true;
}

// The messages of one account as its own store has them. There is nothing to fetch: the server has
// no more than this.
void FillStore(const account::DataFolder& folder, const biz::IMUserID& self, const Past& past,
               const std::vector<link::Message>& messages) {
  std::filesystem::create_directories(folder.AccountFolder(self));
  account::MessageStore store({folder.MessageStore(self), folder.MessageStoreRecord(self)}, self,
                              std::make_shared<account::OpenStores>());
  const std::wstring files =
      base::UTF8ToWide(net::EscapeQueryParamValue(folder.FilesFolder(self) + '/', false));
  sqlite::Transaction transaction(store.database());
  for (std::size_t i = 0; i < messages.size(); ++i) {
    link::Message from = messages[i];
    if (!SeenBy(self, past, past.seeding.messages[i].kind, from)) continue;
    if (from.cid.is_tribe()) store.conversations().SetMember(from.cid, true);
    const bool own = from.from == self;
    account::Incoming incoming{account::FromLink(from, self), from.place, from.previous};
    biz::IMMessage& message = incoming.message;
    std::vector<std::string> names;
    for (const link::File& file : from.files) {
      names.push_back(file.name);
      store.files().Put({file, own});
    }
    message.msgbody = account::WithFolder(message.msgbody, files, names);
    if (!own && !past.unread.contains(message.msgid)) message.readflag = biz::kMsgRead;
    store.AddLive(incoming);
    const std::int64_t conversation = store.conversations().Find(message.cid);
    account::Part part = store.parts().Current(conversation);
    part.whole = true;
    store.parts().Save(conversation, part);
  }
  transaction.Commit();
}

// Whether there is a file at this place or anywhere below it. What cannot be read counts as one.
bool HoldsFiles(const std::filesystem::path& place) {
  std::error_code failure;
  const auto status = std::filesystem::status(place, failure);
  if (status.type() == std::filesystem::file_type::not_found) return false;
  if (!std::filesystem::is_directory(status)) return true;
  auto entries = std::filesystem::recursive_directory_iterator(place, failure);
  const auto end = std::filesystem::end(entries);
  while (!failure && entries != end) {
    if (!entries->is_directory(failure)) return true;
    entries.increment(failure);
  }
  return static_cast<bool>(failure);
}

bool HoldsAny(const std::filesystem::path& root, std::initializer_list<const char*> parts) {
  return std::any_of(parts.begin(), parts.end(),
                     [&](const char* part) { return HoldsFiles(root / part); });
}

void Fill(const account::DataFolder& folder, embedded::Server& server) {
  // Nothing is ever removed to make room for the demo set.
  if (HoldsAny(folder.root(), {"accounts", account::kFilesFolder, "client"}) || server.HasLost()) {
    throw std::runtime_error("the demo set is made only in a folder that holds no messages");
  }
  const Past past = MakePast(folder);
  const auto& users = past.seeding.users;
  const bool filled = server.Seed(past.seeding, [&](const std::vector<link::Message>& messages) {
    for (const biz::IMUserID& user : users) FillStore(folder, user, past, messages);
  });
  if (!filled) throw std::runtime_error("the demo accounts could not be made");
}

}  // namespace

}  // namespace demo

bool HoldsMessages(const base::FilePath& data) {
  return demo::HoldsAny(account::ToPath(data), {"server", "accounts", account::kFilesFolder,
                                                "client", account::kRecordsFolder});
}

bool FillDemoSet(const base::FilePath& data, EmbeddedServer& server, std::string* error) {
  try {
    const account::DataFolder folder(std::filesystem::absolute(account::ToPath(data)));
    demo::Fill(folder, dynamic_cast<embedded::Server&>(server));
    return true;
  } catch (const std::exception& failure) {
    *error = failure.what();
    return false;
  }
}

}  // namespace imsdk
