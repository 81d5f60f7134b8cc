#include "account/conversations/conversation.h"

#include "account/session/on_worker.h"
#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::account {

biz::IMMessagePage Conversation::GetNewMsg(const biz::IMPageRequest& request) {
  if (state()->closed) return {};
  return state()->chat.NewMessages(key_, request);
}

void Conversation::GetOfflineMsg(biz::IMPageCallback done) {
  if (state()->closed) return done(NotLoggedIn(), {});
  done({}, state()->chat.OfflineMessages(key_));
}

void Conversation::SetNewMsgReaded(biz::IMDoneCallback done) {
  if (state()->closed) return done(NotLoggedIn());
  const std::int64_t arrival = state()->chat.MarkRead(key_);
  if (arrival == 0) return done({});
  Change(
      state(), std::move(done),
      [key = key_, arrival](AccountState& here) { here.store.MarkRead(key, arrival); },
      [key = key_, reporter = account_.reporter](AccountState&) { reporter->TellRead(key); });
}

std::int32_t Conversation::GetUnreadCount() const {
  return state()->closed ? 0 : state()->chat.Unread(key_);
}

void Conversation::GetReadedBoundary(biz::IMPositionCallback done) {
  Query<biz::IMMsgPosition>(state(), std::move(done), [key = key_](AccountState& here) {
    const Position boundary = here.store.conversations().ReadBoundary(key);
    return biz::IMMsgPosition{boundary.msgtime, boundary.msgid};
  });
}

std::int32_t Conversation::SendMsg(std::vector<biz::IMBodyItem> body,
                                   const biz::IMSendOptions& options) {
  if (key_.is_virtual()) return biz::kEngineRefused;
  return account_.outbox->Send(key_.cid, std::move(body), options);
}

std::int32_t Conversation::ReSendMsg(std::int64_t msgid, bool at_once) {
  if (key_.is_virtual()) return biz::kEngineRefused;
  return account_.outbox->Resend(key_.cid, msgid, at_once);
}

void Conversation::WithdrawMsg(std::int64_t msgid, biz::IMDoneCallback done) {
  if (NeedsPeer(done)) return;
  OnWorker(
      state(),
      [reporter = account_.reporter, cid = key_.cid, msgid, done](AccountState&) {
        reporter->Withdraw(cid, msgid, done);
      },
      done);
}

void Conversation::GetFlagsMyMsgReaded(const std::vector<std::int64_t>& msgids,
                                       biz::IMFlagsCallback done) {
  if (NeedsPeer(done)) return;
  Query<std::vector<biz::IMFlagMsgReaded>>(state(), std::move(done),
                                           [cid = key_.cid, msgids](AccountState& here) {
                                             return here.store.PeerReadFlags(cid, msgids);
                                           });
}

void Conversation::SetFlagsPeerMsgReaded(const std::vector<std::int64_t>& msgids,
                                         biz::IMDoneCallback done) {
  if (NeedsPeer(done)) return;
  OnWorker(
      state(),
      [reporter = account_.reporter, cid = key_.cid, msgids, done](AccountState&) {
        reporter->ReportRead(cid, msgids, done);
      },
      done);
}

void Conversation::ShieldAutoReply(bool ignore, biz::IMDoneCallback done) {
  if (NeedsPeer(done)) return;
  Change(state(), std::move(done), [key = key_, ignore](AccountState& here) {
    here.store.conversations().SetShieldAutoReply(key, ignore);
  });
}

void Conversation::AddSysMsg(const std::wstring& text, biz::IMDoneCallback done) {
  if (NeedsPeer(done)) return;
  if (text.empty()) return done({biz::kEngineEmpty, 0, L"the note is empty"});
  if (base::WideToUTF8(text).size() > link::kMaxBodyBytes) {
    return done({biz::kEngineTooLarge, 0, L"the note is too large"});
  }
  biz::IMMessage note;
  note.cid = note.fromid = key_.cid;
  note.toid = state()->self;
  note.msgstatus = biz::kMsgReceived;
  note.readflag = biz::kMsgRead;
  note.msgbody = text;
  note.extinfo.syschatmsg = 1;
  note.extinfo.fixmsgread = 1;
  note.msgtime = note.svrtime = base::Time::Now().ToMilliseconds();
  note.msgid = state()->environment->ids->Next();
  Change(
      state(), std::move(done), [note](AccountState& here) { here.store.AddIncoming(note); },
      [note](AccountState& here) {
        here.chat.AddSeen(note.cid, note);
        here.events.on_receive_new_msg({note.cid}, {note});
      });
}

}  // namespace imsdk::account
