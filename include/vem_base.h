// Vem32: the integer words of the interface, the export macro and the opaque position of a list or
// map. Every exported header starts from here.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32) && (defined(VEM_BUILDING) || defined(VEM_BUILDING_SETTINGS))
#define VEM_API __declspec(dllexport)
#elif defined(VEM_BUILDING) || defined(VEM_BUILDING_SETTINGS)
#define VEM_API __attribute__((visibility("default")))
#else
#define VEM_API
#endif

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i8 = std::int8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using i64 = std::int64_t;

// Where an iteration stands in a list or a map; null ends it.
struct VemPositionTag;
using POSITION = VemPositionTag*;
