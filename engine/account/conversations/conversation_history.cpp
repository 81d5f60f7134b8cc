#include <optional>

#include "account/conversations/conversation.h"
#include "account/session/on_worker.h"

namespace imsdk::account {

namespace {

using RemovedCallback = std::function<void(const biz::ResultCode&, const Removed&)>;

void Delete(const std::shared_ptr<AccountState>& state, const ChatKey& key,
            std::function<Removed(MessageStore&)> remove, RemovedCallback done) {
  Change<Removed>(
      state, std::move(done),
      [remove = std::move(remove)](AccountState& here) { return remove(here.store); },
      [key](AccountState& here, const Removed& removed) {
        here.chat.Remove(key, removed.unread, removed.newest);
      });
}

// Part by part, each a task of its own, so that a long conversation does not keep others waiting.
// Every part goes on where the one before it ended: what comes meanwhile stays.
void DeleteAllFrom(const std::shared_ptr<AccountState>& state, const ChatKey& key,
                   const std::optional<Position>& from, std::int32_t before,
                   biz::IMCountCallback done) {
  Delete(
      state, key,
      [key, from](MessageStore& store) {
        return store.DeleteNext(key, from ? *from : store.BeginDeleteAll(key));
      },
      [state, key, before, done = std::move(done)](const biz::ResultCode& result,
                                                   const Removed& removed) {
        const std::int32_t count = before + removed.count;
        if (!result.ok() || removed.count < kDeletedAtOnce) return done(result, count);
        DeleteAllFrom(state, key, removed.oldest, count, done);
      });
}

}  // namespace

void Conversation::GetLocalHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) {
  if (request.autoroam && !key_.is_virtual()) {
    return OnWorker(
        state(),
        [roamer = account_.roamer, cid = key_.cid, request, done](AccountState&) {
          roamer->LocalPage(cid, request, done);
        },
        [done](const biz::ResultCode& why) { done(why, {}); });
  }
  Query<biz::IMMessagePage>(state(), std::move(done), [key = key_, request](AccountState& here) {
    return here.store.Page(key, request);
  });
}

void Conversation::GetRemoteHisMsg(const biz::IMPageRequest& request, biz::IMPageCallback done) {
  if (NeedsPeer(done)) return;
  OnWorker(
      state(),
      [roamer = account_.roamer, cid = key_.cid, request, done](AccountState&) {
        roamer->RemotePage(cid, request, done);
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

void Conversation::RoamMsg(const biz::IMRoamRequest& request, biz::IMRoamCallback done) {
  if (NeedsPeer(done)) return;
  OnWorker(
      state(),
      [roamer = account_.roamer, cid = key_.cid, request, done](AccountState&) {
        roamer->Roam(cid, request, done);
      },
      [done](const biz::ResultCode& why) { done(why, {}); });
}

void Conversation::ClearRoamedTime(biz::IMDoneCallback done) {
  if (NeedsPeer(done)) return;
  OnWorker(
      state(),
      [roamer = account_.roamer, cid = key_.cid, done](AccountState&) { roamer->Clear(cid, done); },
      done);
}

void Conversation::SearchMsgByID(std::int64_t msgid, biz::IMPageCallback done) {
  const auto answer = [done = std::move(done)](const biz::ResultCode& result,
                                               biz::IMMessagePage page) {
    if (!result.ok() || !page.msgs.empty()) return done(result, std::move(page));
    done({biz::kEngineNotFound, 0, L"there is no such message"}, {});
  };
  Query<biz::IMMessagePage>(state(), answer, [key = key_, msgid](AccountState& here) {
    biz::IMMessagePage page;
    page.outofcache = true;
    if (auto found = here.store.Find(key, msgid)) page.msgs.push_back(std::move(*found));
    return page;
  });
}

void Conversation::SearchMsg(const biz::IMSearchRequest& request, biz::IMSearchCallback done) {
  if (const auto why = CheckSearch(request); !why.ok()) return done(why, {});
  Query<biz::IMSearchPage>(state(), std::move(done), [key = key_, request](AccountState& here) {
    return here.store.search().Search(key, request);
  });
}

void Conversation::GetMsgPicture(const biz::IMPictureRequest& request,
                                 biz::IMPicturesCallback done) {
  Query<std::vector<biz::IMMsgPicture>>(state(), std::move(done),
                                        [key = key_, request](AccountState& here) {
                                          return here.store.search().Pictures(key, request);
                                        });
}

void Conversation::DeleteLocalMsg(const std::vector<std::int64_t>& msgids,
                                  biz::IMCountCallback done) {
  Delete(
      state(), key_,
      [key = key_, msgids](MessageStore& store) { return store.Delete(key, msgids); },
      [done = std::move(done)](const biz::ResultCode& result, const Removed& removed) {
        done(result, removed.count);
      });
}

void Conversation::DeleteAllLocalMsg(biz::IMCountCallback done) {
  DeleteAllFrom(state(), key_, {}, 0, std::move(done));
}

}  // namespace imsdk::account
