#include "demo/demo_set.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "account/body_composer.h"
#include "account/link_message.h"
#include "account/message_ids.h"
#include "account/message_store.h"
#include "demo/demo_media.h"
#include "demo/demo_script.h"
#include "kexbase/time.h"

namespace imsdk::demo {

namespace {

biz::IMUserID User(const wchar_t* nick) { return {L"cnbazaro", nick}; }

std::string ContentOf(const ScriptLine& line) {
  switch (line.kind) {
    case biz::kMsgPicture:
      return HarborPicture(line.unread);  // the light is on in the newest one
    case biz::kMsgAudio:
      return ShipsBell();
    case biz::kMsgFile:
      return FileText();
    default:
      return {};
  }
}

// The line as a message that was delivered, its file kept among those of the sender.
link::Message MakeMessage(const ScriptLine& line, const account::DataFolder& folder,
                          std::int64_t now, std::int64_t number) {
  link::Message message;
  message.from = User(line.from);
  message.to = User(line.to);
  message.channel = line.channel;
  message.msgtime = now - line.minutes_ago * 60'000;
  message.svrtime = message.msgtime + 40;
  message.msgid = ((message.msgtime << account::kCounterBits) + number) << account::kNodeBits;

  biz::IMBodyItem item;
  item.type = line.kind;
  if (line.kind == biz::kMsgText) {
    item.value = line.text;
  } else {
    item.filepath = base::FilePath(line.text);
    item.filecontent = ContentOf(line);
  }
  const account::FileBox files(folder.root(), folder.FilesFolder(message.from));
  account::ComposedBody composed = account::ComposeBody({item}, files);
  if (!composed.result.ok()) throw std::runtime_error("the demo files could not be kept");
  message.msgtype = composed.msgtype;
  message.body = std::move(composed.body);
  return message;
}

// The messages of one account as its own store has them.
void FillStore(const account::DataFolder& folder, const biz::IMUserID& self,
               const std::vector<link::Message>& messages) {
  std::filesystem::create_directories(folder.AccountFolder(self));
  account::MessageStore store(folder.MessageStore(self), self,
                              std::make_shared<account::OpenStores>());
  sqlite::Transaction transaction(store.database());
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const link::Message& from = messages[i];
    if (from.from != self && from.to != self) continue;
    biz::IMMessage message = account::FromLink(from, self);
    const account::ChatKey key(message.cid, account::KindOf(from.channel));
    if (from.from == self) {
      store.AddOutgoing(message, true);
    } else {
      if (!Script()[i].unread) message.readflag = biz::kMsgRead;
      store.AddIncoming(message, key.kind);
    }
    // There is nothing to roam: the server has no more than this.
    store.conversations().SetComplete(key, store.conversations().Complete(key).from, true);
  }
  transaction.Commit();
}

}  // namespace

void Fill(const account::DataFolder& folder, embedded::EmbeddedServer& server) {
  const std::vector<biz::IMUserID> users = {User(L"harbor"), User(L"lighthouse"), User(L"mariner"),
                                            User(L"navigator")};
  // A filling that was interrupted left no accounts on the server, but may have left these.
  for (const biz::IMUserID& user : users) {
    std::filesystem::remove_all(folder.AccountFolder(user));
    std::filesystem::remove_all(folder.root() / folder.FilesFolder(user));
  }
  const std::int64_t now = base::Time::Now().ToMilliseconds();
  std::vector<link::Message> messages;
  for (const ScriptLine& line : Script()) {
    messages.push_back(MakeMessage(line, folder, now, static_cast<std::int64_t>(messages.size())));
  }
  for (const biz::IMUserID& user : users) FillStore(folder, user, messages);
  if (!server.Seed(users, L"demo", messages)) {
    throw std::runtime_error("the demo accounts could not be made");
  }
}

}  // namespace imsdk::demo
