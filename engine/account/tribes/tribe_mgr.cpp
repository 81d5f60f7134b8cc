#include "account/tribes/tribe_mgr.h"

namespace imsdk::account {

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

}  // namespace imsdk::account
