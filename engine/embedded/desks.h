// All desks of the embedded server: the type of a request tells which one answers it.
#pragma once

#include <chrono>

#include "embedded/contact_desk.h"
#include "embedded/contact_request_desk.h"
#include "embedded/entry_desk.h"
#include "embedded/file_desk.h"
#include "embedded/history_desk.h"
#include "embedded/member_desk.h"
#include "embedded/mention_desk.h"
#include "embedded/post_desk.h"
#include "embedded/tribe_desk.h"

namespace imsdk::embedded {

struct Desks : PostDesk,
               HistoryDesk,
               FileDesk,
               TribeDesk,
               MemberDesk,
               MentionDesk,
               EntryDesk,
               ContactDesk,
               ContactRequestDesk {
  Desks(ServerStore& store, Presence& presence, std::chrono::milliseconds withdraw_limit,
        const FileLimits& files)
      : PostDesk(store, withdraw_limit),
        HistoryDesk(store),
        FileDesk(store, files),
        TribeDesk(store),
        MemberDesk(store, presence),
        MentionDesk(store),
        EntryDesk(store, static_cast<PostDesk&>(*this)),
        ContactDesk(store, presence),
        ContactRequestDesk(store) {}

  using ContactDesk::Answer;
  using ContactRequestDesk::Answer;
  using EntryDesk::Answer;
  using FileDesk::Answer;
  using HistoryDesk::Answer;
  using MemberDesk::Answer;
  using MentionDesk::Answer;
  using PostDesk::Answer;
  using TribeDesk::Answer;
};

}  // namespace imsdk::embedded
