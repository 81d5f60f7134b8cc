#include "account/tribes/tribe_mgr.h"

#include "account/session/on_worker.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

constexpr std::size_t kLongestName = 128;  // UTF-16 code units

}  // namespace

void TribeMgr::GetAllClass(const biz::IMNothing&, biz::IMCallback<biz::IMTribeClasses> done) {
  if (state_->closed) return done(NotLoggedIn(), {});
  done({}, {{{1, L"Friends"},
             {2, L"Family"},
             {3, L"Work"},
             {4, L"Study"},
             {5, L"Hobbies"},
             {6, L"Trade"},
             {0, L"Others"}}});
}

void TribeMgr::SetTribeName(const biz::IMTribeText& request, biz::IMCallback<> done) {
  if (request.str.empty()) return done({biz::kEngineEmpty, 0, L"the name is empty"});
  if (base::Utf16Length(request.str) > kLongestName) {
    return done({biz::kEngineTooLarge, 0, L"the name is too long"});
  }
  AskServer(state_, link::SetTribeName{request.tribeid, request.str}, std::move(done));
}

}  // namespace imsdk::account
