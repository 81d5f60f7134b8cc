// Content that a message only names, implemented by the host.
#pragma once

#include <functional>
#include <string>

#include "imsdk/biz/user_id.h"
#include "kexcom/ref_counted.h"

namespace imsdk::client {

// The outcome and the content, a JSON text. Called once, on any thread and also before the
// operation returns.
using IMDynamicCallback = std::function<void(const biz::ResultCode&, const std::wstring& content)>;

// Finds the present content of dynamic messages: cards that show, for instance, the state of an
// order. Found in the component registry; without it such messages have none. Any thread; must not
// wait.
class IDynamicContentService : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "imsdk.client.IDynamicContentService";

  // The content `biz_uuid` of the business `biz_type`, as `account` may see it.
  virtual void GetContent(const biz::IMUserID& account, const std::wstring& biz_type,
                          const std::wstring& biz_uuid, IMDynamicCallback done) = 0;

 protected:
  ~IDynamicContentService() = default;
};

}  // namespace imsdk::client
