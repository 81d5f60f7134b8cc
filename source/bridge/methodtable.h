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
// `biz::ResultCode Find(const biz::IMConversationID&, RefPtr<biz::IIMConversation>*) const`. What
// it refuses is answered with its code and text, and traced by the text.
#pragma once

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>
#include <utility>

#include "source/bridge/bridgebase.h"
#include "source/bridge/call.h"
#include "source/bridge/jsparams/form.h"

namespace imsdk::bridge {

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

  Call<Answer> call(std::move(answer), row, &AnswerText<Form, Answer>);
  typename Types::Request request;
  if constexpr (!std::is_same_v<decltype(request), biz::IMNothing>) {
    const auto json = CBridgeBase::ReadRequest(row, jsonStr);
    if (!json) return call.Unreadable(jsonStr);
    ReadValue<Form>(*json, &request);
  }
  if constexpr (std::is_void_v<Target>) {
    (module.*kServes)(request, std::move(call));
  } else {
    RefPtr<Target> target;
    biz::ResultCode found;
    if constexpr (std::is_same_v<Target, biz::IIMConversation>) {
      found = module.Find(request.cid, &target);
    } else {
      found = module.Find(&target);
    }
    if (!found.ok()) return call.Refuse(found);
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
  std::array<wchar_t, kName.view().size() + 1> name{};
  std::copy_n(kName.text, name.size(), name.begin());
  return name;
}();

// The row of `Module` for the method `kName`. Traces name it by `kHandler`, which pages do not see.
// A module says its `Form` and its class as traces name it (`kName`); `texts` are those of the row
// alone.
template <class Module, Name kName, auto kServes, Name kHandler = kName>
constexpr MethodRow Row(const char* sentence, const RowTexts& texts = {}) {
  using Types = decltype(TypesOf(kServes));
  using Form = typename Module::Form;
  return {kName.view(),
          sentence,
          &TypeInfoOf<Form, typename Types::Request>::kInfo,
          &TypeInfoOf<Form, typename Types::Answer>::kInfo,
          {kTraceName<Module::kName, kHandler>.data()},
          texts.Or(Module::kTexts).Or(CBridgeBase::kTexts).Or({.input = kWideName<kName>.data()}),
          Module::kTakesSecrets,
          &RunRow<Module, kServes>};
}

// A row whose requests have a secret under a key that is none elsewhere.
constexpr MethodRow Secret(const char* key, MethodRow row) {
  row.takes_secrets = true;
  row.secret_key = key;
  return row;
}

// A row that modules share, with texts of its own in one of them.
constexpr MethodRow With(const RowTexts& texts, MethodRow row) {
  row.texts = texts.Or(row.texts);
  return row;
}

}  // namespace imsdk::bridge
