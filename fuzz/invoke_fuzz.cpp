// `JsInvoke` with any method, argument and identity: nothing throws, each call that reaches a
// module is answered exactly once, and every other call not at all.
#include <algorithm>

#include "check.h"
#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"
#include "kexbase/strings.h"
#include "request_maker.h"
#include "tests/support/memory_engine.h"
#include "tests/support/test_host.h"

namespace {

using imsdk::fuzz::RequestMaker;
using imsdk::test::TestHost;

std::string Describe() {
  const RefPtr<imsdk::component::CKexCOMObject<imsdk::bridge::CIMBridgeMgr>> manager(
      new imsdk::component::CKexCOMObject<imsdk::bridge::CIMBridgeMgr>);
  std::string document;
  const auto keep = [](void* context, const char* text, std::size_t size) {
    static_cast<std::string*>(context)->assign(text, size);
  };
  FUZZ_CHECK(manager->Describe(keep, &document) == 0);
  return document;
}

struct Calls {
  TestHost& host;
  const RequestMaker& maker;
  FuzzedDataProvider& data;
  int count = 0;

  void One() {
    const auto& known =
        maker.methods()[data.ConsumeIntegralInRange<std::size_t>(0, maker.methods().size() - 1)];
    std::string method = "workbench." + known.path + ".invoke";
    std::string name = known.name;
    std::string json;
    base::JSONWriter::Write(maker.Make(known.request, &data), &json);
    bool reaches = true;
    std::wstring page = L"view-1";
    switch (data.ConsumeIntegralInRange(0, 11)) {
      case 0:
        name = data.ConsumeRandomLengthString(20);
        break;
      case 1:
        json = data.ConsumeRandomLengthString(200);
        break;
      case 2:
        method = "workbench.im.event_register";
        name = data.PickValueInArray<const char*>(
            {"register", "unregister", "register_all", "unregister_all", "other"});
        break;
      case 3:
        method = "workbench.im.event_notify";
        break;
      case 4:
        method = "workbench.im." + data.ConsumeRandomLengthString(20);
        reaches = false;
        break;
      case 5:
        page = L"view-2";
        reaches = false;
        break;
      default:
        break;
    }
    const std::wstring seq =
        data.ConsumeProbability<float>() < 0.05f ? std::wstring() : L"s" + std::to_wstring(++count);
    host.bridge->JsInvoke(
        {page, base::UTF8ToWide(method), {seq, base::UTF8ToWide(name), base::UTF8ToWide(json)}});
    host.RunLoop();
    const auto answers = std::count_if(host.page.answers.begin(), host.page.answers.end(),
                                       [&](const auto& answer) { return answer.seq == seq; });
    if (!reaches && method.find(".invoke") == std::string::npos &&
        !method.starts_with("workbench.im.event_")) {
      FUZZ_CHECK(answers == 0);
    }
    if (reaches) FUZZ_CHECK(answers == (seq.empty() ? 0 : 1));
    for (const auto& answer : host.page.answers) {
      FUZZ_CHECK(answer.payload.empty() ||
                 base::JSONReader::Read(base::WideToUTF8(answer.payload)));
    }
    host.page.answers.clear();
    host.page.notifications.clear();
    host.log->Clear();
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const RequestMaker maker(Describe());
  FuzzedDataProvider data(bytes, size);
  const imsdk::test::MemoryEngine engine;
  TestHost host;
  host.Bind(data.ConsumeBool() ? imsdk::test::kHarbor : imsdk::biz::IMUserID{});
  Calls calls{host, maker, data};
  while (data.remaining_bytes() > 0 && calls.count < 64) calls.One();
  host.bridge->UnbindPage();
  return 0;
}
