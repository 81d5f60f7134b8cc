#include "account/conversations/conversation.h"

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
      state(), biz::IMNothing{}, std::move(done),
      [cid = cid_, arrival](AccountState& here, const auto&) { here.store.MarkRead(cid, arrival); },
      [cid = cid_, reporter = account_.reporter](AccountState&) { reporter->TellRead(cid); });
}

void Conversation::GetUnreadCount(const biz::IMNothing&, biz::IMCallback<biz::IMCount> done) {
  if (state()->closed) return done(NotLoggedIn(), {});
  done({}, {state()->chat.Unread(cid_)});
}

void Conversation::GetReadedBoundary(const biz::IMNothing& request,
                                     biz::IMCallback<biz::IMMsgPosition> done) {
  Query<biz::IMMsgPosition>(state(), request, std::move(done),
                            [cid = cid_](AccountState& here, const auto&) {
                              ConversationTable& table = here.store.conversations();
                              const Position boundary = table.ReadBoundary(table.Find(cid));
                              return biz::IMMsgPosition{boundary.msgtime, boundary.msgid};
                            });
}

void Conversation::SendMsg(const biz::IMSendRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kSend, done)) return;
  if (request.tribeat.atmsgtype != biz::kAtNobody) {
    if (Refuses(Ability::kMention, done)) return;
    if (const auto why = CheckMention(request.tribeat); !why.ok()) return done(why);
    if (const auto why = state()->line->Can<link::ReadMentions>(); !why.ok()) return done(why);
  }
  account_.outbox->Send(cid_, request, std::move(done));
}

void Conversation::ReSendMsg(const biz::IMResendRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kSend, done)) return;
  done(account_.outbox->Resend(cid_, request));
}

void Conversation::WithdrawMsg(const biz::IMWithdrawRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kSend, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.reporter->Withdraw(cid, kept.msgid, answer);
       });
}

void Conversation::GetFlagsMyMsgReaded(const biz::IMMsgsRequest& request,
                                       biz::IMCallback<biz::IMReadFlags> done) {
  if (Refuses(Ability::kReportRead, done)) return;
  Query<biz::IMReadFlags>(state(), request, std::move(done),
                          [cid = cid_](AccountState& here, const auto& kept) {
                            return biz::IMReadFlags{here.store.PeerReadFlags(cid, kept.msgids)};
                          });
}

void Conversation::SetFlagsPeerMsgReaded(const biz::IMMsgsRequest& request,
                                         biz::IMCallback<> done) {
  if (Refuses(Ability::kReportRead, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.reporter->ReportRead(cid, kept.msgids, answer);
       });
}

void Conversation::ShieldAutoReply(const biz::IMShieldRequest& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kShield, done)) return;
  Change(state(), request, std::move(done), [cid = cid_](AccountState& here, const auto& kept) {
    here.store.conversations().SetShieldAutoReply(cid, kept.setignore);
  });
}

void Conversation::AddSysMsg(const biz::IMNote& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kNote, done)) return;
  if (request.text.empty()) return done({biz::kEngineEmpty, 0, L"the note is empty"});
  biz::IMMessage note;
  note.cid = cid_;
  // A tribe has no peer that could seem to have sent it.
  note.fromid = cid_.is_tribe() ? state()->self : cid_.user;
  if (!cid_.is_tribe()) note.toid = state()->self;
  note.msgstatus = biz::kMsgReceived;
  note.readflag = biz::kMsgRead;
  note.extinfo.syschatmsg = 1;
  note.extinfo.fixmsgread = 1;
  note.msgtime = note.svrtime = base::Time::Now().ToMilliseconds();
  note.msgid = state()->environment->ids->Next();
  Change<biz::IMMessage>(
      state(), request,
      [done = std::move(done)](const biz::ResultCode& result, const auto&) { done(result); },
      [note](AccountState& here, const auto& kept) {
        biz::IMMessage with_text = note;
        with_text.msgbody = kept.text;
        here.store.AddIncoming(with_text);
        return with_text;
      },
      [](AccountState& here, const biz::IMMessage& added) {
        here.chat.AddSeen(added);
        if (added.cid.is_tribe()) {
          here.tribe_events.on_receive_new_msg({added.cid.tribe}, {added});
        } else {
          here.events.on_receive_new_msg({added.cid.user}, {added});
        }
      });
}

}  // namespace imsdk::account
