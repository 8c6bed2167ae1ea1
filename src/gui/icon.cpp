#include "gui/icon.h"

#include "foundation/archive.h"
#include "foundation/log.h"
#include "gui/application.h"
#include "gui/element.h"

namespace {

enum class Found { Nothing, Text };

// Draws the archive's text of this name, if it holds one, into the image.
Found LoadFrom(CVrArchive* archive, const char* name, CVrGuiSvg2Img& image, uint32_t size, bool mono,
               SymbolStyle style, bool& isDrawn) {
    CVrArchiveFile file = archive ? archive->GetFile(name) : CVrArchiveFile{};
    if (!file.data || file.size == 0)
        return Found::Nothing;
    const CVrRect rect(0, 0, static_cast<int32_t>(size), static_cast<int32_t>(size));
    isDrawn = image.Parse(reinterpret_cast<const char*>(file.data), file.size) &&
              (style == SymbolStyle::Filled ? image.RenderFilled(rect) : image.Render(rect, mono));
    archive->ReleaseFile(file);
    return Found::Text;
}

CVrArchive* DynamicArchive() {
    return TheApplication() ? TheApplication()->DynamicArchive() : nullptr;
}

CVrArchive* StaticArchive() {
    return TheApplication() ? TheApplication()->StaticArchive() : nullptr;
}

} // namespace

bool LoadButtonFile(CVrArchive* dynamicArchive, CVrArchive* staticArchive, const char* name,
                    CVrGuiSvg2Img& image, uint32_t size, SymbolStyle style) {
    bool isDrawn = false;
    if (LoadFrom(dynamicArchive, name, image, size, true, style, isDrawn) == Found::Text)
        return isDrawn;
    Log(LogError, "CVrGuiApp::LoadButtonFile", "error '%s'", name);
    return LoadStaticButtonFile(staticArchive, name, image, size, true, style);
}

bool LoadStaticButtonFile(CVrArchive* staticArchive, const char* name, CVrGuiSvg2Img& image, uint32_t size,
                          bool mono, SymbolStyle style) {
    bool isDrawn = false;
    if (LoadFrom(staticArchive, name, image, size, mono, style, isDrawn) == Found::Nothing)
        Log(LogError, "CVrGuiApp::LoadStaticButtonFile", "error '%s'", name);
    return isDrawn;
}

bool CVrGuiIcon::Prepare(const CVrxStringU& name, uint32_t size, const char* tag) {
    image.FreeBitmap();
    fileName = name;
    requestedSize = size;
    if (size == 0)
        Log(LogError, tag, "%s size %d error", name.CStr(), 0);
    return size != 0;
}

bool CVrGuiIcon::SetIconFromFile(const CVrxStringU& name, uint32_t size) {
    if (!Prepare(name, size, "CVrGuiIcon::SetIconFromFile"))
        return false;
    LoadButtonFile(DynamicArchive(), StaticArchive(), fileName.CStr(), image, size, SymbolStyle::Lines);
    return HasBitmap();
}

bool CVrGuiIcon::SetStaticIconFromFile(const CVrxStringU& name, uint32_t size, bool mono) {
    if (!Prepare(name, size, "CVrGuiIcon::SetStaticIconFromFile"))
        return false;
    LoadStaticButtonFile(StaticArchive(), fileName.CStr(), image, size, mono, SymbolStyle::Lines);
    return HasBitmap();
}

bool CVrGuiIcon::SetFilledIconFromFile(const CVrxStringU& name, uint32_t size, bool isStatic) {
    if (!Prepare(name, size, "CVrGuiIcon::SetMenuButtonSelectedIconFromFile"))
        return false;
    if (isStatic)
        LoadStaticButtonFile(StaticArchive(), fileName.CStr(), image, size, true, SymbolStyle::Filled);
    else
        LoadButtonFile(DynamicArchive(), StaticArchive(), fileName.CStr(), image, size, SymbolStyle::Filled);
    return HasBitmap();
}

CVrGuiIcon* CVrGuiIcon::SetMenuButtonSelectedIconFromFile(const CVrGuiElement& button, CVrGuiIcon& usual,
                                                          CVrGuiIcon& other, uint32_t size) {
    if (button.iconName.IsEmpty())
        return nullptr;
    CVrGuiIcon& slot = size == button.iconSize ? usual : other;
    // A symbol that could not be loaded is not tried again at every painting.
    if (slot.requestedSize != size || slot.fileName != button.iconName)
        slot.SetFilledIconFromFile(button.iconName, size, button.iconStatic);
    return slot.HasBitmap() ? &slot : nullptr;
}
