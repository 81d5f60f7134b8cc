#include "account/conversations/chat_mgr.h"

#include <algorithm>
#include <optional>

#include "account/conversations/conversation.h"
#include "account/session/on_worker.h"
#include "kexbase/distinct.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

// The account's own conversation of these kinds that `cid` names; nothing when there is none.
std::optional<biz::IMConversationID> Known(const ChatState& chat, const ChatKinds& kinds,
                                           const biz::IMConversationID& cid) {
  if (std::find(kinds.begin(), kinds.end(), cid.type) == kinds.end()) return std::nullopt;
  if (cid.is_tribe()) {
    if (cid.tribe.id == 0 || !chat.Knows(cid)) return std::nullopt;
    return biz::IMConversationID(cid.tribe);
  }
  if (cid.is_user() && !CanNameUser(cid.user)) return std::nullopt;
  for (const biz::IMCIDType kind : kinds) {
    const biz::IMConversationID known(WellFormed(cid.user), kind);
    if (cid.is_user() || chat.Knows(known)) return known;
  }
  return std::nullopt;
}

}  // namespace

bool CanNameUser(const biz::IMUserID& user) { return user.valid() && link::CheckBounds(user).ok(); }

template <class Interface>
RefPtr<biz::IIMConversation> ChatMgr<Interface>::GetConversation(const biz::IMConversationID& cid) {
  if (account_.state->closed) return {};
  const auto known = Known(account_.state->chat, kinds_, cid);
  return known ? RefPtr<biz::IIMConversation>(new Conversation(account_, *known))
               : RefPtr<biz::IIMConversation>();
}

template <class Interface>
void ChatMgr<Interface>::GetUnreadCounts(const biz::IMConversations& request,
                                         biz::IMCallback<biz::IMUnreads> done) {
  if (account_.state->closed) return done(NotLoggedIn(), {});
  const ChatState& chat = account_.state->chat;
  if (request.cids.empty()) return done({}, {chat.Conversations(kinds_)});
  biz::IMUnreads unreads;
  for (const auto& cid : base::Distinct(request.cids)) {
    const auto known = Known(chat, kinds_, cid);
    unreads.unreads.push_back({cid, known ? chat.Unread(*known) : 0});
  }
  done({}, unreads);
}

template <class Interface>
void ChatMgr<Interface>::SearchMsg(const biz::IMSearchRequest& request,
                                   biz::IMCallback<biz::IMSearchPage> done) {
  Search<biz::IMSearchPage>(account_.state, request, std::move(done),
                            [kinds = kinds_](AccountState& here, const auto& kept) {
                              return here.store.search().SearchAll(kinds, kept);
                            });
}

template <class Interface>
void ChatMgr<Interface>::SearchConversations(const biz::IMSearchRequest& request,
                                             biz::IMCallback<biz::IMConversations> done) {
  Search<biz::IMConversations>(
      account_.state, request, std::move(done),
      [kinds = kinds_](AccountState& here, const auto& kept) {
        return biz::IMConversations{here.store.search().Conversations(kinds, kept)};
      });
}

template <class Interface>
void ChatMgr<Interface>::SetNewMsgMaxCache(const biz::IMMaxCacheRequest& request,
                                           biz::IMCallback<> done) {
  if (account_.state->closed) return done(NotLoggedIn());
  account_.state->chat.SetMaxCache(request.maxmsgcount);
  done({});
}

template <class Interface>
void ChatMgr<Interface>::GetRoamStatus(const biz::IMNothing&,
                                       biz::IMCallback<biz::IMRoamStatus> done) {
  AskServer(account_.state, link::GetRoaming{}, std::move(done));
}

template <class Interface>
void ChatMgr<Interface>::SetRoamStatus(const biz::IMSetRoamRequest& request,
                                       biz::IMCallback<> done) {
  if (request.roamstatus != biz::kRoamingOff && request.roamstatus != biz::kRoamingOn) {
    return done({biz::kEngineRefused, 0, L"there is no such status"});
  }
  AskServer(account_.state, link::SetRoaming{request.roamstatus}, std::move(done));
}

template class ChatMgr<biz::IIMSingleChatMgr>;
template class ChatMgr<biz::IIMTribeChatMgr>;
template class ChatMgr<biz::IIMVirtualChatMgr>;

}  // namespace imsdk::account
