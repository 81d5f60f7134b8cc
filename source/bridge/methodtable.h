// How a method table row reaches its handler. What every handler does is written here once: trace
// the input, read the request, find what the handler works on, and answer in the envelope.
//
// A handler is a member function of its module, in one of two forms:
//
//   void SetRoamStatus(const RoamRequest& request, Call<NoKeys> call);
//   void GetNewMsg(const HisMsgRequest& request, RefPtr<Conversation> target, Call<Page> call);
//
// The second needs `biz::ResultCode Find(const Request&, Target*, const Call<Answer>&)` in the
// module; what Find refuses is answered with its code and text.
#pragma once

#include <algorithm>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kexcom/result.h"
#include "source/bridge/bridgebase.h"
#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

// One call in the hands of its handler. Copyable; a handler answers through exactly one of the
// copies. The answer may be given on any thread.
class CallBase {
 public:
  CallBase(AnswerCallback answer, const MethodRow& row) : answer_(std::move(answer)), row_(&row) {}

  // The answer's envelope alone.
  void Finish(const biz::ResultCode& result) const {
    answer_(result.code, AnswerText(result, NoKeys{}));
  }
  void Fail(std::int32_t code, std::wstring text) const { Finish({code, 0, std::move(text)}); }

  // The outcome of a send: the engine's status, negative when it refused. A positive one is a
  // success too, so the call has not failed.
  void FinishSend(std::int32_t status) const {
    const biz::ResultCode result{status, 0, status < 0 ? L"failed" : L"success"};
    answer_(std::min(status, 0), AnswerText(result, NoKeys{}));
  }

  const ns_log::TraceSite& site() const { return row_->site; }

 protected:
  AnswerCallback answer_;

 private:
  const MethodRow* row_;  // rows are static
};

template <class Answer>
class Call : public CallBase {
 public:
  using CallBase::CallBase;
  using CallBase::Finish;

  // The envelope and the answer's keys.
  void Finish(const biz::ResultCode& result, const Answer& answer) const {
    answer_(result.code, AnswerText(result, answer));
  }
  void Succeed(const Answer& answer) const { Finish({}, answer); }

  // A call is the engine's callback of the operation that it asked for.
  void operator()(const biz::ResultCode& result, const Answer& answer) const {
    Finish(result, answer);
  }
  // For an answer of one key, the engine's value under it.
  template <class Value>
  void operator()(const biz::ResultCode& result, Value&& value) const
      requires(!std::is_same_v<std::decay_t<Value>, Answer>) {
    Finish(result, Answer{std::forward<Value>(value)});
  }
  void operator()(const biz::ResultCode& result) const requires std::is_same_v<Answer, NoKeys> {
    Finish(result);
  }
};

// The types in a handler's signature. `Target` is void for a handler without one.
template <class M, class R, class T, class A>
struct HandlerTypes {
  using Module = M;
  using Request = R;
  using Target = T;
  using Answer = A;
};
template <class M, class R, class A>
HandlerTypes<M, R, void, A> TypesOf(void (M::*)(const R&, Call<A>));
template <class M, class R, class T, class A>
HandlerTypes<M, R, T, A> TypesOf(void (M::*)(const R&, T, Call<A>));

template <auto Handler>
void RunHandler(CBridgeBase& base, const MethodRow& row, const std::wstring& jsonStr,
                AnswerCallback answer) {
  using Types = decltype(TypesOf(Handler));
  auto& module = static_cast<typename Types::Module&>(base);
  CBridgeBase::TraceInput(row, jsonStr);

  typename Types::Request request;
  if constexpr (!std::is_same_v<typename Types::Request, NoKeys>) {
    const auto json = CBridgeBase::ReadRequest(row, jsonStr, answer);
    if (!json) return;
    ReadValue(*json, &request);
  }

  Call<typename Types::Answer> call(std::move(answer), row);
  if constexpr (std::is_void_v<typename Types::Target>) {
    (module.*Handler)(request, std::move(call));
  } else {
    typename Types::Target target;
    const biz::ResultCode found = module.Find(request, &target, call);
    if (!found.ok()) return call.Finish(found);
    (module.*Handler)(request, std::move(target), std::move(call));
  }
}

}  // namespace imsdk::bridge

// A row of the table of `Module`, whose source file is `kSource`: the method's name is the
// handler's.
#define IM_METHOD(Module, Method)                                                          \
  ::imsdk::bridge::MethodRow {                                                             \
#Method, L## #Method, {#Module "::" #Method, kSource }, &RunHandler < &Module::Method> \
  }
