// One page: its bridge object on one side, its frames on the other.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "bridge/page_handler.h"
#include "client/chat_windows.h"
#include "client/host_calls.h"
#include "client/translation.h"
#include "kexcore/logger.h"
#include "page/backend.h"
#include "page/open_calls.h"

namespace imsdk::host {

// Takes the frames meant for the page, on the view's thread.
using FrameSink = std::function<void(std::string frame)>;

// What pages need of the host.
struct PageServices {
  RefPtr<ns_log::ILogger> log;
  RefPtr<ChatWindows> windows;
  RefPtr<Translation> translation;  // may be null
  const HostCalls* calls;           // may be null
  std::size_t costliest_frame;      // bytes that carrying out one frame may take
};

// The page handler of one view. Everything but counting runs on the view's task runner. The bridge
// may hold the page longer than the view does; after `Close` it does nothing.
class Page final : public bridge::IPageHandler {
 public:
  // Open calls count in `memory`.
  Page(PageServices services, std::shared_ptr<MemoryShare> memory, FrameSink sink);

  // Says hello and binds a fresh bridge to `runner`. `account` may be empty. False when there is no
  // bridge to be had; the page is then closed.
  bool Open(Backend& backend, std::shared_ptr<base::TaskRunner> runner, biz::IMUserID account);
  // One frame of the page. What is not an invocation is refused, and so is one that there is no
  // memory for; its call is answered as failed without a text. The page stays.
  void OnFrame(std::string utf8);
  // Refuses a frame: traced, and told to the page.
  void Refuse(std::string_view reason);
  // Unbinds and releases the bridge and forgets the page's windows. Safe to call twice. Not from
  // inside a call of the bridge.
  void Close();

  // UTF-8; empty before `Open`.
  const std::string& browser_id() const { return browser_id_utf8_; }

  void AddRef() override { count_.Add(); }
  void Release() override {
    if (count_.Release() == 0) delete this;
  }
  void DeliverAnswer(const std::wstring& page, const std::wstring& seq, bool failed,
                     const std::wstring& payload) override;
  void Reserved() override {}
  void Notify(const std::wstring& event, const std::wstring& json) override;

 private:
  ~Page() = default;

  // Serves a call that is the host's own, not the bridge's; answered on the view's thread.
  void Serve(const std::wstring& seq, const bridge::SdkParam& call);
  // Keeps an event that is meant for the host. False when it is one for the page; `*problem` tells
  // when its JSON was not of the agreed form.
  bool KeepHostEvent(const std::wstring& event, const std::wstring& json, bool* problem);

  ThreadSafeRefPolicy count_;
  const PageServices services_;
  OpenCalls calls_;
  FrameSink sink_;  // empty once closed
  std::wstring browser_id_;
  std::string browser_id_utf8_;
  std::shared_ptr<base::TaskRunner> runner_;
  RefPtr<bridge::IIMSDKBridge> bridge_;
};

}  // namespace imsdk::host
