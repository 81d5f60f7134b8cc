// The frames of pages: refused with a reason, or a call whose answer frame is JSON again.
#include <cstddef>
#include <cstdint>

#include "check.h"
#include "kexbase/json_reader.h"
#include "page/frames.h"
#include "page/open_calls.h"

using namespace imsdk::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string frame(reinterpret_cast<const char*>(data), size);
  FUZZ_CHECK(CostOf(frame) >= size);
  std::string reason;
  const auto call = ReadInvoke(frame, L"own", &reason);
  if (!call) {
    FUZZ_CHECK(!reason.empty());
    FUZZ_CHECK(base::JSONReader::Read(RefusedFrame(reason)));
    return 0;
  }
  const std::wstring seq = SequenceOf(*call);
  FUZZ_CHECK(base::JSONReader::Read(AnswerFrame(call->browserId, seq, false, call->method)));
  FUZZ_CHECK(base::JSONReader::Read(NotifyFrame(call->method, seq, call->browserId)));
  const auto budget = std::make_shared<MemoryBudget>(1u << 16);
  {
    OpenCalls calls(std::make_shared<MemoryShare>(budget));
    const bool open = calls.Open(seq, *call);
    FUZZ_CHECK(calls.Has(seq) == (open && !seq.empty()));
    calls.Close(seq);
    FUZZ_CHECK(budget->used() == 0);
  }
  return 0;
}
