// How a row of a method table reaches what serves it. What every method does is written here once:
// trace the input, read the request, find what serves it, and answer in the envelope.
//
// A method is served in one of three ways; the types of request and answer follow from it.
//
//   An operation of an engine's contract, where there is no more to do than to ask it:
//     void IIMConversation::RoamMsg(const IMRoamRequest& request, IMCallback<IMRoamed> done);
//   A member function of the module:
//     void GetDynamicMsg(const DynamicMsgRequest& request, Call<DynamicMsgAnswer> call);
//   One that works on something of the engine's:
//     void SendNormalChatMsg(const In<SendMsgRequest>& request, Chat chat, Call<> call);
//
// What an operation belongs to, and a member function works on, is found by the module:
// `biz::ResultCode Find(RefPtr<Target>*) const` for a service, and for a conversation
// `biz::ResultCode Find(const biz::IMConversationID&, RefPtr<biz::IIMConversation>*,
// const CallBase&) const`. What it refuses is answered with its code and text.
#pragma once

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>
#include <utility>

#include "kexcom/result.h"
#include "source/bridge/bridgebase.h"
#include "source/bridge/jsparams/form.h"

namespace imsdk::bridge {

// One call in the hands of what serves it. Copyable; it is answered through exactly one of the
// copies, on any thread.
class CallBase {
 public:
  CallBase(AnswerCallback answer, const MethodRow& row) : answer_(std::move(answer)), row_(&row) {}

  // The answer's envelope alone.
  void Finish(const biz::ResultCode& result) const { answer_(result.code, AnswerText(result)); }
  void Fail(std::int32_t code, std::wstring text) const { Finish({code, 0, std::move(text)}); }
  void Invalid() const { Fail(E_INVALIDARG, row_->invalid); }

  // The outcome of a send: the engine's status, negative when it refused. A positive one is a
  // success too, so the call has not failed.
  void FinishSend(std::int32_t status) const {
    const biz::ResultCode result{status, 0, status < 0 ? L"failed" : L"success"};
    answer_(std::min(status, 0), AnswerText(result));
  }

  const ns_log::TraceSite& site() const { return row_->site; }

 protected:
  AnswerCallback answer_;

 private:
  const MethodRow* row_;  // rows are static
};

template <class Answer = biz::IMNothing>
class Call : public CallBase {
 public:
  using Writer = std::wstring (*)(const biz::ResultCode&, const Answer&);

  Call(AnswerCallback answer, const MethodRow& row, Writer writer)
      : CallBase(std::move(answer), row), writer_(writer) {}

  using CallBase::Finish;
  // The envelope and the answer's keys.
  void Finish(const biz::ResultCode& result, const Answer& answer) const {
    answer_(result.code, writer_(result, answer));
  }
  void Succeed(const Answer& answer) const { Finish({}, answer); }

  // A call is the engine's callback of the operation that it asked for.
  void operator()(const biz::ResultCode& result, const Answer& answer = {}) const {
    Finish(result, answer);
  }

 private:
  Writer writer_;
};

// The types of what serves a method. `Target` is void for a member function that needs none.
template <class R, class T, class A>
struct ServedTypes {
  using Request = R;
  using Target = T;
  using Answer = A;
};
template <class T, class R>
using RequestTo = std::conditional_t<std::is_same_v<T, biz::IIMConversation>, In<R>, R>;

template <class M, class R, class A>
ServedTypes<R, void, A> TypesOf(void (M::*)(const R&, Call<A>));
template <class M, class R, class T, class A>
ServedTypes<R, T, A> TypesOf(void (M::*)(const R&, RefPtr<T>, Call<A>));
template <class T, class R, class... A>
ServedTypes<RequestTo<T, R>, T, std::tuple_element_t<0, std::tuple<A..., biz::IMNothing>>> TypesOf(
    void (T::*)(const R&, std::function<void(const biz::ResultCode&, const A&...)>));

template <class Module, auto kServes>
void RunRow(CBridgeBase& base, const MethodRow& row, const std::wstring& jsonStr,
            AnswerCallback answer) {
  using Types = decltype(TypesOf(kServes));
  using Form = typename Module::Form;
  using Target = typename Types::Target;
  using Answer = typename Types::Answer;
  auto& module = static_cast<Module&>(base);
  CBridgeBase::TraceInput(row, jsonStr);

  typename Types::Request request;
  if constexpr (!std::is_same_v<decltype(request), biz::IMNothing>) {
    const auto json = CBridgeBase::ReadRequest(row, jsonStr, answer);
    if (!json) return;
    ReadValue<Form>(*json, &request);
  }

  Call<Answer> call(std::move(answer), row, &AnswerText<Form, Answer>);
  if constexpr (std::is_void_v<Target>) {
    (module.*kServes)(request, std::move(call));
  } else {
    RefPtr<Target> target;
    biz::ResultCode found;
    if constexpr (std::is_same_v<Target, biz::IIMConversation>) {
      found = module.Find(request.cid, &target, call);
    } else {
      found = module.Find(&target);
    }
    if (!found.ok()) return call.Finish(found);
    if constexpr (std::is_invocable_v<decltype(kServes), Module&, decltype(request), RefPtr<Target>,
                                      Call<Answer>>) {
      (module.*kServes)(request, std::move(target), std::move(call));
    } else {
      (target.get()->*kServes)(request, std::move(call));
    }
  }
}

// A name as a template's argument.
template <std::size_t kSize>
struct Name {
  consteval Name(const char (&name)[kSize]) { std::copy_n(name, kSize, text); }
  constexpr std::string_view view() const { return {text, kSize - 1}; }
  char text[kSize];
};

// "Module::Handler", as traces name it.
template <Name kModule, Name kHandler>
inline constexpr auto kTraceName = [] {
  std::array<char, kModule.view().size() + kHandler.view().size() + 3> name{};
  const std::string_view parts[] = {kModule.view(), "::", kHandler.view()};
  auto out = name.begin();
  for (const std::string_view part : parts) out = std::copy(part.begin(), part.end(), out);
  return name;
}();
template <Name kName>
inline constexpr auto kWideName = [] {
  std::array<wchar_t, kName.view().size()> name{};
  std::copy_n(kName.text, name.size(), name.begin());
  return name;
}();

// The row of `Module` for the method `kName`. Traces name it by `kHandler`, which pages do not see.
// A module says its `Form`, and as traces name them its class (`kName`) and source file
// (`kSource`).
template <class Module, Name kName, auto kServes, Name kHandler = kName>
constexpr MethodRow Row(const char* sentence) {
  using Types = decltype(TypesOf(kServes));
  using Form = typename Module::Form;
  return {kName.view(),
          {kWideName<kName>.data(), kWideName<kName>.size()},
          sentence,
          &TypeInfoOf<Form, typename Types::Request>::kInfo,
          &TypeInfoOf<Form, typename Types::Answer>::kInfo,
          {kTraceName<Module::kName, kHandler>.data(), Module::kSource},
          Form::kInvalid,
          &RunRow<Module, kServes>};
}

}  // namespace imsdk::bridge
