// The engine's tribes in the shapes that pages get them in.
#pragma once

#include "source/bridge/jsparams/triberecords.h"

namespace imsdk::bridge {

inline TribeBaseInfo ToTribeBaseInfo(const biz::IMTribeInfo& tribe) {
  return {tribe.name,     tribe.owner,     tribe.tribeid, tribe.description,
          tribe.portrait, tribe.classtype, tribe.level};
}

inline TribeSummary ToTribeSummary(const biz::IMTribeInfo& tribe) {
  return {tribe.tribeid, tribe.name, tribe.portrait, tribe.mine.unread, tribe.type};
}

inline ShallowTribe ToShallowTribe(const biz::IMTribeInfo& tribe) {
  return {tribe.mine.level, ToTribeSummary(tribe), tribe.description, tribe.type};
}

inline TribeNtfImages ToNtfImages(const biz::IMTribeInfo& tribe) {
  return {tribe.ntfimage, tribe.businessimage, tribe.tribeid, tribe.mine.unread};
}

inline TribeBlackItem ToTribeBlackItem(const biz::IMTribeBlackItem& item) {
  return {item.userid, item.nick, item.portrait, {item.addtime}};
}

inline TribeVerifyMsg ToTribeVerifyMsg(const biz::IMTribeVerifyMsg& msg) {
  return {msg, {msg.msgtime}};
}

// The same for each item of a list.
template <auto kMake, class Item>
auto MadeOfEach(const std::vector<Item>& items) {
  std::vector<decltype(kMake(items.front()))> made;
  made.reserve(items.size());
  for (const Item& item : items) made.push_back(kMake(item));
  return made;
}

inline ShallowTribes ToShallowTribes(const biz::IMTribes& tribes) {
  return {MadeOfEach<&ToShallowTribe>(tribes.tribes)};
}
inline QuittedTribes ToQuittedTribes(const biz::IMTribes& tribes) {
  return {MadeOfEach<&ToTribeSummary>(tribes.tribes)};
}
inline ShallowTribesEx ToShallowTribesEx(const biz::IMTribes& tribes) {
  return {MadeOfEach<&ToNtfImages>(tribes.tribes)};
}
inline TribeBlackItems ToTribeBlackItems(const biz::IMTribeBlackList& list) {
  return {MadeOfEach<&ToTribeBlackItem>(list.list)};
}
inline TribeVerifyMsgs ToTribeVerifyMsgs(const biz::IMTribeVerifyMsgs& list) {
  return {MadeOfEach<&ToTribeVerifyMsg>(list.msgs)};
}

}  // namespace imsdk::bridge
