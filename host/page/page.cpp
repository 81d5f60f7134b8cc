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

}  // namespace

Page::Page(RefPtr<ns_log::ILogger> log, RefPtr<ChatWindows> windows,
           RefPtr<Translation> translation, FrameSink sink)
    : log_(std::move(log)),
      windows_(std::move(windows)),
      translation_(std::move(translation)),
      sink_(std::move(sink)) {}

bool Page::Open(Backend& backend, std::shared_ptr<base::TaskRunner> runner, biz::IMUserID account) {
  browser_id_utf8_ = base::GenerateGUID();
  browser_id_ = base::UTF8ToWide(browser_id_utf8_);
  account_ = std::move(account);
  sink_(HelloFrame(browser_id_));
  bridge_ = backend.NewBridge();
  bridge::PageBinding binding{browser_id_, this, std::move(runner), account_};
  if (!bridge_ || bridge_->BindPage(binding) != 0) {
    WriteTrace(*log_, ns_log::kError, {"Page::Open", kSource}, L"no bridge for the view!!!",
               "_brief_,browserId", {browser_id_utf8_});
    Close();
    return false;
  }
  WriteTrace(*log_, ns_log::kRoutine, {"Page::Open", kSource}, L"view opened",
             "_brief_,browserId,account", {browser_id_utf8_, base::WideToUTF8(account_.nick)});
  return true;
}

void Page::OnFrame(std::string_view utf8) {
  if (!bridge_) return;
  std::string reason;
  const std::optional<bridge::SdkParam> call = ReadInvoke(utf8, browser_id_, &reason);
  if (!call) return Refuse(reason);
  bridge_->JsInvoke(*call);
}

void Page::Refuse(std::string_view reason) {
  WriteTrace(*log_, ns_log::kWarning, {"Page::OnFrame", kSource}, L"frame refused!!!",
             "_brief_,browserId,reason", {browser_id_utf8_, std::string(reason)});
  if (sink_) sink_(RefusedFrame(reason));
}

void Page::Close() {
  sink_ = nullptr;
  windows_->Drop(this);
  if (const RefPtr<bridge::IIMSDKBridge> bridge = std::exchange(bridge_, nullptr)) {
    bridge->UnbindPage();
  }
}

void Page::DeliverAnswer(const std::wstring& page, const std::wstring& seq, bool failed,
                         const std::wstring& payload) {
  if (sink_) sink_(AnswerFrame(page, seq, failed, payload));
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
    *problem = !windows_->Report(this, account_, base::WideToUTF8(json));
    return true;
  }
  if (event != kTranslateSetting || !translation_) return false;
  *problem = !translation_->Report(base::WideToUTF8(json));
  return true;
}

}  // namespace imsdk::host
