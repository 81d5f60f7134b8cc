// What a bridge has of its view between `BindPage` and `UnbindPage`.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "bridge/imsdkbridge.h"
#include "source/bridge/accountfeed.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/pagechannel.h"

namespace imsdk::bridge {

// The modules of a view and the way to its page. Used on the view's thread.
//
// It is apart from the bridge because the bridge may end anywhere: whoever gives back its last
// reference only lets go of this. A task of the view's thread that is running then holds what it
// uses, so what is left ends behind it, whatever thread that is.
class BoundView : public std::enable_shared_from_this<BoundView> {
 public:
  using MakeModules = std::function<ModuleTable(const ModuleContext& context)>;

  explicit BoundView(const PageBinding& binding)
      : browser_id_(binding.browserId),
        channel_(std::make_shared<PageChannel>(binding.handler, binding.runner)) {}

  // Makes the modules and lets them begin, with `account` if it is there.
  void Open(const MakeModules& make, const biz::IMUserID& account);
  // Drops the page handler, the modules and their subscriptions. Safe to call twice.
  void Close();

  const std::wstring& browser_id() const { return browser_id_; }
  PageChannel& channel() const { return *channel_; }
  const ModuleTable& modules() const { return modules_; }

 private:
  void SetAccount(const biz::IMUserID& account, std::shared_ptr<const Attachment> attached);

  const std::wstring browser_id_;
  const std::shared_ptr<PageChannel> channel_;
  ModuleTable modules_;
  std::shared_ptr<const Attachment> attached_;  // to the account of the modules, or null
  bool open_ = false;
};

}  // namespace imsdk::bridge
