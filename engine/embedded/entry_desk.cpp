#include "embedded/entry_desk.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "embedded/membership.h"
#include "embedded/tribe_rights.h"

namespace imsdk::embedded {

namespace {

// A tribe of more administrators tells the first ones; all of them see the request.
constexpr std::int64_t kMostManagersTold = 100;
constexpr const wchar_t* kAnnouncer = L"tribe";

biz::ResultCode BlackListed() {
  return Refusal(biz::kTribeBlackListed, L"the user is on the tribe's black list");
}

biz::ResultCode NoSuchRequest() {
  return Refusal(biz::kTribeNoSuchRequest, L"there is no such verification message");
}

// What the announcement of a message says in a sentence.
std::wstring SentenceOf(const StoredVerify& verify, const std::wstring& sender,
                        const std::wstring& subject, const std::wstring& tribe) {
  switch (verify.type) {
    case biz::kVerifyJoinAsked:
      return sender + L" asks to join " + tribe;
    case biz::kVerifyInvited:
      return sender + L" invites you to join " + tribe;
    case biz::kVerifyJoinAllowed:
      return L"Your request to join " + tribe + L" was allowed";
    case biz::kVerifyJoinRefused:
      return L"Your request to join " + tribe + L" was refused";
    case biz::kVerifyInviteAccepted:
      return subject + L" accepted your invitation to " + tribe;
    case biz::kVerifyInviteRefused:
      return subject + L" declined your invitation to " + tribe;
  }
  return tribe;
}

biz::TribeVerifyType Decided(bool invitation, bool allowed) {
  if (invitation) return allowed ? biz::kVerifyInviteAccepted : biz::kVerifyInviteRefused;
  return allowed ? biz::kVerifyJoinAllowed : biz::kVerifyJoinRefused;
}

}  // namespace

void EntryDesk::Put(Effects& effects, const StoredTribe& tribe, StoredVerify verify) {
  if (verify.is_open()) {
    for (const StoredVerify& open : store_.verify().Open(tribe.conversation, verify.subject)) {
      if (open.type != verify.type || open.sender != verify.sender) continue;
      return store_.verify().SetWords(open.id, verify.words);
    }
  }
  verify.conversation = tribe.conversation;
  verify.msgtime = store_.Now();
  verify.id = store_.verify().Add(verify);
  Announce(effects, tribe, verify);
}

void EntryDesk::Announce(Effects& effects, const StoredTribe& tribe, const StoredVerify& verify) {
  const auto info = store_.tribes().Info(tribe, 0, TribeView::kFormer);
  const std::wstring sentence = SentenceOf(verify, store_.accounts().User(verify.sender).nick,
                                           store_.accounts().User(verify.subject).nick, info.name);
  const std::wstring others = L"{\"tribeid\":\"" + std::to_wstring(tribe.id.id) +
                              L"\",\"msgid\":\"" + std::to_wstring(verify.id) + L"\",\"type\":" +
                              std::to_wstring(verify.type) + L"}";
  const auto readers = verify.audience > 0
                           ? std::vector<std::int64_t>{verify.audience}
                           : store_.members().Managers(tribe.conversation, kMostManagersTold);
  for (const std::int64_t reader : readers) {
    const biz::IMUserID to = store_.accounts().User(reader);
    // Where a person has this name nothing is announced; the message is there all the same.
    auto told = post_.Answer(
        {}, Publication{biz::kCIDSystem, {to.appkey, kAnnouncer}, to, sentence, others});
    effects.Add(std::move(told.effects));
  }
}

biz::ResultCode EntryDesk::CheckJoin(const Caller& caller, const StoredTribe& tribe,
                                     const std::wstring& password) {
  if (store_.members().IsBlack(tribe.conversation, caller.account)) {
    return Refusal(biz::kTribeBlackListed, L"the account is on the tribe's black list");
  }
  if (!tribe.enabled) return TribeIsClosed();
  if (tribe.auth == biz::kJoinClosed) {
    return Refusal(biz::kTribeJoinClosed, L"nobody joins this tribe without an invitation");
  }
  if (tribe.auth != biz::kJoinByPassword) return {};
  const auto now = PasswordTries::Clock::now();
  if (!tries_.MayTry(caller.account, now)) {
    return Refusal(biz::kTribeTooManyTries, L"too many passwords were tried; wait a while");
  }
  const std::wstring right = store_.tribes().Password(tribe.id);
  if (right.empty() || right != password) {
    tries_.Failed(caller.account, now);
    return Refusal(biz::kTribeWrongPassword, L"the password to join is wrong");
  }
  tries_.Succeeded(caller.account);
  return {};
}

Outcome<biz::IMJoinedTribe> EntryDesk::Answer(const Caller& caller,
                                              const link::JoinTribe& request) {
  auto tribe = store_.tribes().Find(request.join.tribeid);
  if (!tribe) return UnknownTribe();
  if (store_.members().Find(tribe->conversation, caller.account)) {
    return Refusal(biz::kTribeAlreadyMember, L"the account is a member already");
  }
  if (!tribe->in_sight()) return UnknownTribe();
  if (const auto why = CheckJoin(caller, *tribe, request.join.password); !why.ok()) return why;
  Outcome<biz::IMJoinedTribe> outcome;
  if (tribe->auth != biz::kJoinByApproval) {
    Enter(store_, outcome.effects, *tribe, caller.account, caller.account);
    return outcome;
  }
  outcome.reply.waiting = true;
  Put(outcome.effects, *tribe,
      {.audience = -tribe->conversation,
       .sender = caller.account,
       .subject = caller.account,
       .type = biz::kVerifyJoinAsked,
       .words = request.join.authinfo});
  return outcome;
}

Outcome<link::Nothing> EntryDesk::Answer(const Caller& caller, const link::InviteToTribe& request) {
  Admitted admitted = Admit(store_, caller, request.invitation.tribeid, TribeAct::kInvite);
  if (!admitted.ok()) return admitted.result;
  StoredTribe& tribe = admitted.tribe;
  std::set<std::int64_t> invited;
  for (const biz::IMUserID& user : request.invitation.users) {
    const auto account = store_.accounts().Find(user);
    if (!account || account->is_virtual()) return UnknownUser();
    if (store_.members().IsBlack(tribe.conversation, account->id)) return BlackListed();
    if (!store_.members().Find(tribe.conversation, account->id)) invited.insert(account->id);
  }
  if (request.invitation.users.empty()) {
    return Failure(biz::kEngineEmpty, L"nobody is invited");
  }
  if (invited.empty()) {
    return Refusal(biz::kTribeAlreadyMember, L"who is invited is a member already");
  }
  Outcome<link::Nothing> outcome;
  for (const std::int64_t account : invited) {
    if (tribe.is_multi_chat()) {
      Enter(store_, outcome.effects, tribe, account, caller.account);
      continue;
    }
    Put(outcome.effects, tribe,
        {.audience = account,
         .sender = caller.account,
         .subject = account,
         .type = biz::kVerifyInvited,
         .words = request.invitation.authinfo});
  }
  return outcome;
}

std::optional<StoredVerify> EntryDesk::InSight(const Caller& caller, const StoredTribe& tribe,
                                               const biz::IMTribeVerifyAction& action) {
  auto verify = store_.verify().Find(action.msgid);
  if (!verify || verify->conversation != tribe.conversation) return std::nullopt;
  if (!action.fromid.empty() && store_.accounts().User(verify->sender) != action.fromid) {
    return std::nullopt;
  }
  if (verify->audience > 0) {
    return verify->audience == caller.account ? verify : std::nullopt;
  }
  const auto self = store_.members().Find(tribe.conversation, caller.account);
  return self && self->level >= biz::kTribeManager ? verify : std::nullopt;
}

Outcome<link::Nothing> EntryDesk::Answer(const Caller& caller, const link::DecideVerify& request) {
  const bool allowed = request.decision == link::Decision::kAllow;
  StoredTribe tribe;
  if (request.invitation) {
    // Who is invited sees the tribe by that alone.
    const auto found = store_.tribes().Find(request.action.tribeid);
    if (!found) return NoSuchRequest();
    tribe = *found;
  } else {
    const Admitted admitted = Admit(store_, caller, request.action.tribeid, TribeAct::kDecide);
    if (!admitted.ok()) return admitted.result;
    tribe = admitted.tribe;
  }
  auto verify = InSight(caller, tribe, request.action);
  if (!verify || (verify->audience > 0) != request.invitation) return NoSuchRequest();
  const bool answers_invitation =
      verify->type == biz::kVerifyInvited || verify->type >= biz::kVerifyInviteAccepted;
  if (answers_invitation != request.invitation) return NoSuchRequest();
  if (!verify->is_open()) {
    // What is told to who asked or invited is nothing to decide on.
    const bool own = request.invitation && verify->subject != caller.account;
    return own ? NoSuchRequest() : Refusal(biz::kTribeAlreadyDecided, L"this was decided already");
  }
  if (allowed && !tribe.enabled) return TribeIsClosed();
  if (allowed && store_.members().IsBlack(tribe.conversation, verify->subject)) {
    return BlackListed();
  }

  Outcome<link::Nothing> outcome;
  verify->type = Decided(request.invitation, allowed);
  verify->manager = caller.account;
  if (!request.action.authinfo.empty()) verify->words = request.action.authinfo;
  store_.verify().Decide(*verify);
  if (request.decision == link::Decision::kRefuseAndBlack && !request.invitation) {
    store_.members().SetBlack(tribe.conversation, verify->subject, true, store_.Now());
  }
  if (allowed) {
    Enter(store_, outcome.effects, tribe, verify->subject,
          request.invitation ? verify->sender : caller.account);
  }
  // Who asked or invited hears what became of it.
  StoredVerify told = *verify;
  told.audience = verify->sender;
  Put(outcome.effects, tribe, std::move(told));
  return outcome;
}

Outcome<biz::IMTribeVerifyMsgs> EntryDesk::Answer(const Caller& caller,
                                                  const link::GetVerifyMsgs& request) {
  return biz::IMTribeVerifyMsgs{store_.verify().Page(caller.account, request.page)};
}

Outcome<link::Nothing> EntryDesk::Answer(const Caller& caller, const link::DeleteVerify& request) {
  const auto tribe = store_.tribes().Find(request.action.tribeid);
  const auto verify = tribe ? InSight(caller, *tribe, request.action) : std::nullopt;
  if (!verify) return NoSuchRequest();
  store_.verify().Delete(caller.account, verify->id);
  return {};
}

}  // namespace imsdk::embedded
