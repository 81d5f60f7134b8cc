// All desks of the embedded server: the type of a request tells which one answers it.
#pragma once

#include <chrono>

#include "embedded/file_desk.h"
#include "embedded/history_desk.h"
#include "embedded/post_desk.h"
#include "embedded/tribe_desk.h"

namespace imsdk::embedded {

struct Desks : PostDesk, HistoryDesk, FileDesk, TribeDesk {
  Desks(ServerStore& store, std::chrono::milliseconds withdraw_limit)
      : PostDesk(store, withdraw_limit), HistoryDesk(store), FileDesk(store), TribeDesk(store) {}

  using FileDesk::Answer;
  using HistoryDesk::Answer;
  using PostDesk::Answer;
  using TribeDesk::Answer;
};

}  // namespace imsdk::embedded
