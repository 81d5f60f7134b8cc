#include "tests/support/test_host.h"

namespace imsdk::test {

void KeepingLogger::Write(const ns_log::ITraceLine& line) {
  Line kept{line.Level(),
            std::wstring(line.Text()),
            std::string(line.Function()),
            std::string(line.Source()),
            line.Line(),
            std::string(line.Brief()),
            {},
            line.Record()};
  for (std::size_t i = 0; i < line.ItemCount(); ++i) {
    const auto item = line.Item(i);
    kept.items[std::string(item.name)] = item.value;
  }
  const std::lock_guard hold(mutex_);
  lines_.push_back(std::move(kept));
}

std::vector<Line> KeepingLogger::Lines() const {
  const std::lock_guard hold(mutex_);
  return lines_;
}

std::vector<Line> KeepingLogger::Lines(std::wstring_view text) const {
  std::vector<Line> lines = Lines();
  std::erase_if(lines, [&](const Line& line) { return line.text != text; });
  return lines;
}

void KeepingLogger::Clear() {
  const std::lock_guard hold(mutex_);
  lines_.clear();
}

TestHost::TestHost(ChangeModules change)
    : log(new KeepingLogger),
      page(loop.task_runner()),
      bridge(new component::CKexCOMObject<OpenBridge>),
      manager_(new component::CKexCOMObject<bridge::CIMBridgeMgr>) {
  const RefPtr<LogService> service(new LogService(log));
  GetKexCOM()->RegisterService(ns_log::ILogService::kServiceId, service.get());
  bridge->change = std::move(change);
  manager_->Init();
}

TestHost::~TestHost() {
  bridge->UnbindPage();
  loop.RunUntilIdle();
  manager_->Uninit();
  GetKexCOM()->UnregisterService(ns_log::ILogService::kServiceId);
}

void TestHost::Bind(const biz::IMUserID& account) {
  page.bridge = bridge.get();
  bridge->BindPage({L"view-1", &page, loop.task_runner(), account});
}

void TestHost::Invoke(std::wstring method, std::wstring seq, std::wstring bizmethod,
                      std::wstring json) {
  bridge->JsInvoke(
      {L"view-1", std::move(method), {std::move(seq), std::move(bizmethod), std::move(json)}});
  RunLoop();
}

Delivery TestHost::Call(const std::wstring& path, const std::wstring& bizmethod,
                        const std::wstring& json) {
  const std::wstring seq = L"call-" + std::to_wstring(++seq_);
  Invoke(L"workbench." + path + L".invoke", seq, bizmethod, json);
  for (const Delivery& answer : page.answers) {
    if (answer.seq == seq) return answer;
  }
  return {L"", L"", true, L"no answer", false};
}

}  // namespace imsdk::test
