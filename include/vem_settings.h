// The settings library: records of global settings that the tools of the system share. The store
// only asks it; hosts and tests set the values through the record or the setters below.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32) && defined(VEM_BUILDING_SETTINGS)
#define VEM_SETTINGS_API __declspec(dllexport)
#elif defined(VEM_BUILDING_SETTINGS)
#define VEM_SETTINGS_API __attribute__((visibility("default")))
#else
#define VEM_SETTINGS_API
#endif

// Global settings of the target tools: 76 bytes; EvemEnabled is the 32-bit word at offset 68.
struct tLurTobSettings {
    std::uint8_t Reserved[68];
    std::int32_t EvemEnabled;  // not 0: the statement model is enabled
    std::uint8_t Reserved2[4];
};
static_assert(sizeof(tLurTobSettings) == 76 && offsetof(tLurTobSettings, EvemEnabled) == 68, "record of 76 bytes");

// Global settings of the project: 640 bytes; ProjectCode is the 16-bit word at offset 2.
struct tLurProjectSettings {
    std::uint16_t Reserved;
    std::uint16_t ProjectCode;
    std::uint8_t Reserved2[636];
};
static_assert(sizeof(tLurProjectSettings) == 640 && offsetof(tLurProjectSettings, ProjectCode) == 2,
              "record of 640 bytes");

extern "C" {
// Pointer to the library's record, which the caller may read and write; null if the caller asks
// for more bytes than the record has.
VEM_SETTINGS_API void* LurGetGlobalTobSettings(int size);
VEM_SETTINGS_API void* LurGetGlobalProjectSettings(int size);

// Setters for hosts and tests.
VEM_SETTINGS_API void LurSetEvemEnabled(std::int32_t enabled);
VEM_SETTINGS_API void LurSetProjectCode(std::uint16_t projectCode);
// Puts both records back to their defaults: EvemEnabled 1, ProjectCode 0, all else 0.
VEM_SETTINGS_API void LurResetSettings(void);
}
