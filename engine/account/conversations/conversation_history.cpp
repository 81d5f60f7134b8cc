#include <optional>

#include "account/conversations/conversation.h"

namespace imsdk::account {

namespace {

void Delete(const std::shared_ptr<AccountState>& state, const biz::IMConversationID& cid,
            std::function<Removed(MessageStore&)> remove, biz::IMCallback<Removed> done) {
  Change<Removed>(
      state, std::move(done),
      [remove = std::move(remove)](AccountState& here) { return remove(here.store); },
      [cid](AccountState& here, const Removed& removed) {
        here.chat.Remove(cid, removed.unread, removed.newest);
      });
}

// Part by part, each a task of its own, so that a long conversation does not keep others waiting.
// Every part goes on where the one before it ended: what comes meanwhile stays.
void DeleteAllFrom(const std::shared_ptr<AccountState>& state, const biz::IMConversationID& cid,
                   const std::optional<Position>& from, std::int32_t before,
                   biz::IMCallback<biz::IMCount> done) {
  Delete(
      state, cid,
      [cid, from](MessageStore& store) {
        return store.DeleteNext(cid, from ? *from : store.BeginDeleteAll(cid));
      },
      [state, cid, before, done = std::move(done)](const biz::ResultCode& result,
                                                   const Removed& removed) {
        const std::int32_t count = before + removed.count;
        if (!result.ok() || removed.count < kDeletedAtOnce) return done(result, {count});
        DeleteAllFrom(state, cid, removed.oldest, count, done);
      });
}

}  // namespace

void Conversation::GetLocalHisMsg(const biz::IMPageRequest& request,
                                  biz::IMCallback<biz::IMMessagePage> done) {
  if (request.autoroam && Allows(cid_.type, Ability::kRoam).ok()) {
    return Pass(std::move(done), [request](const auto& account, const auto& cid, auto answer) {
      account.roamer->LocalPage(cid, request, answer);
    });
  }
  Query<biz::IMMessagePage>(state(), std::move(done), [cid = cid_, request](AccountState& here) {
    return here.store.Page(cid, request);
  });
}

void Conversation::GetRemoteHisMsg(const biz::IMPageRequest& request,
                                   biz::IMCallback<biz::IMMessagePage> done) {
  if (Refuses(Ability::kRoam, done)) return;
  Pass(std::move(done), [request](const auto& account, const auto& cid, auto answer) {
    account.roamer->RemotePage(cid, request, answer);
  });
}

void Conversation::RoamMsg(const biz::IMRoamRequest& request, biz::IMCallback<biz::IMRoamed> done) {
  if (Refuses(Ability::kRoam, done)) return;
  Pass(std::move(done), [request](const auto& account, const auto& cid, auto answer) {
    account.roamer->Roam(cid, request, answer);
  });
}

void Conversation::ClearRoamedTime(const biz::IMNothing&, biz::IMCallback<> done) {
  if (Refuses(Ability::kRoam, done)) return;
  Pass(std::move(done), [](const auto& account, const auto& cid, auto answer) {
    account.roamer->Clear(cid, answer);
  });
}

void Conversation::SearchMsgByID(const biz::IMMsgRequest& request,
                                 biz::IMCallback<biz::IMMessagePage> done) {
  const auto answer = [done = std::move(done)](const biz::ResultCode& result,
                                               const biz::IMMessagePage& page) {
    if (!result.ok() || !page.msgs.empty()) return done(result, page);
    done({biz::kEngineNotFound, 0, L"there is no such message"}, {});
  };
  Query<biz::IMMessagePage>(state(), answer, [cid = cid_, request](AccountState& here) {
    biz::IMMessagePage page;
    page.outofcache = true;
    if (auto found = here.store.Find(cid, request.msgid)) page.msgs.push_back(std::move(*found));
    return page;
  });
}

void Conversation::SearchMsg(const biz::IMSearchRequest& request,
                             biz::IMCallback<biz::IMSearchPage> done) {
  if (const auto why = CheckSearch(request); !why.ok()) return done(why, {});
  Query<biz::IMSearchPage>(state(), std::move(done), [cid = cid_, request](AccountState& here) {
    return here.store.search().Search(cid, request);
  });
}

void Conversation::GetMsgPicture(const biz::IMPictureRequest& request,
                                 biz::IMCallback<biz::IMPictures> done) {
  Query<biz::IMPictures>(state(), std::move(done), [cid = cid_, request](AccountState& here) {
    return biz::IMPictures{here.store.search().Pictures(cid, request)};
  });
}

void Conversation::DeleteLocalMsg(const biz::IMDeleteRequest& request,
                                  biz::IMCallback<biz::IMCount> done) {
  if (request.all) return DeleteAllFrom(state(), cid_, {}, 0, std::move(done));
  Delete(
      state(), cid_,
      [cid = cid_, request](MessageStore& store) { return store.Delete(cid, request.msgids); },
      [done = std::move(done)](const biz::ResultCode& result, const Removed& removed) {
        done(result, {removed.count});
      });
}

}  // namespace imsdk::account
