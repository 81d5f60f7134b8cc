#include "account/conversation.h"
#include "account/on_worker.h"

namespace imsdk::account {

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
  Delete([key = key_, msgids](MessageStore& store) { return store.Delete(key, msgids); },
         std::move(done));
}

void Conversation::DeleteAllLocalMsg(biz::IMCountCallback done) {
  Delete([key = key_](MessageStore& store) { return store.DeleteAll(key); }, std::move(done));
}

void Conversation::Delete(std::function<Removed(MessageStore&)> remove, biz::IMCountCallback done) {
  Change<Removed>(
      state(),
      [done = std::move(done)](const biz::ResultCode& result, const Removed& removed) {
        done(result, removed.count);
      },
      [remove = std::move(remove)](AccountState& here) { return remove(here.store); },
      [key = key_](AccountState& here, const Removed& removed) {
        here.chat.Remove(key, removed.unread, removed.newest);
      });
}

}  // namespace imsdk::account
