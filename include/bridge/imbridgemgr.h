// The bridge manager: starts and stops the library's business layer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "bridge/core_records.h"

namespace imsdk::bridge {

// Receives a text, UTF-8. It is the library's and ends with the call; `context` is the caller's
// own.
using TextSink = void (*)(void* context, const char* text, std::size_t size);

// Made once by the host through the factory. Any one thread, core records any thread. The order of
// the operations is part of the contract.
class IIMBridgeMgr {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // Starts the business layer; before it, bridges cannot be bound. Returns 0; a second call does
  // nothing and returns 0.
  virtual std::int32_t Init() = 0;
  // Stops the business layer. Bridges that are still bound keep serving; no new ones can be bound.
  virtual void Uninit() = 0;
  // Describes the whole protocol to pages: hands one OpenRPC document, a JSON text, to `sink`
  // before it returns. Every module's methods and notifications stand in it with the JSON schemas
  // of what they take and give; "x-notifications" lists the latter. Needs no `Init`. Returns 0,
  // E_POINTER without a sink, or E_OUTOFMEMORY when no text can be made.
  virtual std::int32_t Describe(TextSink sink, void* context) = 0;
  // Reads a record of the messaging core from its JSON text, UTF-8. `record` says by what it holds
  // which one is meant; what the text lacks, or has in a wrong type, stays as it is there. Returns
  // 0, E_POINTER without a record, or E_INVALIDARG when the text is no JSON object.
  virtual std::int32_t ReadCoreRecord(const char* text, std::size_t size, CoreRecord* record) = 0;
  // Hands the JSON text of a record to `sink` before it returns. Returns 0, E_POINTER without a
  // sink, or E_OUTOFMEMORY.
  virtual std::int32_t WriteCoreRecord(const CoreRecord& record, TextSink sink, void* context) = 0;

 protected:
  ~IIMBridgeMgr() = default;
};

}  // namespace imsdk::bridge
