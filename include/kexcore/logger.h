// Where trace lines go. The host implements the logger; the bridge library writes to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kexcom/ref_counted.h"

namespace ns_log {

enum TraceLevel : int { kRoutine = 0, kWarning = 2, kError = 3 };

// One named value of a trace line.
struct TraceItemView {
  std::string_view name;    // UTF-8
  std::wstring_view value;  // wide text
};

// A finished trace line. Lives, like every view it gives, only during `ILogger::Write`.
class ITraceLine {
 public:
  virtual int Level() const = 0;
  virtual std::wstring_view Text() const = 0;
  // The qualified name of the tracing function, for instance "CIMSDKBridge::JsInvoke". UTF-8.
  virtual std::string_view Function() const = 0;
  // The source file without its ending, for instance "source\bridge\imsdkbridge". UTF-8.
  virtual std::string_view Source() const = 0;
  virtual int Line() const = 0;
  // "_brief_," and the names of the brief values as the caller spelled them. UTF-8.
  virtual std::string_view Brief() const = 0;
  // The trace items, then the brief values, each in the order in which they were added.
  virtual std::size_t ItemCount() const = 0;
  virtual TraceItemView Item(std::size_t index) const = 0;
  // The item record "%d|%d|%d%s%s%s": three lengths in characters of wide text, then the key
  // group, the group of the other trace items, and the brief values. Made at each call, so a
  // logger that keeps nothing pays nothing for it.
  virtual std::wstring Record() const = 0;

 protected:
  ~ITraceLine() = default;
};

// Writes trace lines. Called on any thread, also on several at once; must not block for long and
// must not call back into the bridge. Exceptions are swallowed by the caller.
class ILogger : public IKexCOMRefCounted {
 public:
  // Whether lines of this level are wanted. Asked before a line is put together.
  virtual bool IsEnabled(int level) = 0;
  virtual void Write(const ITraceLine& line) = 0;

 protected:
  ~ILogger() = default;
};

// The host's logging facility, found in the component registry. Without it nothing is traced.
class ILogService : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "kexcore.ILogService";
  // The logger of this name with one reference for the caller; the bridge asks for "imsdk". Never
  // null.
  virtual ILogger* GetLogger(const char* name) = 0;

 protected:
  ~ILogService() = default;
};

}  // namespace ns_log
