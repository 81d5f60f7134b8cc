#include "account/contacts/contact_mgr.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "kexbase/distinct.h"

namespace imsdk::account {

namespace {

using Users = std::vector<biz::IMUserID>;
using Known = std::unordered_map<biz::IMUserID, biz::IMContact>;

// What a long identifier of an unknown site begins with, and the letters of every site's prefix.
constexpr std::wstring_view kUnknownSite = L"[UNKNOW]";
constexpr std::size_t kSiteLetters = 8;

// Whom a long identifier names: in an application by its prefix, in the account's own without.
biz::IMUserID UserOf(const biz::IMLongUserID& id, const std::wstring& appkey) {
  std::wstring_view text = id.identifier;
  if (id.site == 0) {
    if (text.starts_with(kUnknownSite)) text.remove_prefix(kUnknownSite.size());
    return {appkey, std::wstring(text)};
  }
  return {std::wstring(text.substr(0, kSiteLetters)),
          std::wstring(text.substr(std::min(kSiteLetters, text.size())))};
}

// Asks the server for those of `wanted` from `at` on, and calls `then` with all that were found.
void AskUsers(AccountState& here, const std::shared_ptr<const Users>& wanted, std::size_t at,
              const std::shared_ptr<Known>& known, const biz::IMCallback<Known>& then) {
  if (at == wanted->size()) return then({}, *known);
  const std::size_t end = std::min(at + link::kMostUsers, wanted->size());
  const auto first = wanted->begin();
  here.line->Ask(link::FindUsers{Users(first + static_cast<std::ptrdiff_t>(at),
                                       first + static_cast<std::ptrdiff_t>(end))},
                 [state = here.shared_from_this(), wanted, end, known, then](
                     const biz::ResultCode& result, const biz::IMContacts& found) {
                   if (!result.ok()) return then(result, {});
                   for (const biz::IMContact& one : found.contacts) known->emplace(one.userid, one);
                   AskUsers(*state, wanted, end, known, then);
                 });
}

// Finds users in the list, and the others at the server.
void FindUsers(AccountState& here, const ContactBook& book, const Users& users,
               const biz::IMCallback<Known>& then) {
  const auto known = std::make_shared<Known>();
  Users others;
  for (const biz::IMUserID& user : users) {
    if (const biz::IMListedContact* listed = book.Find(user)) {
      known->emplace(user, listed->contact);
    } else if (user.valid()) {
      others.push_back(user);
    }
  }
  AskUsers(here, std::make_shared<const Users>(std::move(others)), 0, known, then);
}

}  // namespace

template <class Request, class Work, class Answer>
void ContactMgr::WithList(const Request& request, Done<Answer> done, Work work) const {
  OnWorker(
      state_, request,
      [book = book_, done, work = std::move(work)](AccountState& here, const auto& kept) {
        here.commit.Flush();  // what was told before is part of the answer
        book->WhenKnown([state = here.shared_from_this(), book, done, work,
                         kept](const biz::ResultCode& result) {
          if (!result.ok()) return done(result, Answer{});
          work(*state, *book, *kept);
        });
      },
      [done](const biz::ResultCode& why) { done(why, Answer{}); });
}

template <class Operation, class... Answer>
void ContactMgr::AskChange(Operation operation, Done<Answer...> done) const {
  AskServer(state_, std::move(operation),
            Done<Answer...>([state = state_, done = std::move(done)](const biz::ResultCode& result,
                                                                     const Answer&... answer) {
              if (result.ok() && !state->ended) state->commit.Flush();
              done(result, answer...);
            }));
}

void ContactMgr::GetContactBaseInfo(const biz::IMUsers& request, Done<biz::IMContacts> done) {
  WithList(request, done, [done](AccountState& here, ContactBook& book, const auto& asked) {
    const Users users = base::Distinct(asked.userids);
    FindUsers(here, book, users,
              [state = here.shared_from_this(), users, done](const biz::ResultCode& result,
                                                             const Known& known) {
                biz::IMContacts found;
                for (const biz::IMUserID& user : users) {
                  const auto one = known.find(user);
                  if (one == known.end()) continue;
                  found.contacts.push_back(one->second);
                  found.contacts.back().unreadnum = state->chat.Unread(biz::IMConversationID(user));
                }
                done(result, found);
              });
  });
}

void ContactMgr::GetContactDisplayName(const biz::IMUsers& request,
                                       Done<biz::IMDisplayNames> done) {
  WithList(request, done, [done](AccountState& here, ContactBook& book, const auto& asked) {
    const Users users = base::Distinct(asked.userids);
    FindUsers(here, book, users, [users, done](const biz::ResultCode& result, const Known& known) {
      biz::IMDisplayNames found;
      for (const biz::IMUserID& user : users) {
        const auto one = known.find(user);
        if (one != known.end()) found.names.push_back({user, one->second.display});
      }
      done(result, found);
    });
  });
}

void ContactMgr::GetUserDisplayNick(const biz::IMLongUserIDs& request,
                                    Done<biz::IMUserNicks> done) {
  WithList(request, done, [done](AccountState& here, ContactBook& book, const auto& asked) {
    std::vector<std::pair<std::wstring, biz::IMUserID>> named;
    Users users;
    for (const biz::IMLongUserID& id : asked.users) {
      users.push_back(UserOf(id, here.self.appkey));
      named.emplace_back(id.identifier, users.back());
    }
    FindUsers(here, book, base::Distinct(users),
              [named, done](const biz::ResultCode& result, const Known& known) {
                biz::IMUserNicks found;
                for (const auto& [identifier, user] : named) {
                  const auto one = known.find(user);
                  if (one != known.end()) found.nicks.push_back({identifier, one->second.display});
                }
                done(result, found);
              });
  });
}

void ContactMgr::GetGroupInfo(const biz::IMContactGroupRequest& request,
                              Done<biz::IMContactGroupInfo> done) {
  WithList(request, done, [done](AccountState&, ContactBook& book, const auto& asked) {
    biz::IMContactGroupInfo info;
    bool there = asked.groupid == biz::kRootGroup;
    for (const biz::IMContactGroup& group : book.groups()) {
      if (group.gid == asked.groupid) {
        info.name = group.name;
        there = true;
      } else if (group.parent == asked.groupid) {
        info.subgroups.push_back(group);
      }
    }
    if (!there) {
      return done({biz::kEngineRefused, biz::kContactNoSuchGroup, L"the list has no such group"},
                  {});
    }
    for (const auto& [user, listed] : book.contacts()) {
      if (listed.gid == asked.groupid) info.uids.push_back(user);
    }
    done({}, info);
  });
}

void ContactMgr::Decide(const biz::IMContactAction& request, biz::IMContactVerifyType type,
                        Done<> done) const {
  AskChange(link::DecideContact{request, type}, std::move(done));
}

void ContactMgr::AgreeAddContact(const biz::IMContactAction& request, Done<> done) {
  Decide(request, biz::kContactAgreed, std::move(done));
}

void ContactMgr::AgreeAndAddContact(const biz::IMContactAction& request, Done<> done) {
  Decide(request, biz::kContactAgreedAndAdded, std::move(done));
}

void ContactMgr::RefuseAddContact(const biz::IMContactAction& request, Done<> done) {
  Decide(request, biz::kContactRefused, std::move(done));
}

void ContactMgr::AddToBlack(const biz::IMContactAction& request, Done<> done) {
  Decide(request, biz::kContactBlacked, std::move(done));
}

void ContactMgr::ReportAddContact(const biz::IMContactAction& request, Done<> done) {
  Decide(request, biz::kContactReported, std::move(done));
}

void ContactMgr::IgnoreAddContact(const biz::IMContactAction& request, Done<> done) {
  Decide(request, biz::kContactIgnored, std::move(done));
}

void ContactMgr::DeleteContactVerifyMsgs(const biz::IMContactActions& request, Done<> done) {
  AskServer(state_, link::DeleteContactVerify{request}, std::move(done));
}

void ContactMgr::GetContactVerifyMsgs(const biz::IMContactVerifyPage& request,
                                      Done<biz::IMContactVerifyMsgs> done) {
  AskServer(state_, link::GetContactVerify{request}, std::move(done));
}

void ContactMgr::GetContactList(const biz::IMNothing& request, Done<biz::IMContactList> done) {
  WithList(request, done, [done](AccountState& here, ContactBook& book, const auto&) {
    biz::IMContactList list{book.groups(), {}};
    list.contacts.reserve(book.contacts().size());
    for (const auto& [user, listed] : book.contacts()) {
      list.contacts.push_back(listed);
      list.contacts.back().contact.unreadnum = here.chat.Unread(biz::IMConversationID(user));
    }
    done({}, list);
  });
}

void ContactMgr::AskContact(const biz::IMContactRequest& request, Done<> done) {
  AskChange(link::AskContact{request}, std::move(done));
}

void ContactMgr::RemoveContact(const biz::IMContactUser& request, Done<> done) {
  AskChange(link::RemoveContact{request.userid}, std::move(done));
}

void ContactMgr::MoveContact(const biz::IMContactPlace& request, Done<> done) {
  AskChange(link::MoveContact{request}, std::move(done));
}

void ContactMgr::SetAsterisk(const biz::IMContactSwitch& request, Done<> done) {
  AskChange(link::SetAsterisk{request}, std::move(done));
}

void ContactMgr::SetGroup(const biz::IMContactGroupChange& request,
                          Done<biz::IMContactGroupRequest> done) {
  AskChange(link::SetContactGroup{request.group}, std::move(done));
}

void ContactMgr::SetProfile(const biz::IMProfile& request, Done<> done) {
  AskChange(link::SetProfile{request}, std::move(done));
}

void ContactMgr::SearchUsers(const biz::IMUserSearch& request, Done<biz::IMContacts> done) {
  AskServer(state_, link::SearchUsers{request}, std::move(done));
}

void ContactMgr::GetBlackList(const biz::IMNothing&, Done<biz::IMContacts> done) {
  AskServer(state_, link::GetBlack{}, std::move(done));
}

void ContactMgr::SetBlack(const biz::IMContactSwitch& request, Done<> done) {
  AskChange(link::SetBlack{request}, std::move(done));
}

}  // namespace imsdk::account
