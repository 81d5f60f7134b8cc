#include "client/worker.h"

#include <utility>

#include "kexcom/result.h"

namespace imsdk::host {
namespace {

biz::ResultCode Stopped() { return {E_UNEXPECTED, 0, L"the host stops"}; }

}  // namespace

void Worker::Stop() {
  stopped_ = true;
  thread_.Stop();
}

void Worker::Do(Job job) {
  if (++waiting_ > kMostWaiting) {
    --waiting_;
    return job({biz::kEngineBusy, 0, L"too many jobs wait"});
  }
  const bool taken = thread_.task_runner()->PostTask(FROM_HERE, [this, job] {
    --waiting_;
    job(stopped_ ? Stopped() : biz::ResultCode());
  });
  if (taken) return;
  --waiting_;
  job(Stopped());
}

}  // namespace imsdk::host
