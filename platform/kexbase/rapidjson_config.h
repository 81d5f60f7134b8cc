// RapidJSON for this library. Included before any of its headers.
#pragma once

// It skips over plain text with vector instructions where every processor of the target has them.
#ifdef __SSE2__
#define RAPIDJSON_SSE2
#endif

// A namespace of its own, so that this build of its templates never meets another one's in a
// program that has both.
#define RAPIDJSON_NAMESPACE base::internal::rapidjson
#define RAPIDJSON_NAMESPACE_BEGIN namespace base::internal::rapidjson {
#define RAPIDJSON_NAMESPACE_END }
