// Colour schemes: from one background colour follow those of pages, buttons, texts and sliders, or a fixed dark red
// set at night. They are written as texts into the style sheet's table of colours, which is then resolved anew;
// whoever gets true as the answer lets the application apply the colours.
#pragma once

#include <cstdint>

#include "foundation/string.h"

class CVrStructure;
struct CVrDisplaySettings;
struct CVrSchemeColors;

// Each returns whether a colour changed. A name that the table lacks is passed over.

// Gives every entry the value behind its text, through chains of names in any order.
bool ResolveColorLinks(CVrStructure& structure);
bool SetSchemeColors(CVrStructure& structure, const CVrSchemeColors& colors);
// Resolves nothing: SetSchemeColors follows.
bool SetMenuSymbolColors(CVrStructure& structure, const char* symbol, const char* selected,
                         const char* disabled);

// The scheme of a background (0x00BBGGRR; null, or `useWhite`: white). Written to the settings file when it is a
// new one.
bool ApplyBackgroundColors(CVrStructure& structure, const CVrDisplaySettings& settings, bool useWhite,
                           const uint32_t* background);
// The same with the colours of the menu row; at night the dark red scheme, which is not written to the file.
bool ApplyColorScheme(CVrStructure& structure, const CVrDisplaySettings& settings, bool night, bool useWhite,
                      const uint32_t* background);
