// Marks the one exported function of the library.
#pragma once

#if defined(_WIN32)
#define KEXCOM_EXPORT extern "C" __declspec(dllexport)
#else
#define KEXCOM_EXPORT extern "C" __attribute__((visibility("default")))
#endif
