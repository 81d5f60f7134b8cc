// The messaging core's own records, through the manager that a client hands them to.
#include <gtest/gtest.h>

#include "bridge/imbridgemgr.h"
#include "component/comobject.h"
#include "kexcom/result.h"
#include "source/bridge/imbridgemgr.h"

namespace imsdk::test {
namespace {

const biz::IMUserID kOne{L"a", L"one"};
const biz::IMUserID kTwo{L"a", L"two"};

#define ONE R"({"strAppKey":"a","strUserID":"one"})"
#define TWO R"({"strAppKey":"a","strUserID":"two"})"
#define SEVEN R"({"llTribeID":"7"})"
#define USER R"({"userName":"One","userId":"one","tribeLevel":2,"basicSts":1,"mobileNo":"5"})"

TEST(CoreRecords, AreWrittenAndReadByTheirLists) {
  const RefPtr<component::CKexCOMObject<bridge::CIMBridgeMgr>> manager(
      new component::CKexCOMObject<bridge::CIMBridgeMgr>);
  const bridge::CoreTribeUser user{L"One", L"one", biz::kTribeManager, biz::kMemberOnline, L"5"};
  const std::pair<bridge::CoreRecord, std::string> rows[] = {
      {bridge::CoreConversation{biz::IMConversationID(kOne)},
       R"({"emCIDType":0,"stUID":)" ONE R"(,"stTID":{"llTribeID":"0"}})"},
      {bridge::CoreConversation{biz::IMConversationID(biz::IMTribeID{7})},
       R"({"emCIDType":3,"stUID":{"strAppKey":"","strUserID":""},"stTID":)" SEVEN "}"},
      {bridge::CoreLevelChange{biz::kTribeManager, kOne, kTwo, {7}},
       R"({"emLevel":2,"stMasterUID":)" ONE R"(,"stUID":)" TWO R"(,"stTribeID":)" SEVEN "}"},
      {bridge::CoreRemoval{kOne, kTwo, {7}},
       R"({"stKickedUID":)" ONE R"(,"stKickUID":)" TWO R"(,"stTribeID":)" SEVEN "}"},
      {bridge::CoreMember{kOne, {7}}, R"({"stUID":)" ONE R"(,"stTribeID":)" SEVEN "}"},
      {bridge::CoreMembers{{kOne, kTwo}, {7}},
       R"({"stUIDs":[)" ONE "," TWO R"(],"stTribeID":)" SEVEN "}"},
      {bridge::CoreTribe{L"one", L"Quay", biz::kMultiChat, 3, L"b", 1, {user}},
       R"({"managerId":"one","tribeName":"Quay","tribeType":1,"subType":3,"business":"b",)"
       R"("extSts":1,"userList":[)" USER "]}"},
      {user, USER},
      {bridge::CoreFileEvent{{biz::IMConversationID(kTwo)},
                             {40, biz::kTransferRunning, biz::kTransferDownload, L"files/x/y"},
                             {3, L"n.txt", 5000000000, biz::kNodeFile, {kOne, 8, 10, 11}}},
       R"({"fileInfo":{"emCIDType":0,"stUID":)" TWO R"(,"stTID":{"llTribeID":"0"}},)"
       R"("transferInfo":{"progress":40,"status":2,"type":2,"filePath":"files/x/y"},)"
       R"("fileMeta":{"parentId":"3","nodeName":"n.txt","nodeSize":"5000000000","nodeType":0,)"
       R"("msgInfo":{"from":)" ONE R"(,"uuid":"8",)"
       R"("localTime":"10","srvTime":"11"}}})"},
  };
  const auto write = [&](const bridge::CoreRecord& record) {
    std::string text;
    const auto take = [](void* context, const char* data, std::size_t size) {
      static_cast<std::string*>(context)->assign(data, size);
    };
    EXPECT_EQ(manager->WriteCoreRecord(record, take, &text), 0);
    return text;
  };
  for (const auto& [record, text] : rows) {
    EXPECT_EQ(write(record), text);
    bridge::CoreRecord read = std::visit(
        [](const auto& one) { return bridge::CoreRecord(std::decay_t<decltype(one)>{}); }, record);
    EXPECT_EQ(manager->ReadCoreRecord(text.data(), text.size(), &read), 0);
    EXPECT_EQ(write(read), text);
    EXPECT_EQ(manager->ReadCoreRecord("[]", 2, &read), E_INVALIDARG);
    EXPECT_EQ(manager->ReadCoreRecord("{oops", 5, &read), E_INVALIDARG);
  }
  EXPECT_EQ(manager->ReadCoreRecord("{}", 2, nullptr), E_POINTER);
  EXPECT_EQ(manager->WriteCoreRecord(user, nullptr, nullptr), E_POINTER);
}

}  // namespace
}  // namespace imsdk::test
