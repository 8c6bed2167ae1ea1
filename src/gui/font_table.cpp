#include "gui/font_table.h"

#include "gui/application.h"
#include "gui/font.h"
#include "structure/structure.h"

void CVrFontTable::Make(const CVrStyleSheet& sheet) {
    for (const CVrFontSpec* spec : sheet.fonts) {
        auto* font = new CVrGuiFont;
        font->name = spec->name;
        font->size = spec->size;
        font->bold = spec->bold ? 1 : 0;
        m_fonts.Add(font);
    }
    CVrGuiFont::SetFontList(&m_fonts);
}

void CVrFontTable::Clear() {
    if (m_fonts.IsEmpty())
        return;
    CVrGuiFont::SetFontList(nullptr);
    for (CVrGuiFont* font : m_fonts)
        delete font;
    m_fonts.Clear();
}

CVrGuiFont* CVrFontTable::Font(const CVrStyleSheet& sheet, uint32_t index) {
    if (m_fonts.IsEmpty())
        Make(sheet);
    return m_fonts.GetAt(index);
}

CVrGuiFont* GetFont(uint32_t index) {
    CVrGuiApplication* application = TheApplication();
    const CVrStructure* structure = application ? application->Structure() : nullptr;
    return structure ? application->fonts.Font(structure->styles, index) : nullptr;
}
