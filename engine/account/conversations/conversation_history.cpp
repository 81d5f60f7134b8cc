#include <optional>

#include "account/conversations/conversation.h"

namespace imsdk::account {

namespace {

template <class Request, class Remove>
void Delete(const std::shared_ptr<AccountState>& state, const biz::IMConversationID& cid,
            const Request& request, Remove remove, biz::IMCallback<Removed> done) {
  Change<Removed>(
      state, request, std::move(done),
      [remove = std::move(remove)](AccountState& here, const Request& kept) {
        return remove(here.store, kept);
      },
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
      state, cid, biz::IMNothing{},
      [cid, from](MessageStore& store, const auto&) {
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
    return Pass(request, std::move(done),
                [](const auto& account, const auto& cid, const auto& kept, auto answer) {
                  account.roamer->LocalPage(cid, kept, answer);
                });
  }
  Query<biz::IMMessagePage>(
      state(), request, std::move(done),
      [cid = cid_](AccountState& here, const auto& kept) { return here.store.Page(cid, kept); });
}

void Conversation::GetRemoteHisMsg(const biz::IMPageRequest& request,
                                   biz::IMCallback<biz::IMMessagePage> done) {
  if (Refuses(Ability::kRoam, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.roamer->RemotePage(cid, kept, answer);
       });
}

void Conversation::RoamMsg(const biz::IMRoamRequest& request, biz::IMCallback<biz::IMRoamed> done) {
  if (Refuses(Ability::kRoam, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto& kept, auto answer) {
         account.roamer->Roam(cid, kept, answer);
       });
}

void Conversation::ClearRoamedTime(const biz::IMNothing& request, biz::IMCallback<> done) {
  if (Refuses(Ability::kRoam, done)) return;
  Pass(request, std::move(done),
       [](const auto& account, const auto& cid, const auto&, auto answer) {
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
  Query<biz::IMMessagePage>(state(), request, biz::IMCallback<biz::IMMessagePage>(answer),
                            [cid = cid_](AccountState& here, const auto& kept) {
                              biz::IMMessagePage page;
                              page.outofcache = true;
                              if (auto found = here.store.Find(cid, kept.msgid, kept.fromid))
                                page.msgs.push_back(std::move(*found));
                              return page;
                            });
}

void Conversation::SearchMsg(const biz::IMSearchRequest& request,
                             biz::IMCallback<biz::IMSearchPage> done) {
  Search<biz::IMSearchPage>(state(), request, std::move(done),
                            [cid = cid_](AccountState& here, const auto& kept) {
                              return here.store.search().Search(cid, kept);
                            });
}

void Conversation::GetMsgPicture(const biz::IMPictureRequest& request,
                                 biz::IMCallback<biz::IMPictures> done) {
  Search<biz::IMPictures>(state(), request, std::move(done),
                          [cid = cid_](AccountState& here, const auto& kept) {
                            return biz::IMPictures{here.store.search().Pictures(cid, kept)};
                          });
}

void Conversation::DeleteLocalMsg(const biz::IMDeleteRequest& request,
                                  biz::IMCallback<biz::IMCount> done) {
  if (request.all) return DeleteAllFrom(state(), cid_, {}, 0, std::move(done));
  Delete(
      state(), cid_, request,
      [cid = cid_](MessageStore& store, const biz::IMDeleteRequest& kept) {
        return store.Delete(cid, kept.msgids);
      },
      [done = std::move(done)](const biz::ResultCode& result, const Removed& removed) {
        done(result, {removed.count});
      });
}

}  // namespace imsdk::account
