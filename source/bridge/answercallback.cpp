#include "source/bridge/answercallback.h"

#include <utility>

#include "kexbase/location.h"
#include "kexcom/result.h"
#include "source/bridge/imsdkbridge.h"

namespace imsdk::bridge {

struct AnswerCallback::State {
  State(RefPtr<CIMSDKBridge> to, std::shared_ptr<base::TaskRunner> on, std::wstring id)
      : bridge(std::move(to)), runner(std::move(on)), seq(std::move(id)) {}
  ~State() { Answer({E_UNEXPECTED, {}}); }

  void Answer(AnswerResult result) noexcept {
    if (answered.exchange(true, std::memory_order_acq_rel)) return;
    try {
      if (runner->RunsTasksOnCurrentThread()) return bridge->JSResponse(seq, result);
      // The bridge goes with the task, so that its last reference is given back on its thread.
      runner->PostTask(FROM_HERE, [to = std::move(bridge), id = std::move(seq),
                                   answer = std::move(result)] { to->JSResponse(id, answer); });
    } catch (...) {  // out of memory: the page's own timeout is all that is left
    }
  }

  RefPtr<CIMSDKBridge> bridge;
  std::shared_ptr<base::TaskRunner> runner;
  std::wstring seq;
  std::atomic<bool> answered{false};
};

AnswerCallback::AnswerCallback(RefPtr<CIMSDKBridge> bridge,
                               std::shared_ptr<base::TaskRunner> runner, std::wstring seq)
    : state_(std::make_shared<State>(std::move(bridge), std::move(runner), std::move(seq))) {}

void AnswerCallback::operator()(std::int32_t code, std::wstring payload) const {
  state_->Answer({code, std::move(payload)});
}

}  // namespace imsdk::bridge
