// What can be asked for: by the kind of a conversation, and by what the account's server can do.
#pragma once

#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/user_id.h"
#include "link/server_link.h"

namespace imsdk::account {

inline biz::ResultCode NotLoggedIn() {
  return {biz::kEngineNotLoggedIn, 0, L"the account is not logged in"};
}

// What not every kind of conversation can do.
enum class Ability {
  kSend,        // messages go to somebody, and are taken back
  kRoam,        // the server keeps its history
  kReportRead,  // messages are reported read
  kType,        // the other side is told of typing
  kShield,      // automatic replies come
  kNote,        // the client adds notes
  kMention,     // messages mention members
};

// `kEngineRefused` when conversations of this kind cannot do it.
biz::ResultCode Allows(biz::IMCIDType kind, Ability ability);

template <class Operation>
inline constexpr bool kOfMentions = std::is_same_v<Operation, link::ReadMentions> ||
                                    std::is_same_v<Operation, link::CountMentionReaders> ||
                                    std::is_same_v<Operation, link::GetMentionReaders> ||
                                    std::is_same_v<Operation, link::GetContext>;

// `kEngineUnsupported` when a server cannot do it.
template <class Operation>
biz::ResultCode Missing(const link::Capabilities& server) {
  const auto unless = [](bool can, const wchar_t* text) {
    return can ? biz::ResultCode{} : biz::ResultCode{biz::kEngineUnsupported, 0, text};
  };
  if constexpr (std::is_same_v<Operation, link::Withdraw>) {
    return unless(server.withdrawal != link::Capabilities::Withdrawal::kNone,
                  L"the server takes no message back");
  } else if constexpr (std::is_same_v<Operation, link::ReportRead>) {
    return unless(server.receipts, L"the server passes no read reports on");
  } else if constexpr (std::is_same_v<Operation, link::SendTyping>) {
    return unless(server.typing, L"the server passes no typing state on");
  } else if constexpr (std::is_same_v<Operation, link::GetRoaming> ||
                       std::is_same_v<Operation, link::SetRoaming>) {
    return unless(server.roaming_switch, L"the server's history cannot be switched");
  } else if constexpr (kOfMentions<Operation>) {
    return unless(server.mentions, L"the server keeps no mentions");
  } else if constexpr (link::kOfContacts<Operation>) {
    return unless(server.contacts, L"the server keeps no contacts");
  } else if constexpr (link::kOfTribes<Operation>) {
    return unless(server.tribes, L"the server does not manage tribes");
  } else {
    return {};
  }
}

}  // namespace imsdk::account
