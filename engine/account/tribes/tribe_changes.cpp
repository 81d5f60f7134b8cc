#include "account/tribes/tribe_changes.h"

#include <string>
#include <utility>

#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

std::int32_t Number(const std::wstring& text) {
  int number = 0;
  base::StringToInt(base::WideToUTF8(text), &number);
  return number;
}

struct InfoChange {
  const biz::IMUserID& actor;
  const biz::IMUserID& self;
  biz::IMTribeInfo& tribe;

  void operator()(const link::TribeJoined& joined) const { tribe.members = joined.members; }
  void operator()(const link::TribeLeft& left) const { tribe.members = left.members; }
  void operator()(const link::TribeLevelChanged& changed) const {
    if (changed.user == self) tribe.mine.level = changed.level;
  }
  void operator()(const link::TribeTransferred& transferred) const {
    tribe.owner = transferred.owner;
    if (actor == self) tribe.mine.level = biz::kTribeManager;
    if (transferred.owner == self) tribe.mine.level = biz::kTribeOwner;
  }
  void operator()(const link::TribeInfoChanged& changed) const {
    for (const auto& [key, value] : changed.detail) Set(key, value);
  }
  void operator()(const link::TribeMemberChanged& changed) const {
    const auto nickname = changed.detail.find(biz::kTribeUserKeyNickname);
    if (changed.user == self && nickname != changed.detail.end()) {
      tribe.mine.nickname = nickname->second;
    }
  }
  void operator()(const link::TribeEnabled& changed) const { tribe.enabled = changed.enabled; }
  void operator()(const link::TribeVisitorsCleared&) const {}

  void Set(biz::TribeModifyKey key, const std::wstring& value) const {
    switch (key) {
      case biz::kTribeKeyName:
        tribe.name = value;
        return;
      case biz::kTribeKeyDescription:
        tribe.description = value;
        return;
      case biz::kTribeKeyPortrait:
        tribe.portrait = value;
        return;
      case biz::kTribeKeyClass:
        tribe.classtype = Number(value);
        return;
      case biz::kTribeKeyBulletin:
        tribe.bulletin = value;
        return;
      case biz::kTribeKeyAuthType:
        tribe.authtype = static_cast<biz::TribeAuthType>(Number(value));
        return;
      case biz::kTribeKeyOpenHistory:
        tribe.open_history = Number(value) != 0;
        return;
      case biz::kTribeKeyVisitors:
        tribe.visitors = Number(value) != 0;
        return;
      case biz::kTribeKeyAtAll:
        tribe.atall = static_cast<biz::TribeAtAllPermission>(Number(value));
        return;
      case biz::kTribeKeyLevel:
        tribe.level = Number(value);
        return;
      case biz::kTribeKeyNtfImage:
        tribe.ntfimage = value;
        return;
      case biz::kTribeKeyBusinessImage:
        tribe.businessimage = value;
        return;
      case biz::kTribeKeyJoinPassword:
        return;  // nobody is told what it is
    }
  }
};

struct RosterChange {
  const biz::IMUserID& actor;
  Roster& roster;

  void operator()(const link::TribeJoined& joined) const { roster.Put(joined.member); }
  void operator()(const link::TribeLeft& left) const { roster.Remove(left.user); }
  void operator()(const link::TribeLevelChanged& changed) const {
    SetLevel(changed.user, changed.level);
  }
  void operator()(const link::TribeTransferred& transferred) const {
    SetLevel(actor, biz::kTribeManager);
    SetLevel(transferred.owner, biz::kTribeOwner);
  }
  void operator()(const link::TribeMemberChanged& changed) const {
    const biz::IMTribeMember* known = roster.Find(changed.user);
    if (!known) return;
    biz::IMTribeMember member = *known;
    for (const auto& [key, value] : changed.detail) {
      if (key == biz::kTribeUserKeyDisplay) member.display = value;
      if (key == biz::kTribeUserKeyName) member.name = value;
      if (key == biz::kTribeUserKeyPortrait) member.portrait = value;
    }
    roster.Put(std::move(member));
  }
  template <class Other>
  void operator()(const Other&) const {}

  void SetLevel(const biz::IMUserID& user, biz::TribeMemberLevel level) const {
    const biz::IMTribeMember* known = roster.Find(user);
    if (!known) return;
    biz::IMTribeMember member = *known;
    member.level = level;
    roster.Put(std::move(member));
  }
};

struct Telling {
  const biz::IMTribeEvents& events;
  const biz::IMTribeID& tribe;
  const biz::IMUserID& actor;

  void operator()(const link::TribeJoined& joined) const {
    events.on_join(tribe, actor, joined.member);
  }
  void operator()(const link::TribeLeft& left) const {
    (left.kicked ? events.on_kick_member : events.on_quit)(tribe, actor, left.user);
  }
  void operator()(const link::TribeLevelChanged& changed) const {
    events.on_member_chg_level(tribe, actor, changed.user, changed.level);
  }
  void operator()(const link::TribeTransferred& transferred) const {
    events.on_transfer(tribe, actor, transferred.owner);
  }
  // What has an event of its own and changed alone is told by that one.
  void operator()(const link::TribeInfoChanged& changed) const {
    const auto& detail = changed.detail;
    if (detail.size() == 1 && detail.contains(biz::kTribeKeyBulletin)) {
      return events.on_bulletin_update(tribe);
    }
    const auto image = detail.find(biz::kTribeKeyNtfImage);
    if (image != detail.end()) events.on_ntf_image(tribe, image->second);
    if (image == detail.end() || detail.size() > 1) events.on_base_info_change(tribe, detail);
  }
  void operator()(const link::TribeMemberChanged& changed) const {
    events.on_member_base_info_change(tribe, changed.user, changed.detail);
  }
  void operator()(const link::TribeEnabled& changed) const {
    if (changed.enabled) return events.on_enabled(tribe);
    events.on_close(tribe, actor, {});
  }
  void operator()(const link::TribeVisitorsCleared&) const {
    events.on_clear_visitor(tribe, actor, {});
  }
};

}  // namespace

void ChangeTribeInfo(const link::TribeHappening& happening, const biz::IMUserID& self,
                     biz::IMTribeInfo* tribe) {
  std::visit(InfoChange{happening.actor, self, *tribe}, happening.change);
}

void ChangeRoster(const link::TribeHappening& happening, Roster* roster) {
  std::visit(RosterChange{happening.actor, *roster}, happening.change);
}

void RaiseTribeChange(const biz::IMTribeEvents& events, const link::TribeHappening& happening) {
  std::visit(Telling{events, happening.tribe, happening.actor}, happening.change);
}

}  // namespace imsdk::account
