#include "source/bridge/notification.h"

#include <algorithm>
#include <utility>

namespace imsdk::bridge {

std::uint64_t Listener::BitOf(NotifyList rows, const NotifyInfo& row) {
  return std::uint64_t{1} << (std::find(rows.begin(), rows.end(), &row) - rows.begin());
}

void Listener::Register(std::wstring_view name, bool wanted) {
  for (const NotifyInfo* row : rows_) {
    if (row->name != name) continue;
    const std::uint64_t bit = BitOf(rows_, *row);
    wanted ? wanted_ |= bit : wanted_ &= ~bit;
  }
}

void Listener::Notify(std::uint64_t bit, std::shared_ptr<const Notice> notice) {
  channel_->Run([self = shared_from_this(), bit, notice = std::move(notice)] {
    if (!self->Wants(bit)) return;
    self->channel_->Raise(notice->event, notice->json, self->path_.c_str());
  });
}

}  // namespace imsdk::bridge
