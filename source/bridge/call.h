// One call in the hands of what serves it: how it is answered, and how its failures are traced.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "source/bridge/answercallback.h"
#include "source/bridge/bridgebase.h"
#include "source/bridge/jsparams/idrecords.h"
#include "trace/traceproxy.h"

namespace imsdk::bridge {

// Copyable; it is answered through exactly one of the copies, on any thread. Every answer that is a
// failure for the page leaves one error line with code, subcode and text. Its own text is fixed:
// that of the place that fails, else the row's.
class CallBase {
 public:
  CallBase(AnswerCallback answer, const MethodRow& row);

  // The answer's envelope alone.
  void Finish(const biz::ResultCode& result) const { Fail(result, row_->texts.failed); }
  // The same; a failure is traced by `fixed`.
  void Fail(const biz::ResultCode& result, std::wstring_view fixed) const;
  void Fail(std::int32_t code, const wchar_t* fixed) const { Fail({code, 0, fixed}, fixed); }
  // Why there is nothing that could serve the call: a fixed text.
  void Refuse(const biz::ResultCode& why) const { Fail(why, why.text); }
  void Invalid() const;
  // The request is no JSON that the method reads.
  void Unreadable(const std::wstring& jsonStr) const;
  // The outcome of a send: the engine's status, negative when it refused. A positive one is a
  // success too, so the call has not failed. The engine's words are for the trace.
  void FinishSend(const biz::ResultCode& status) const;

  // A trace line of the method, or of the function `inner` inside it.
  ns_log::CTraceProxy Trace(int level, std::wstring_view text, const char* inner = nullptr,
                            const char* file = __builtin_FILE(),
                            int line = __builtin_LINE()) const {
    return {level, site(inner), text, file, line};
  }
  ns_log::TraceSite site(const char* inner = nullptr) const { return {row_->site.function, inner}; }

 protected:
  // Answers, and traces a code that the page takes for a failure.
  void Answer(const biz::ResultCode& result, std::wstring payload, std::wstring_view fixed) const;
  const MethodRow& row() const { return *row_; }

 private:
  AnswerCallback answer_;
  const MethodRow* row_;  // rows are static
};

template <class Keys = biz::IMNothing>
class Call : public CallBase {
 public:
  using Writer = std::wstring (*)(const biz::ResultCode&, const Keys&);

  Call(AnswerCallback answer, const MethodRow& row, Writer writer)
      : CallBase(std::move(answer), row), writer_(writer) {}

  using CallBase::Finish;
  // The envelope and the answer's keys.
  void Finish(const biz::ResultCode& result, const Keys& answer) const {
    Answer(result, writer_(result, answer), row().texts.failed);
  }
  void Succeed(const Keys& answer) const { Finish({}, answer); }

  // A call is the engine's callback of the operation that it asked for.
  void operator()(const biz::ResultCode& result, const Keys& answer = {}) const {
    Finish(result, answer);
  }

 private:
  Writer writer_;
};

}  // namespace imsdk::bridge
