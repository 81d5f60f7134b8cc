// How operations of the engine are asked and answered.
#pragma once

#include <functional>

#include "imsdk/biz/user_id.h"

namespace imsdk::biz {

// The rule of all engine contracts: an operation takes one request record and one callback, so that
// its request and its answer are known from its type.
//
//   virtual void GetUnreadCount(const IMNothing& request, IMCallback<IMCount> done) = 0;
//   virtual void SetMsgRead(const IMNothing& request, IMCallback<> done) = 0;
//
// Operations return at once and never throw. A callback is called once, on an engine thread or
// before the operation returns, with the outcome and with an answer that is empty unless the
// outcome is good. An engine that stops calls what is open with `kEngineNotLoggedIn` or drops it
// uncalled. The request is the caller's and may end with the call; the answer lives during the
// callback.
template <class... Answer>
using IMCallback = std::function<void(const ResultCode&, const Answer&...)>;

// The request of an operation that needs none.
struct IMNothing {};

}  // namespace imsdk::biz
