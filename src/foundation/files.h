// Reading files and embedded resources, writing the settings. A failure is logged and never stops the system;
// the caller goes on with defaults.
#pragma once

#include <cstdint>

#include "foundation/byte_array.h"
#include "foundation/string.h"

// Replaces the string by the file's bytes. False, the string empty and a line at level 1 if the file cannot
// be opened, is empty, is no regular file or is larger than kFileSizeLimit.
bool LoadStringFromFile(const char* path, CVrxStringU& string);
bool LoadArrayFromFile(const char* path, CVrxByteArray& array);

constexpr uint64_t kFileSizeLimit = 256u << 20; // bytes

// Where "/settings.json" of the drive's root lies here.
CVrxStringU GetSettingsFilePath();

// A file of the data folder, such as "translations/lang_ENG.json".
CVrxStringU GetDataFilePath(const char* name);

// Writes the settings file, which is complete or unchanged afterwards; false if it could not be written.
bool SaveSettingsFile(const CVrxStringU& string);

// Numbers of the resources in the program's own file.
enum ResourceId : uint32_t {
    ResourceStyleSheet = 604,    // JSON
    ResourceStaticSymbols = 611, // JSON
    ResourceDefaultCover = 700,  // JPEG
    ResourceFontRegular = 800,   // TrueType
    ResourceFontBold = 801,      // TrueType
    ResourceDynamicIcons = 900,  // icon archive of the installation's symbols
    ResourceStaticIcons = 901,   // icon archive of the system's own symbols
};

// A copy of the resource. False and an empty array if there is none with this number or it has no content.
bool LoadResourceData(uint32_t id, CVrxByteArray& array);

// The resource in place, without a copy; null and size 0 if there is none. Valid for the life of the process.
const uint8_t* GetResource(uint32_t id, uint32_t& size);
