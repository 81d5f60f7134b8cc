// Identifiers and results of the messaging engine.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <string>

#include "imsdk/biz/bounds.h"
#include "kexcore/string_t.h"

namespace imsdk::biz {

// A user: application key and nick, both compared exactly.
struct IMUserID {
  std::wstring appkey;
  std::wstring nick;

  bool empty() const { return appkey.empty() && nick.empty(); }
  // Whether both parts are there.
  bool valid() const { return !appkey.empty() && !nick.empty(); }
  friend bool operator==(const IMUserID&, const IMUserID&) = default;
  friend auto operator<=>(const IMUserID&, const IMUserID&) = default;

  static constexpr auto Bounds() {
    return Bounded(Letters("appkey", &IMUserID::appkey, kMaxNameLetters),
                   Letters("nick", &IMUserID::nick, kMaxNameLetters));
  }
};

// A tribe (group). 0 names none.
struct IMTribeID {
  std::int64_t id = 0;
  friend bool operator==(const IMTribeID&, const IMTribeID&) = default;
  friend auto operator<=>(const IMTribeID&, const IMTribeID&) = default;
};

// The engine's result: main code 0 is success. `text` explains a failure to a page's developer.
struct ResultCode {
  std::int32_t code = 0;
  std::int32_t subcode = 0;
  std::wstring text;

  bool ok() const { return code == 0; }
};

// Main codes of the engine. Component-model codes (kexcom/result.h) stand beside them.
enum EngineCode : std::int32_t {
  kEngineOk = 0,
  kEngineNotLoggedIn = -1,
  kEngineUnknownUser = -2,
  kEngineWrongPassword = -3,
  kEngineTokenExpired = -4,
  kEngineNoLink = -5,         // the server could not be reached
  kEngineTimeout = -6,        // the server did not answer in time
  kEngineTooLarge = -7,       // the message or request is over the engine's size limit
  kEngineEmpty = -8,          // nothing to send
  kEngineNotFound = -9,       // no such message or conversation
  kEngineStorage = -10,       // the local or the server's store failed
  kEngineRefused = -11,       // the server refuses: not allowed now
  kEngineBusy = -12,          // too many operations of this account are open
  kEngineUnsupported = -13,   // the account's server cannot do this
  kEnginePositionLost = -14,  // the server does not know any more how far the account had read
  // A store was found damaged, missing or behind its own record. As the code of a failure: nothing
  // was done; what can be read is read when the store is opened next. As the subcode of a login
  // that succeeded: what could be read was kept, the text says what was set aside, and what the
  // server has comes back by itself.
  kEngineDamaged = -15,
};

}  // namespace imsdk::biz

template <>
struct std::hash<imsdk::biz::IMUserID> {
  std::size_t operator()(const imsdk::biz::IMUserID& id) const noexcept {
    const std::hash<std::wstring> text;
    return text(id.nick) * 31 + text(id.appkey);
  }
};
