// The answer callback: how a module answers one call.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "kexbase/task_runner.h"
#include "kexcom/ref_counted.h"

namespace imsdk::bridge {

class CIMSDKBridge;

// What a module answers: 0 or a failure code, and the JSON text (may be empty).
struct AnswerResult {
  std::int32_t code = 0;
  std::wstring payload;
};

// Bound to `CIMSDKBridge::JSResponse`, to a counted reference to the bridge, which it gives back
// when it has answered, and to one sequence identifier. Copies share one answer: the first call
// counts, later ones are traced and do nothing. Called on the view's thread it answers at once,
// elsewhere it posts itself there. When the last copy dies uncalled it answers `E_UNEXPECTED`, so
// that no page waits for ever.
class AnswerCallback {
 public:
  AnswerCallback(RefPtr<CIMSDKBridge> bridge, std::shared_ptr<base::TaskRunner> runner,
                 std::wstring seq);

  void operator()(std::int32_t code, std::wstring payload) const;
  // Names who is to answer, for the trace of a call that nobody answers: a static text. Before the
  // first copy is handed on.
  void SetHandler(const char* function) const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace imsdk::bridge
