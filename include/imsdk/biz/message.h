// Messages of conversations of every kind.
//
// Bodies are made and read by kexbase/message_body.h; docs/message-bodies.md has their form.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/mentions.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/file_path.h"

namespace imsdk::biz {

// Kinds of message, and of body item.
enum IMMsgType : std::int32_t {
  kMsgText = 0,
  kMsgPicture = 1,
  kMsgAudio = 2,
  kMsgFile = 3,
  kMsgEmotion = 4,
  kMsgShake = 5,  // a window shake; without text
  // The sender's typing state: the value of the only item is an `InputStatus` in decimal. Goes to
  // the peer's devices that are there now; never stored, and no send event tells of it.
  kMsgInputStatus = 6,
};

// Typing state of a peer.
enum InputStatus : std::int32_t { kInputStopped = 0, kInputTyping = 1 };

enum IMMsgStatus : std::int32_t {
  kMsgSending = 0,
  kMsgSent = 1,       // it is in the server's archive
  kMsgFailed = 2,     // may be sent again
  kMsgReceived = 3,   // a message from somebody else
  kMsgWithdrawn = 4,  // its sender took it back; the body is empty
};

// For a message from somebody else: whether this account has read it. For one of the account's own:
// whether the peer has reported it read.
enum IMReadFlag : std::int32_t { kMsgUnread = 0, kMsgRead = 1 };

// Extra information of a message.
struct IMMessageExt {
  std::wstring others;           // free data carried with the message
  std::int32_t fixmsgread = 0;   // the read state is fixed: was reported read, or needs no report
  std::int32_t autochatmsg = 0;  // an automatic reply
  std::int32_t syschatmsg = 0;   // a system chat message

  static constexpr auto Bounds() {
    return Bounded(Bytes("others", &IMMessageExt::others, kMaxExtraBytes));
  }
};

// One message of a conversation as one account sees it. Times are milliseconds since the Unix
// epoch, UTC.
struct IMMessage {
  // Unique for its sender; a later message of it has a greater one. Two senders of a tribe may have
  // the same.
  std::int64_t msgid = 0;
  std::int64_t msgtime = 0;  // by the sender's clock
  IMConversationID cid;
  IMUserID fromid;
  IMUserID toid;  // empty in a tribe
  std::int32_t msgtype = kMsgText;
  std::int32_t msgstatus = kMsgSending;
  std::wstring msgbody;      // text with tokens in it, see kexbase/message_body.h
  std::int64_t svrtime = 0;  // by the server's clock; 0 until it is known
  std::int32_t readflag = kMsgUnread;
  IMMessageExt extinfo;
  IMTribeAt tribeat{};  // whom it mentions; nobody outside tribes
};
using TMMessage = IMMessage;  // of a tribe
using TMMsgType = IMMsgType;

// One element of a message to send.
struct IMBodyItem {
  std::int32_t type = kMsgText;  // an `IMMsgType`
  std::wstring jvale;            // extra JSON text, carried as it stands
  std::wstring value;            // a body: text, tokens, or both
  base::FilePath filepath;       // a local file, where the element carries one
  std::string filecontent;       // binary content, where the element carries it inside

  static constexpr auto Bounds() {
    return Bounded(Bytes("jvale", &IMBodyItem::jvale, kMaxExtraBytes),
                   Bytes("value", &IMBodyItem::value, kMaxBodyBytes),
                   Letters("filepath", &IMBodyItem::filepath, kMaxPathLetters),
                   Content("filecontent", &IMBodyItem::filecontent, kMaxContentBytes));
  }
};

// Which of the account's own messages the peer has reported read, or not.
struct IMFlagMsgReaded {
  IMConversationID cid;
  std::int64_t msgid = 0;
  std::int64_t msgtime = 0;
  std::int32_t readflag = kMsgUnread;
};

// A message that was taken back.
struct IMMsgWithdraw {
  IMConversationID cid;
  IMUserID fromid;
  std::int64_t msgid = 0;
  std::int64_t msgtime = 0;
  std::int64_t svrtime = 0;
};
using TMMsgWithdraw = IMMsgWithdraw;  // in a tribe

// A picture inside a message.
struct IMMsgPicture {
  std::wstring pictureid;  // unique in its conversation: msgid, "_", index
  std::wstring url;        // the file's path as in the message's token
  std::int64_t msgid = 0;
  std::int32_t index = 0;  // among the pictures of the message, from 0
  std::int64_t mgstime = 0;
  IMUserID fromid;
  IMUserID toid;         // empty in a tribe
  std::wstring extInfo;  // the message's "others"
};

}  // namespace imsdk::biz
