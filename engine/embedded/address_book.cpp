#include "embedded/address_book.h"

namespace imsdk::embedded {

Found FindConversation(ServerStore& store, const Caller& caller, const biz::IMConversationID& cid) {
  Found found;
  if (cid.is_tribe()) {
    const auto tribe = store.tribes().Find(cid.tribe);
    if (tribe) found.stay = store.conversations().CurrentStay(caller.account, tribe->conversation);
    if (!found.stay) {
      found.result = NotAMember();
      return found;
    }
    found.conversation = tribe->conversation;
    found.open_history = tribe->open_history;
    found.closed = !tribe->enabled;
    return found;
  }
  const auto peer = store.accounts().Find(cid.user);
  if (!peer || peer->kind != cid.type) {
    found.result = UnknownUser();
    return found;
  }
  found.peer = peer->id;
  found.conversation = store.conversations().FindPair(caller.account, peer->id).value_or(0);
  return found;
}

}  // namespace imsdk::embedded
