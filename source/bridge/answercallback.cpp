#include "source/bridge/answercallback.h"

#include <utility>

#include "kexbase/location.h"
#include "kexcom/result.h"
#include "source/bridge/imsdkbridge.h"
#include "trace/traceproxy.h"

namespace imsdk::bridge {

struct AnswerCallback::State {
  State(RefPtr<CIMSDKBridge> to, std::shared_ptr<base::TaskRunner> on, std::wstring id)
      : bridge(std::move(to)), runner(std::move(on)), seq(std::move(id)) {}
  ~State() {
    if (answered) return;
    ns_log::CTraceProxy(ns_log::kError, {handler}, L"never answered!!!")
        .Brief("_brief_,strSeqID,code", seq, E_UNEXPECTED);
    Answer({E_UNEXPECTED, {}});
  }

  void Answer(AnswerResult result) noexcept {
    if (answered.exchange(true, std::memory_order_acq_rel)) {
      ns_log::CTraceProxy(ns_log::kRoutine, {"CIMSDKBridge::JSResponse"}, L"already done!!!")
          .Brief("_brief_,strSeqID", seq);
      return;
    }
    try {
      auto answer = [to = std::move(bridge), id = seq, result = std::move(result)] {
        to->JSResponse(id, result);
      };
      if (runner->RunsTasksOnCurrentThread()) return answer();
      // The bridge goes with the task, so that its last reference is given back on its thread.
      runner->PostTask(FROM_HERE, std::move(answer));
    } catch (...) {  // out of memory: the page's own timeout is all that is left
    }
  }

  RefPtr<CIMSDKBridge> bridge;
  std::shared_ptr<base::TaskRunner> runner;
  const std::wstring seq;
  const char* handler = "CIMSDKBridge::JsInvoke";
  std::atomic<bool> answered{false};
};

AnswerCallback::AnswerCallback(RefPtr<CIMSDKBridge> bridge,
                               std::shared_ptr<base::TaskRunner> runner, std::wstring seq)
    : state_(std::make_shared<State>(std::move(bridge), std::move(runner), std::move(seq))) {}

void AnswerCallback::operator()(std::int32_t code, std::wstring payload) const {
  state_->Answer({code, std::move(payload)});
}

void AnswerCallback::SetHandler(const char* function) const { state_->handler = function; }

}  // namespace imsdk::bridge
