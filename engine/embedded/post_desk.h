// Messages on the embedded server: delivery, withdrawal, read reports, typing.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "embedded/outcome.h"
#include "embedded/server_store.h"
#include "link/operations.h"

namespace imsdk::embedded {

// A text of a virtual user.
struct Publication {
  biz::IMCIDType kind = biz::kCIDSystem;
  biz::IMUserID from;
  biz::IMUserID to;
  std::wstring body;
  std::wstring others{};  // extra data, see `biz::IMMessageExt`

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("from", &Publication::from), biz::Inner("to", &Publication::to),
                        biz::Bytes("body", &Publication::body, biz::kMaxBodyBytes),
                        biz::Bytes("others", &Publication::others, biz::kMaxExtraBytes));
  }
};

// As every desk: decides and writes. An answer runs inside a transaction, may run again when that
// was rolled back, and may throw `sqlite::Error`.
class PostDesk {
 public:
  PostDesk(ServerStore& store, std::chrono::milliseconds withdraw_limit);

  Outcome<link::Delivered> Answer(const Caller& caller, const link::Deliver& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::Withdraw& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::ReportRead& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::MarkRead& request);
  Outcome<link::Nothing> Answer(const Caller& caller, const link::SendTyping& request);
  // The virtual user is made when it is new.
  Outcome<link::Nothing> Answer(const Caller& nobody, const Publication& request);

 private:
  bool MayName(const Caller& caller, const link::File& file);
  Outcome<link::Delivered> Accept(const Sending& sending, std::int64_t receiver,
                                  link::Message message);
  void Tell(Effects& effects, const NewEntry& entry);

  ServerStore& store_;
  const std::chrono::milliseconds withdraw_limit_;
  std::int64_t last_published_;
};

}  // namespace imsdk::embedded
