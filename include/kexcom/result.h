// Component-model result codes that cross the bridge.
//
// A result is a 32-bit signed integer: 0 is success, negative values are failures. The names are
// those of the Windows headers; where those headers came first, their macros stand.
#pragma once

#include <cstdint>

#ifndef E_NOTIMPL
inline constexpr std::int32_t E_NOTIMPL = static_cast<std::int32_t>(0x80004001);
#endif
#ifndef E_NOINTERFACE
inline constexpr std::int32_t E_NOINTERFACE = static_cast<std::int32_t>(0x80004002);
#endif
#ifndef E_POINTER
inline constexpr std::int32_t E_POINTER = static_cast<std::int32_t>(0x80004003);
#endif
#ifndef E_UNEXPECTED
inline constexpr std::int32_t E_UNEXPECTED = static_cast<std::int32_t>(0x8000FFFF);
#endif
#ifndef E_OUTOFMEMORY
inline constexpr std::int32_t E_OUTOFMEMORY = static_cast<std::int32_t>(0x8007000E);
#endif
#ifndef E_INVALIDARG
inline constexpr std::int32_t E_INVALIDARG = static_cast<std::int32_t>(0x80070057);
#endif

// What `IKexCOMFactory::CreateInstance` returns for a class name that is not registered.
inline constexpr std::int32_t kKexCOMUnknownClass = static_cast<std::int32_t>(0xF0C90000);
