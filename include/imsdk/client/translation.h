// The client's translation of messages, implemented by the host.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "imsdk/biz/user_id.h"
#include "kexbase/event.h"
#include "kexcom/ref_counted.h"

namespace imsdk::client {

// The outcome and the translated text. Called once, on any thread and also before the operation
// returns.
using IMTranslateCallback = std::function<void(const biz::ResultCode&, const std::wstring& text)>;

// Translates messages. Found in the component registry; without it no translation is set up. Any
// thread; must not wait.
class ITranslationService : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "imsdk.client.ITranslationService";

  // Whether messages are translated now: a translation is set up and switched on.
  virtual bool IsEnabled() = 0;
  // Translates the text of the message `msgid` of `account`. `on_translated` is raised before
  // `done` is called with success.
  virtual void Translate(const biz::IMUserID& account, const std::wstring& msgid,
                         const std::wstring& text, IMTranslateCallback done) = 0;

  struct TranslationEvents {
    // Account, message, translated text.
    base::event<void(const biz::IMUserID&, const std::wstring&, const std::wstring&)> on_translated;
    // What `IsEnabled` answers from now on, 1 or 0.
    base::event<void(std::int32_t)> on_setting_changed;
  };
  // Lives as long as the service. Raised on any thread.
  virtual TranslationEvents& Events() = 0;

 protected:
  ~ITranslationService() = default;
};

}  // namespace imsdk::client
