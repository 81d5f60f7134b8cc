// The smallest host: a logger that keeps lines, a page that keeps answers, and a bridge on a loop.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "bridge/imbridgemgr.h"
#include "bridge/imsdkbridge.h"
#include "bridge/page_handler.h"
#include "component/comobject.h"
#include "kexbase/message_loop.h"
#include "kexcore/kexcom.h"
#include "kexcore/logger.h"
#include "source/bridge/imbridgemgr.h"
#include "source/bridge/imsdkbridge.h"

namespace imsdk::test {

struct Line {
  int level;
  std::wstring text;
  std::string function;
  std::string source;
  int line;
  std::string brief;
  std::map<std::string, std::wstring> items;
  std::wstring record;
};

// Logging facility and logger "imsdk" in one; keeps every line. Any thread.
class KeepingLogger final : public RefPtrCounted<ns_log::ILogger> {
 public:
  bool IsEnabled(int) override { return true; }
  void Write(const ns_log::ITraceLine& line) override;

  std::vector<Line> Lines() const;
  // The lines with this text.
  std::vector<Line> Lines(std::wstring_view text) const;
  void Clear();

 private:
  mutable std::mutex mutex_;
  std::vector<Line> lines_;
};

class LogService final : public RefPtrCounted<ns_log::ILogService> {
 public:
  explicit LogService(RefPtr<ns_log::ILogger> logger) : logger_(std::move(logger)) {}
  ns_log::ILogger* GetLogger(const char*) override {
    logger_->AddRef();
    return logger_.get();
  }

 private:
  const RefPtr<ns_log::ILogger> logger_;
};

struct Delivery {
  std::wstring page;
  std::wstring seq;
  bool failed;
  std::wstring payload;
  bool on_view_thread;
};
struct Notification {
  std::wstring event;
  std::wstring json;
  std::wstring path;
};

// Keeps what reaches the page. View's thread, except for the count of references.
class KeepingPage final : public bridge::IPageHandler {
 public:
  explicit KeepingPage(std::shared_ptr<base::TaskRunner> runner) : runner_(std::move(runner)) {}

  void AddRef() override { ++refs; }
  void Release() override { --refs; }
  void DeliverAnswer(const std::wstring& page, const std::wstring& seq, bool failed,
                     const std::wstring& payload) override {
    answers.push_back({page, seq, failed, payload, runner_->RunsTasksOnCurrentThread()});
  }
  void Reserved() override {}
  void Notify(const std::wstring& event, const std::wstring& json) override {
    notifications.push_back({event, json, bridge ? bridge->NotifyingPath() : L""});
  }

  std::atomic<int> refs{0};
  std::vector<Delivery> answers;
  std::vector<Notification> notifications;
  const bridge::IIMSDKBridge* bridge = nullptr;  // who is asked for the path of a notification

 private:
  const std::shared_ptr<base::TaskRunner> runner_;
};

// What a test puts into a bridge's module table, or takes out of it.
using ChangeModules =
    std::function<void(bridge::ModuleTable& modules, const bridge::ModuleContext& context)>;

// A bridge whose clock and module table a test may set.
class OpenBridge : public bridge::CIMSDKBridge {
 public:
  std::int64_t now = -1;  // the clock in milliseconds; negative: the real one
  ChangeModules change;

 protected:
  std::int64_t NowMs() const override { return now < 0 ? CIMSDKBridge::NowMs() : now; }
  bridge::ModuleTable MakeModules(const bridge::ModuleContext& context) const override {
    auto modules = CIMSDKBridge::MakeModules(context);
    if (change) change(modules, context);
    return modules;
  }
};

// Logger, started business layer, a loop that is the view's thread, a page and its bridge.
class TestHost {
 public:
  explicit TestHost(ChangeModules change = nullptr);
  ~TestHost();

  // Binds the bridge for `account` (none: nobody is logged in).
  void Bind(const biz::IMUserID& account = {});
  // One call of the view's own page, and whatever it posted.
  void Invoke(std::wstring method, std::wstring seq, std::wstring bizmethod,
              std::wstring json = L"{}");
  // A call whose answer comes at once; returns its delivery.
  Delivery Call(const std::wstring& path, const std::wstring& bizmethod,
                const std::wstring& json = L"{}");
  void RunLoop() { loop.RunUntilIdle(); }

  base::MessageLoop loop;
  RefPtr<KeepingLogger> log;
  KeepingPage page;
  RefPtr<component::CKexCOMObject<OpenBridge>> bridge;

 private:
  RefPtr<component::CKexCOMObject<bridge::CIMBridgeMgr>> manager_;
  int seq_ = 0;
};

}  // namespace imsdk::test
