// Notifications as typed rows, and the page's side of them.
#pragma once

#include <atomic>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "source/bridge/jsparams/idrecords.h"
#include "source/bridge/jsparams/recordinfo.h"
#include "source/bridge/pagechannel.h"

namespace imsdk::bridge {

// A notification that a module sends. Static.
struct NotifyInfo {
  std::wstring_view name;
  const char* sentence;
  const TypeInfo* payload;
};

// The same with the type of what is sent under it; nothing else can be.
template <class Payload, class Form = PlainForm>
struct Notification : NotifyInfo {
  consteval Notification(std::wstring_view called, const char* says)
      : NotifyInfo{called, says, &TypeInfoOf<Form, Payload>::kInfo} {}
  static std::wstring Text(const Payload& payload) { return RecordText<Form>(payload); }
};

// The notifications of a module class, at most 64.
using NotifyList = std::span<const NotifyInfo* const>;

// A notification on its way, shared by all views that get it.
struct Notice {
  std::wstring event;
  std::wstring json;
};

// What the page of one view registered for among the notifications of one module. Shared by the
// module and by the feeds that it hears.
class Listener : public std::enable_shared_from_this<Listener> {
 public:
  Listener(std::shared_ptr<PageChannel> channel, NotifyList rows)
      : channel_(std::move(channel)), rows_(rows) {}

  NotifyList rows() const { return rows_; }
  // Says which routing path the notifications come from. Before the module subscribes to anything.
  void SetPath(std::wstring path) { path_ = std::move(path); }
  // The mask of a row of the list.
  static std::uint64_t BitOf(NotifyList rows, const NotifyInfo& row);

  // Registers the page for the notification `name`, if the module has it, or no longer.
  void Register(std::wstring_view name, bool wanted);
  void RegisterAll(bool wanted) { wanted_ = wanted ? ~std::uint64_t{0} : 0; }
  // Any thread.
  bool Wants(std::uint64_t bit) const {
    return (wanted_.load(std::memory_order_relaxed) & bit) != 0;
  }

  // Raises a notification on the page if the page is registered for it when its turn comes on the
  // view's thread. Any thread.
  void Notify(std::uint64_t bit, std::shared_ptr<const Notice> notice);
  // The same for a module's own notification; its JSON is not made when nobody wants it.
  template <class Payload, class Form>
  void Notify(const Notification<Payload, Form>& row, const Payload& payload) {
    const std::uint64_t bit = BitOf(rows_, row);
    if (!Wants(bit)) return;
    Notify(bit, std::make_shared<const Notice>(Notice{std::wstring(row.name), row.Text(payload)}));
  }

 private:
  const std::shared_ptr<PageChannel> channel_;
  const NotifyList rows_;
  std::wstring path_;
  std::atomic<std::uint64_t> wanted_{0};
};

}  // namespace imsdk::bridge
