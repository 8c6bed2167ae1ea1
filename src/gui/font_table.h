// The fonts of the style sheet's list as font objects, by index. Made at the first use; the files themselves
// are read when a font first measures or draws (gui/font.h).
#pragma once

#include <cstdint>

#include "foundation/ptr_array.h"

class CVrGuiFont;
class CVrStyleSheet;

class CVrFontTable {
public:
    CVrFontTable() = default;
    ~CVrFontTable() { Clear(); }
    CVrFontTable(const CVrFontTable&) = delete;
    CVrFontTable& operator=(const CVrFontTable&) = delete;

    // Null for an index beyond the list.
    CVrGuiFont* Font(const CVrStyleSheet& sheet, uint32_t index);
    void Clear();

private:
    void Make(const CVrStyleSheet& sheet);

    VrPtrs<CVrGuiFont> m_fonts; // owned
};

// The application's font by its index; null without an application or for an index beyond the list.
CVrGuiFont* GetFont(uint32_t index);
