#include "account/session/capabilities.h"

namespace imsdk::account {

biz::ResultCode Allows(biz::IMCIDType kind, Ability ability) {
  switch (kind) {
    case biz::kCIDUser:
      if (ability != Ability::kMention) return {};
      return {biz::kEngineRefused, 0, L"a single chat has no members to mention"};
    case biz::kCIDTribe:
      if (ability != Ability::kType && ability != Ability::kShield) return {};
      return {biz::kEngineRefused, 0, L"a tribe has no typing state and no automatic replies"};
    case biz::kCIDSystem:
    case biz::kCIDSubscribe:
      break;
  }
  return {biz::kEngineRefused, 0, L"a virtual conversation has no peer"};
}

}  // namespace imsdk::account
