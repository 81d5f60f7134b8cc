// How what an account has missed is fetched: conversation by conversation, down to what it has.
#include <utility>

#include "account/conversations/roamer.h"

namespace imsdk::account {

namespace {

constexpr int kCatchUpsAtOnce = 4;

}  // namespace

void Roamer::Connected() {
  std::vector<biz::IMConversationID> wanting;
  sqlite::Guarded([&] { wanting = state_->store.conversations().Wanting(); });
  for (const auto& cid : wanting) CatchUp(cid);
}

void Roamer::CatchUp(const biz::IMConversationID& cid) {
  if (!state_->line->connected() || !catching_up_.insert(cid).second) return;
  wanting_.push_back(cid);
  CatchUpNext();
}

void Roamer::CatchUpNext() {
  while (under_way_ < kCatchUpsAtOnce && !wanting_.empty()) {
    const biz::IMConversationID cid = std::move(wanting_.front());
    wanting_.pop_front();
    ++under_way_;
    Enter(cid, [this, cid](const auto& leave) {
      FillHole(std::make_shared<Descent>(Descent{cid}), leave);
    });
  }
}

void Roamer::FillHole(const std::shared_ptr<Descent>& descent, const std::function<void()>& leave) {
  if (state_->ended) return EndCatchUp(descent->cid, false, leave);
  Descend(descent, [this, descent, leave](const biz::ResultCode& result, const auto&, auto) {
    // What the server refuses now it may give one day: what lacks stays a hole.
    if (!result.ok()) return EndCatchUp(descent->cid, false, leave);
    bool open = false;
    const biz::ResultCode read = sqlite::Guarded([&] {
      const std::int64_t conversation = state_->store.conversations().Find(descent->cid);
      open = state_->store.parts().Below(conversation).has_value();
    });
    if (read.ok() && open) return FillHole(descent, leave);
    EndCatchUp(descent->cid, read.ok(), leave);
  });
}

void Roamer::EndCatchUp(const biz::IMConversationID& cid, bool close,
                        const std::function<void()>& leave) {
  const auto end = [this, cid, leave] {
    leave();
    --under_way_;
    catching_up_.erase(cid);
    CatchUpNext();
  };
  if (!close || state_->ended) return end();
  state_->commit.Add(
      [this, cid](sqlite::Database&) {
        const std::int64_t conversation = state_->store.conversations().Find(cid);
        state_->store.parts().CloseHole(conversation);
        state_->store.conversations().SetWanting(conversation, false);
      },
      [end](const biz::ResultCode&) { end(); });
}

}  // namespace imsdk::account
