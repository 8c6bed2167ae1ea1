// The symbol that an element keeps, and the road from a symbol's name to its bitmap: the installation's
// archive first, the program's own set behind it.
#pragma once

#include "foundation/string.h"
#include "gui/svg_image.h"

#include <cstdint>

class CVrArchive;
class CVrGuiElement;

// Whether a symbol shows its lines or, for the selected menu button, the filled shape.
enum class SymbolStyle { Lines, Filled };

// Loads `name` from the dynamic archive into `image`, mono, `size` pixels wide and high. What the archive
// lacks is logged and taken from the static one. Null archives hold nothing. True if there is a bitmap now.
bool LoadButtonFile(CVrArchive* dynamicArchive, CVrArchive* staticArchive, const char* name,
                    CVrGuiSvg2Img& image, uint32_t size, SymbolStyle style);

// The same from the static archive alone; `mono` false keeps the picture's own colours, for lines only.
bool LoadStaticButtonFile(CVrArchive* staticArchive, const char* name, CVrGuiSvg2Img& image, uint32_t size,
                          bool mono, SymbolStyle style);

class CVrGuiIcon {
public:
    // Load a symbol of the application's archives, size pixels wide and high; the former bitmap goes in any
    // case. True if there is a bitmap now.
    bool SetIconFromFile(const CVrxStringU& name, uint32_t size);
    bool SetStaticIconFromFile(const CVrxStringU& name, uint32_t size, bool mono);

    // The filled symbol of a menu button at `size`, loaded on demand into one of the button's two slots:
    // `usual` serves the button's own symbol size, `other` any other one. Null if the button has no symbol or
    // it cannot be loaded.
    static CVrGuiIcon* SetMenuButtonSelectedIconFromFile(const CVrGuiElement& button, CVrGuiIcon& usual,
                                                         CVrGuiIcon& other, uint32_t size);

    bool HasBitmap() const { return image.HasBitmap(); }

    CVrGuiSvg2Img image;
    CVrxStringU fileName;       // name it was loaded from
    uint32_t requestedSize = 0; // pixels it was loaded for

private:
    bool SetFilledIconFromFile(const CVrxStringU& name, uint32_t size, bool isStatic);
    bool Prepare(const CVrxStringU& name, uint32_t size, const char* tag);
};
