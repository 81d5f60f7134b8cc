#include "embedded/contact_request_desk.h"

#include "embedded/contact_entries.h"

namespace imsdk::embedded {

namespace {

constexpr std::int64_t kMostOpen = 500;

biz::ResultCode NoSuchRequest() {
  return Refusal(biz::kContactNoSuchRequest, L"there is no such request for this account");
}

// What whoever asked hears of a decision: not that it is on the black list.
biz::IMContactVerifyType AnswerTo(biz::IMContactVerifyType decision) {
  if (decision == biz::kContactAgreed) return biz::kContactAnsweredYes;
  return decision == biz::kContactAgreedAndAdded ? biz::kContactAnsweredAndAdded
                                                 : biz::kContactAnsweredNo;
}

bool IsDecision(biz::IMContactVerifyType type) {
  return type >= biz::kContactAgreed && type <= biz::kContactReported;
}

}  // namespace

Outcome<link::Nothing> ContactRequestDesk::Answer(const Caller& caller,
                                                  const link::AskContact& request) {
  const biz::IMContactRequest& wanted = request.request;
  const auto user = store_.contacts().User(wanted.userid);
  if (!user) return UnknownUser();
  if (user->account == caller.account) return IsYourself();
  if (store_.contacts().IsBlack(user->account, caller.account)) {
    return Refusal(biz::kContactBlackListed, L"the user takes no requests of this account");
  }
  if (store_.contacts().Find(caller.account, user->account)) {
    return Refusal(biz::kContactAlready, L"the user is a contact already");
  }
  StoredContactVerify verify{.audience = user->account, .sender = caller.account};
  if (const auto open = store_.contact_verify().Open(user->account, caller.account)) {
    verify = *open;
  } else if (store_.contact_verify().CountOpen(caller.account) >= kMostOpen) {
    return Refusal(biz::kContactTooMany, L"too many requests of this account are undecided");
  }
  verify.type = biz::kContactAsked;
  verify.msgtime = store_.Now();
  verify.words = wanted.authinfo;
  verify.gid = wanted.gid;
  if (verify.id == 0) {
    verify.id = store_.contact_verify().Add(verify);
  } else {
    store_.contact_verify().Change(verify);
  }
  Outcome<link::Nothing> outcome;
  TellVerify(store_.mail(), outcome.effects, user->account, verify.id);
  return outcome;
}

std::optional<StoredContactVerify> ContactRequestDesk::Named(const Caller& caller,
                                                             const biz::IMContactAction& action) {
  const auto from = store_.accounts().Find(action.fromid);
  if (action.msgid == 0) {
    return from ? store_.contact_verify().Open(caller.account, from->id) : std::nullopt;
  }
  auto verify = store_.contact_verify().Find(caller.account, action.msgid);
  const bool matches = action.fromid.empty() || (verify && from && verify->sender == from->id);
  return matches ? verify : std::nullopt;
}

biz::ResultCode ContactRequestDesk::CarryOut(const Caller& caller,
                                             const StoredContactVerify& verify, Effects& effects) {
  if (verify.type == biz::kContactBlacked) {
    PutBlack(store_, effects, caller.account, verify.sender, true);
  }
  std::vector<NewContact> fresh;
  if (verify.type == biz::kContactAgreed || verify.type == biz::kContactAgreedAndAdded) {
    fresh.push_back({verify.sender, caller.account, verify.gid});
  }
  if (verify.type == biz::kContactAgreedAndAdded) {
    fresh.push_back({caller.account, verify.sender});
  }
  for (const NewContact& contact : fresh) {
    if (const auto room = CheckRoom(store_, contact); !room.ok()) return room;
  }
  // Whoever is welcome is not on the black list.
  if (!fresh.empty()) PutBlack(store_, effects, caller.account, verify.sender, false);
  for (const NewContact& contact : fresh) PutContact(store_, effects, contact);
  return {};
}

Outcome<link::Nothing> ContactRequestDesk::Answer(const Caller& caller,
                                                  const link::DecideContact& request) {
  if (!IsDecision(request.type)) {
    return Failure(biz::kEngineRefused, L"the value is not usable");
  }
  auto verify = Named(caller, request.action);
  Outcome<link::Nothing> outcome;
  if (!verify) {
    // The black list takes whoever wrote to the account in another way, too.
    const auto user = store_.contacts().User(request.action.fromid);
    const bool bare = request.type == biz::kContactBlacked && request.action.msgid == 0 && user;
    if (!bare) return NoSuchRequest();
    if (user->account == caller.account) return IsYourself();
    PutBlack(store_, outcome.effects, caller.account, user->account, true);
    return outcome;
  }
  if (!verify->is_open()) {
    return Refusal(biz::kContactAlreadyDecided, L"this was decided already");
  }
  verify->type = request.type;
  if (const auto done = CarryOut(caller, *verify, outcome.effects); !done.ok()) return done;
  store_.contact_verify().Change(*verify);
  TellVerify(store_.mail(), outcome.effects, caller.account, verify->id);
  if (verify->is_open()) return outcome;
  StoredContactVerify told{.audience = verify->sender,
                           .sender = caller.account,
                           .type = AnswerTo(verify->type),
                           .msgtime = store_.Now(),
                           .words = request.action.authinfo,
                           .gid = verify->gid};
  told.id = store_.contact_verify().Add(told);
  TellVerify(store_.mail(), outcome.effects, told.audience, told.id);
  return outcome;
}

Outcome<biz::IMContactVerifyMsgs> ContactRequestDesk::Answer(
    const Caller& caller, const link::GetContactVerify& request) {
  return biz::IMContactVerifyMsgs{store_.contact_verify().Page(caller.account, request.page)};
}

Outcome<link::Nothing> ContactRequestDesk::Answer(const Caller& caller,
                                                  const link::DeleteContactVerify& request) {
  for (const biz::IMContactAction& action : request.actions.list) {
    if (const auto verify = Named(caller, action)) {
      store_.contact_verify().Delete(caller.account, verify->id);
    }
  }
  return {};
}

}  // namespace imsdk::embedded
