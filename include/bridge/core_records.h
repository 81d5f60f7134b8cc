// Records of the messaging core in the JSON forms that its own parts use among each other. Pages do
// not see them: a client that speaks of the core's records in a way of its own (bridgehost's calls
// on tribes do) hands them in and takes them out through `IIMBridgeMgr`, so that they are written
// down in one place with all others.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/file_transfer.h"
#include "imsdk/biz/tribe.h"

namespace imsdk::bridge {

struct CoreConversation {
  biz::IMConversationID cid;
};

// `stUID` has another level now, given by `stMasterUID`.
struct CoreLevelChange {
  biz::TribeMemberLevel emLevel = biz::kTribeMember;
  biz::IMUserID stMasterUID;
  biz::IMUserID stUID;
  biz::IMTribeID stTribeID;
};

struct CoreRemoval {
  biz::IMUserID stKickedUID;
  biz::IMUserID stKickUID;  // by whom
  biz::IMTribeID stTribeID;
};

// A member who joins or leaves.
struct CoreMember {
  biz::IMUserID stUID;
  biz::IMTribeID stTribeID;
};

struct CoreMembers {
  std::vector<biz::IMUserID> stUIDs;
  biz::IMTribeID stTribeID;
};

struct CoreTribeUser {
  std::wstring userName;
  std::wstring userId;
  biz::TribeMemberLevel tribeLevel = biz::kTribeMember;
  biz::TribeMemberBasicStatus basicSts = biz::kMemberOffline;
  std::wstring mobileNo;
};

struct CoreTribe {
  std::wstring managerId;
  std::wstring tribeName;
  biz::IMTribeType tribeType = biz::kNormalTribe;
  std::int32_t subType = 0;  // the tribe's class
  std::wstring business;
  std::int32_t extSts = 0;
  std::vector<CoreTribeUser> userList;
};

// Who sent a cloud file, and with which message.
struct CoreFileOwner {
  biz::IMUserID from;
  std::int64_t uuid = 0;  // the message's identifier
  std::int64_t localTime = 0;
  std::int64_t srvTime = 0;
};

struct CoreFileNode {
  std::int64_t parentId = 0;
  std::wstring nodeName;
  std::int64_t nodeSize = 0;
  biz::IMNodeType nodeType = biz::kNodeFile;
  CoreFileOwner msgInfo;
};

// What a file event tells: the conversation that the file is in, its transfer, the file.
struct CoreFileEvent {
  CoreConversation fileInfo;
  biz::FileTransferInfo transferInfo;
  CoreFileNode fileMeta;
};

using CoreRecord =
    std::variant<CoreConversation, CoreLevelChange, CoreRemoval, CoreMember, CoreMembers, CoreTribe,
                 CoreTribeUser, CoreFileOwner, CoreFileNode, CoreFileEvent>;

}  // namespace imsdk::bridge
