#include "bench/million_messages.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "account/files/data_folder.h"
#include "account/sending/message_ids.h"
#include "account/store/message_store.h"
#include "imsdk/embedded_server.h"

namespace imsdk::bench {
namespace {

// A folder with another text in its stamp was made by another maker and is made anew.
constexpr const char* kMaker = "2";
constexpr std::int64_t kInOneCommit = 20'000;

// The standard's distributions differ between libraries; the generator itself does not.
class Dice {
 public:
  std::uint64_t Below(std::uint64_t limit) { return generator_() % limit; }
  // Small numbers far more often than great ones, as words of a language.
  std::size_t Skewed(std::size_t limit) {
    const double part = static_cast<double>(Below(1 << 30)) / (1 << 30);
    return static_cast<std::size_t>(std::pow(part, 4) * static_cast<double>(limit));
  }

 private:
  std::mt19937_64 generator_{20'240'601};
};

std::vector<std::wstring> LatinWords() {
  const wchar_t* const parts[] = {L"ba", L"ke", L"li",      L"mo",  L"nu", L"ra", L"se", L"to",
                                  L"vi", L"wu", L"\u00E9n", L"ast", L"or", L"in", L"el", L"sch"};
  std::vector<std::wstring> words;
  for (const auto* first : parts) {
    for (const auto* second : parts) {
      for (const auto* third : parts) words.push_back(std::wstring(first) + second + third);
    }
  }
  return words;
}

std::wstring Unparted(Dice& dice, wchar_t first, std::size_t letters) {
  std::wstring text;
  for (std::size_t i = 5 + dice.Below(20); i > 0; --i) {
    text += static_cast<wchar_t>(first + static_cast<wchar_t>(dice.Skewed(letters)));
  }
  return text;
}

std::wstring Words(Dice& dice, const std::vector<std::wstring>& words) {
  std::wstring text;
  for (std::size_t i = 3 + dice.Below(12); i > 0; --i) {
    text += words[dice.Skewed(words.size())];
    text += L' ';
  }
  return text;
}

std::wstring Shifted(std::wstring text, wchar_t first, std::uint64_t letters) {
  for (wchar_t& letter : text) {
    if (letter != L' ') letter = static_cast<wchar_t>(first + (letter * 7) % letters);
  }
  return text;
}

std::wstring Body(Dice& dice, const std::vector<std::wstring>& words, std::int64_t number) {
  std::wstring text;
  switch (dice.Below(10)) {
    case 0:
    case 1:
      text = Unparted(dice, 0x4E00, 3000);
      break;
    case 2:
      text = Unparted(dice, 0x3042, 80);
      break;
    case 3:
      text = Shifted(Words(dice, words), 0x0430, 32);
      break;
    case 4:
      text = Shifted(Words(dice, words), 0x0627, 20);
      break;
    case 5:
      text = Words(dice, words) + L"\U0001F6A2\U0001F44D\U0001F3FD";
      break;
    default:
      text = Words(dice, words);
  }
  if (number % 10 == 3) text += L" " + kCommonWord;
  if (number % 1000 < 2) text += L" " + kRareWord;
  return text;
}

biz::IMMessage Message(Dice& dice, const std::vector<std::wstring>& words, std::int64_t number) {
  biz::IMMessage message;
  message.msgtime = kFirstTime + number * kPause;
  message.msgid = message.msgtime << (account::kCounterBits + account::kNodeBits);
  message.svrtime = message.msgtime + 40;
  const std::uint64_t peer = dice.Below(40);
  message.cid = biz::IMConversationID(
      peer < 20 ? kLargestPeer : biz::IMUserID{L"cnbazaro", L"peer " + std::to_wstring(peer)});
  const bool outgoing = dice.Below(2) == 0;
  message.fromid = outgoing ? kOwner : message.cid.user;
  message.toid = outgoing ? message.cid.user : kOwner;
  message.msgstatus = outgoing ? biz::kMsgSent : biz::kMsgReceived;
  message.readflag = biz::kMsgRead;
  message.msgbody = Body(dice, words, number);
  return message;
}

void FillStore(const account::DataFolder& folder) {
  account::MessageStore store({folder.MessageStore(kOwner), folder.MessageStoreRecord(kOwner)},
                              kOwner, std::make_shared<account::OpenStores>());
  Dice dice;
  const auto words = LatinWords();
  for (std::int64_t number = 0; number < kMessages;) {
    sqlite::Transaction transaction(store.database());
    do {
      store.AddLive({Message(dice, words, number)});
    } while (++number % kInOneCommit != 0);
    transaction.Commit();
  }
  for (const auto& stored : store.Conversations()) {
    store.parts().SetWhole(store.conversations().Find(stored.cid));
  }
}

[[noreturn]] void Fail(const std::string& why) {
  std::fprintf(stderr, "the store for the benchmarks cannot be made: %s\n", why.c_str());
  std::exit(1);
}

}  // namespace

void MakeMillionMessages(const std::filesystem::path& folder) {
  const auto stamp = folder / "made-by";
  std::ifstream made(stamp);
  if (std::string(std::istreambuf_iterator<char>(made), {}) == kMaker) return;
  std::fprintf(stderr, "making a store of %lld messages\n", static_cast<long long>(kMessages));
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  std::string error;
  const auto server = StartEmbeddedServer({account::FromPath(folder)}, &error);
  if (!server || !server->CreateAccount(kOwner, kOwnerPassword)) Fail(error);
  const account::DataFolder data(folder);
  try {
    std::filesystem::create_directories(data.AccountFolder(kOwner));
    FillStore(data);
  } catch (const std::exception& failure) {
    Fail(failure.what());
  }
  std::ofstream(stamp) << kMaker;
}

}  // namespace imsdk::bench
