#include "account/conversations/conversation.h"

#include "kexbase/strings.h"
#include "kexbase/time.h"

namespace imsdk::account {

void Conversation::GetNewMsg(const biz::IMPageRequest& request,
                             biz::IMCallback<biz::IMMessagePage> done) {
  if (state()->closed) return done(NotLoggedIn(), {});
  done({}, state()->chat.NewMessages(cid_, request));
}

void Conversation::GetOfflineMsg(const biz::IMNothing&, biz::IMCallback<biz::IMMessagePage> done) {
  if (state()->closed) return done(NotLoggedIn(), {});
  done({}, state()->chat.OfflineMessages(cid_));
}

void Conversation::SetMsgRead(const biz::IMNothing&, biz::IMCallback<> done) {
  if (state()->closed) return done(NotLoggedIn());
  const std::int64_t arrival = state()->chat.MarkRead(cid_);
  if (arrival == 0) return done({});
  Change(
      state(), std::move(done),
      [cid = cid_, arrival](AccountState& here) { here.store.MarkRead(cid, arrival); },
      [cid = cid_, reporter = account_.reporter](AccountState&) { reporter->TellRead(cid); });
}

void Conversation::GetUnreadCount(const biz::IMNothing&, biz::IMCallback<biz::IMCount> done) {
  if (state()->closed) return done(NotLoggedIn(), {});
  done({}, {state()->chat.Unread(cid_)});
}

void Conversation::GetReadedBoundary(const biz::IMNothing&,
                                     biz::IMCallback<biz::IMMsgPosition> done) {
  Query<biz::IMMsgPosition>(state(), std::move(done), [cid = cid_](AccountState& here) {
    ConversationTable& table = here.store.conversations();
    const Position boundary = table.ReadBoundary(table.Find(cid));
    return biz::IMMsgPosition{boundary.msgtime, boundary.msgid};
  });
}

void Conversation::SendMsg(const biz::IMSendRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kSend, done)) return;
  done(account_.outbox->Send(cid_, request));
}

void Conversation::ReSendMsg(const biz::IMResendRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kSend, done)) return;
  done(account_.outbox->Resend(cid_, request));
}

void Conversation::WithdrawMsg(const biz::IMWithdrawRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kSend, done)) return;
  Pass(std::move(done), [msgid = request.msgid](const auto& account, const auto& cid, auto answer) {
    account.reporter->Withdraw(cid, msgid, answer);
  });
}

void Conversation::GetFlagsMyMsgReaded(const biz::IMMsgsRequest& request,
                                       biz::IMCallback<biz::IMReadFlags> done) {
  if (Refuses(Ability::kReportRead, done)) return;
  Query<biz::IMReadFlags>(state(), std::move(done), [cid = cid_, request](AccountState& here) {
    return biz::IMReadFlags{here.store.PeerReadFlags(cid, request.msgids)};
  });
}

void Conversation::SetFlagsPeerMsgReaded(const biz::IMMsgsRequest& request,
                                         biz::IMCallback<> done) {
  if (Refuses(Ability::kReportRead, done)) return;
  Pass(std::move(done), [request](const auto& account, const auto& cid, auto answer) {
    account.reporter->ReportRead(cid, request.msgids, answer);
  });
}

void Conversation::ShieldAutoReply(const biz::IMShieldRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kShield, done)) return;
  Change(state(), std::move(done), [cid = cid_, shield = request.setignore](AccountState& here) {
    here.store.conversations().SetShieldAutoReply(cid, shield);
  });
}

void Conversation::AddSysMsg(const biz::IMNote& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kNote, done)) return;
  if (request.text.empty()) return done({biz::kEngineEmpty, 0, L"the note is empty"});
  if (base::WideToUTF8(request.text).size() > link::kMaxBodyBytes) {
    return done({biz::kEngineTooLarge, 0, L"the note is too large"});
  }
  biz::IMMessage note;
  note.cid = cid_;
  // A tribe has no peer that could seem to have sent it.
  note.fromid = cid_.is_tribe() ? state()->self : cid_.user;
  if (!cid_.is_tribe()) note.toid = state()->self;
  note.msgstatus = biz::kMsgReceived;
  note.readflag = biz::kMsgRead;
  note.msgbody = request.text;
  note.extinfo.syschatmsg = 1;
  note.extinfo.fixmsgread = 1;
  note.msgtime = note.svrtime = base::Time::Now().ToMilliseconds();
  note.msgid = state()->environment->ids->Next();
  Change(
      state(), std::move(done), [note](AccountState& here) { here.store.AddIncoming(note); },
      [note](AccountState& here) {
        here.chat.AddSeen(note);
        if (note.cid.is_tribe()) {
          here.tribe_events.on_receive_new_msg({note.cid.tribe}, {note});
        } else {
          here.events.on_receive_new_msg({note.cid.user}, {note});
        }
      });
}

}  // namespace imsdk::account
