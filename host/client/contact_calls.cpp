// Contacts: asked for, put in order, given names; and the account's own name.
#include "client/host_call.h"
#include "imsdk/biz/contact.h"
#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

RefPtr<biz::IIMContactMgr> Mgr(const HostCall& call) { return call.account->GetIMContactMgr(); }

// As the methods of "im.contact" write them.
base::DictionaryValue ToJson(const biz::IMContact& contact) {
  base::DictionaryValue json;
  json.Set("appkey", base::WideToUTF8(contact.userid.appkey));
  json.Set("nick", base::WideToUTF8(contact.userid.nick));
  json.Set("status", static_cast<int>(contact.status));
  json.Set("display", base::WideToUTF8(contact.display));
  json.Set("portrait", base::WideToUTF8(contact.portrait));
  json.Set("unreadnum", contact.unreadnum);
  return json;
}

base::DictionaryValue ToJson(const biz::IMListedContact& listed) {
  base::DictionaryValue json;
  json.Set("userid", ToJson(listed.contact));
  json.Set("groupid", base::NumberToString(listed.gid));
  json.Set("asterisk", listed.asterisk ? 1 : 0);
  return json;
}

base::DictionaryValue ToJson(const biz::IMContactGroup& group) {
  base::DictionaryValue json;
  json.Set("groupid", base::NumberToString(group.gid));
  json.Set("parentid", base::NumberToString(group.parent));
  json.Set("name", base::WideToUTF8(group.name));
  return json;
}

template <class T>
base::ListValue ToJson(const std::vector<T>& items) {
  base::ListValue json;
  for (const T& item : items) json.Append(ToJson(item));
  return json;
}

biz::IMCallback<biz::IMContacts> FinishWithUsers(const HostCall& call) {
  return call.FinishWith<biz::IMContacts>([](const biz::IMContacts& found) {
    base::DictionaryValue more;
    more.Set("contacts", ToJson(found.contacts));
    return more;
  });
}

void GetContactList(const HostCall& call) {
  Mgr(call)->GetContactList({}, call.FinishWith<biz::IMContactList>([](const auto& list) {
    base::DictionaryValue more;
    more.Set("groups", ToJson(list.groups));
    more.Set("contacts", ToJson(list.contacts));
    return more;
  }));
}

void AskContact(const HostCall& call) {
  Mgr(call)->AskContact({call.User(), call.Decimal("groupid"), call.Text("authinfo")},
                        call.Finish());
}

void RemoveContact(const HostCall& call) { Mgr(call)->RemoveContact({call.User()}, call.Finish()); }

void MoveContact(const HostCall& call) {
  Mgr(call)->MoveContact({call.User(), call.Decimal("groupid")}, call.Finish());
}

void SetAsterisk(const HostCall& call) {
  Mgr(call)->SetAsterisk({call.User(), call.Number("on", 1) != 0}, call.Finish());
}

void SetGroup(const HostCall& call) {
  const biz::IMContactGroup group{call.Decimal("groupid"), call.Decimal("parentid"),
                                  call.Text("name")};
  Mgr(call)->SetGroup({group}, call.FinishWith<biz::IMContactGroupRequest>([](const auto& made) {
    base::DictionaryValue more;
    more.Set("groupid", base::NumberToString(made.groupid));
    return more;
  }));
}

void SetProfile(const HostCall& call) {
  Mgr(call)->SetProfile({call.Text("display"), call.Text("portrait")}, call.Finish());
}

void SearchUsers(const HostCall& call) {
  Mgr(call)->SearchUsers({call.Text("key")}, FinishWithUsers(call));
}

void GetBlackList(const HostCall& call) { Mgr(call)->GetBlackList({}, FinishWithUsers(call)); }

void SetBlack(const HostCall& call) {
  Mgr(call)->SetBlack({call.User(), call.Number("on", 1) != 0}, call.Finish());
}

constexpr HostCallRow kRows[] = {
    {L"GetContactList", &GetContactList}, {L"AskContact", &AskContact},
    {L"RemoveContact", &RemoveContact},   {L"MoveContact", &MoveContact},
    {L"SetAsterisk", &SetAsterisk},       {L"SetGroup", &SetGroup},
    {L"SetProfile", &SetProfile},         {L"SearchUsers", &SearchUsers},
    {L"GetBlackList", &GetBlackList},     {L"SetBlack", &SetBlack}};

}  // namespace

HostCallRows ContactCalls() { return kRows; }

}  // namespace imsdk::host
