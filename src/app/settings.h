// What the display remembers over a restart: formats, language, change counters of the house, rest and background,
// and the colours that were derived from the background. One small JSON file, read with patience (several spellings
// of each key, numbers or words) and written in one spelling.
#pragma once

#include <cstdint>

#include "foundation/string.h"

class CVrJsonValue;

constexpr uint8_t kRestModes = 6; // 0 dark, 1 time, 2 date, 3 temperature, 4 humidity, 5 never

// Values that the file may hold or lack.
struct CVrSettingsOptions {
    bool hasRestMode = false;
    uint8_t restMode = 1; // below kRestModes
    bool hasRestDelay = false;
    uint32_t restDelay = 0; // seconds
    bool hasColorScheme = false;
    uint32_t colorScheme = 0; // kept and written back; nothing else reads it
    bool hasBackground = false;
    uint32_t background = 0; // 0x00BBGGRR

    // Takes each value that `other` has.
    void TakeFrom(const CVrSettingsOptions& other);
};

struct CVrDisplaySettings {
    static constexpr uint32_t kLanguageLength = 8; // characters at most

    uint32_t crcRooms = 0; // change counters of the host's house
    uint32_t crcCategories = 0;
    uint32_t crcStructure = 0;
    uint32_t timeFormat = 1; // 1: 24 hours, 0: 12 hours
    uint32_t dateFormat = 0; // low byte: date order 0..3; second byte: 1 for Fahrenheit
    char country[3] = "01";
    char language[kLanguageLength + 1] = "";
    CVrSettingsOptions options;
};

// The colours of a scheme that the file keeps, by their names in the style sheet.
struct CVrSchemeColors {
    enum Color : uint32_t { FrameBackground, ButtonBackground, ButtonText, TextDisabled, SliderDisabled };
    static constexpr uint32_t kCount = 5;
    static const char* const kNames[kCount];

    bool has[kCount] = {};
    CVrxStringU text[kCount]; // hexadecimal digits or the name of another colour

    void Set(Color color, const char* value);
    bool HasAny() const;
};

// Fills what is asked for (each of the last three may be null); values whose keys are missing stay. False, and
// nothing changed, for a text that is no JSON. An object without the member "wallslate" is read and sets nothing.
bool ParseSettings(const CVrxStringU& text, CVrSchemeColors* colors, CVrDisplaySettings* settings,
                   CVrSettingsOptions* options);

// One of the 45 country codes; "01" for everything else.
void ParseCountry(const CVrJsonValue& value, char (&out)[3]);

// The text of the file. Colours and options only as far as they are there; null leaves a part out.
void SerializeSettings(CVrxStringU& out, const CVrSchemeColors* colors, const CVrDisplaySettings* settings,
                       const CVrSettingsOptions* options);

// Rewrites the file and keeps its colours and those of its options that the settings do not have. False if it
// could not be written.
bool SaveSettings(const CVrDisplaySettings& settings);
