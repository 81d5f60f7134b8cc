// One call that the host serves itself: its request and its answer.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "bridge_library.h"
#include "client/host_calls.h"
#include "imsdk/biz/account.h"
#include "imsdk/biz/callback.h"
#include "kexbase/values.h"

namespace imsdk::host {

// The one answer of a call, also when the engine drops its callback.
class OneAnswer {
 public:
  explicit OneAnswer(HostCalls::Done done) : done_(std::move(done)) {}
  ~OneAnswer();
  OneAnswer(const OneAnswer&) = delete;
  OneAnswer& operator=(const OneAnswer&) = delete;

  void Give(const biz::ResultCode& result, base::DictionaryValue more = {});

 private:
  const HostCalls::Done done_;
  std::atomic<bool> given_{false};
};

struct HostCall {
  const BridgeLibrary& library;
  std::string json;
  base::DictionaryValue plain;
  RefPtr<biz::IIMAccount> account;
  std::shared_ptr<OneAnswer> answer;

  // What of the request is a record of the core.
  template <class R>
  R Core() const {
    bridge::CoreRecord record = R{};
    library.ReadCore(json, &record);
    return std::get<R>(std::move(record));
  }
  std::wstring Text(std::string_view key) const { return TextIn(plain, key); }
  // A 64-bit identifier, as decimal text; 0 for none.
  std::int64_t Decimal(std::string_view key) const;
  std::int64_t Number(std::string_view key, std::int64_t missing) const;
  // A user under the key "userid".
  biz::IMUserID User() const;
  // Answers with the outcome alone.
  biz::IMCallback<> Finish() const {
    return [answer = answer](const biz::ResultCode& result) { answer->Give(result); };
  }
  // Answers with what `make(const Of&)` makes of the engine's answer.
  template <class Of, class Make>
  biz::IMCallback<Of> FinishWith(Make make) const {
    return [answer = answer, make](const biz::ResultCode& result, const Of& of) {
      answer->Give(result, result.ok() ? make(of) : base::DictionaryValue());
    };
  }

 private:
  static std::wstring TextIn(const base::DictionaryValue& object, std::string_view key);
};

// A name and what serves it.
struct HostCallRow {
  std::wstring_view name;
  void (*serve)(const HostCall& call);
};
using HostCallRows = std::span<const HostCallRow>;

// The groups. Static.
HostCallRows TribeCalls();
HostCallRows ContactCalls();

}  // namespace imsdk::host
