#include "page/page.h"

#include <utility>

#include "kexbase/guid.h"
#include "kexbase/strings.h"
#include "log/host_trace.h"
#include "page/frames.h"

namespace imsdk::host {
namespace {

constexpr char kSource[] = "host\\page\\page";

// Events that a page raises for its host: which of its chat windows is on the screen, and whether
// messages are to be translated.
constexpr std::wstring_view kChatWindowState = L"chatWindowState";
constexpr std::wstring_view kTranslateSetting = L"translateSetting";

// Calls that the host itself serves.

}  // namespace

Page::Page(PageServices services, std::shared_ptr<MemoryShare> memory, FrameSink sink)
    : services_(std::move(services)), calls_(std::move(memory)), sink_(std::move(sink)) {}

bool Page::Open(Backend& backend, std::shared_ptr<base::TaskRunner> runner, biz::IMUserID account) {
  browser_id_utf8_ = base::GenerateGUID();
  browser_id_ = base::UTF8ToWide(browser_id_utf8_);
  sink_(HelloFrame(browser_id_));
  bridge_ = backend.NewBridge();
  runner_ = std::move(runner);
  bridge::PageBinding binding{browser_id_, this, runner_, std::move(account)};
  if (!bridge_ || bridge_->BindPage(binding) != 0) {
    WriteTrace(*services_.log, ns_log::kError, {"Page::Open", kSource},
               L"no bridge for the view!!!", "_brief_,browserId", {browser_id_utf8_});
    Close();
    return false;
  }
  WriteTrace(*services_.log, ns_log::kRoutine, {"Page::Open", kSource}, L"view opened",
             "_brief_,browserId,account",
             {browser_id_utf8_, base::WideToUTF8(binding.account.nick)});
  return true;
}

void Page::OnFrame(std::string utf8) {
  if (!bridge_) return;
  if (CostOf(utf8) > services_.costliest_frame) {
    return Refuse("the host has not the memory to read a frame of so many values and bytes");
  }
  std::string reason;
  const std::optional<bridge::SdkParam> call = ReadInvoke(std::move(utf8), browser_id_, &reason);
  if (!call) return Refuse(reason);
  // A call in the name of another page is neither kept nor carried out by the bridge.
  const std::wstring seq = call->browserId == browser_id_ ? SequenceOf(*call) : L"";
  if (!calls_.Open(seq, *call)) {
    Refuse("the host's memory is full: too many calls wait for their answers");
    if (!calls_.Has(seq)) DeliverAnswer(browser_id_, seq, true, {});
    return;
  }
  const bool own = services_.calls && HostCalls::Has(call->method) && !seq.empty();
  if (own) return Serve(seq, *call);
  bridge_->JsInvoke(*call);
}

void Page::Serve(const std::wstring& seq, const bridge::SdkParam& call) {
  const std::wstring name = TextOf(call, 1);
  const auto deliver = [self = RefPtr<Page>(this), seq, name](HostCalls::Answer answer) {
    if (answer.failed) {
      WriteTrace(*self->services_.log, ns_log::kError, {"Page::Serve", kSource},
                 L"call of the host failed!!!", "_brief_,browserId,strSeqID,method,answer",
                 {self->browser_id_utf8_, base::WideToUTF8(seq), base::WideToUTF8(name),
                  base::WideToUTF8(answer.payload)});
    }
    self->DeliverAnswer(self->browser_id_, seq, answer.failed, answer.payload);
  };
  services_.calls->Serve(
      services_.windows->AccountOf(browser_id_), call.method, name,
      base::WideToUTF8(TextOf(call, 2)), [runner = runner_, deliver](HostCalls::Answer answer) {
        runner->PostTask(FROM_HERE, [deliver, answer = std::move(answer)] { deliver(answer); });
      });
}

void Page::Refuse(std::string_view reason) {
  WriteTrace(*services_.log, ns_log::kWarning, {"Page::OnFrame", kSource}, L"frame refused!!!",
             "_brief_,browserId,reason", {browser_id_utf8_, std::string(reason)});
  if (sink_) sink_(RefusedFrame(reason));
}

void Page::Close() {
  sink_ = nullptr;
  calls_.Clear();
  if (const RefPtr<bridge::IIMSDKBridge> bridge = std::exchange(bridge_, nullptr)) {
    bridge->UnbindPage();
  }
  services_.windows->Drop(browser_id_);
}

void Page::DeliverAnswer(const std::wstring& page, const std::wstring& seq, bool failed,
                         const std::wstring& payload) {
  if (!sink_) return;
  calls_.Close(seq);
  sink_(AnswerFrame(page, seq, failed, payload));
}

void Page::Notify(const std::wstring& event, const std::wstring& json) {
  if (!sink_) return;
  bool problem = false;
  if (!KeepHostEvent(event, json, &problem)) {
    return sink_(NotifyFrame(event, json, bridge_ ? bridge_->NotifyingPath() : L""));
  }
  if (problem) Refuse(base::WideToUTF8(event) + " is not of the agreed form");
}

bool Page::KeepHostEvent(const std::wstring& event, const std::wstring& json, bool* problem) {
  if (event == kChatWindowState) {
    *problem = !services_.windows->Report(browser_id_, base::WideToUTF8(json));
    return true;
  }
  if (event != kTranslateSetting || !services_.translation) return false;
  *problem = !services_.translation->Report(base::WideToUTF8(json));
  return true;
}

}  // namespace imsdk::host
