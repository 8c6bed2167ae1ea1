#include "gui/icon.h"

#include "foundation/log.h"
#include "gui/application.h"
#include "gui/element.h"

#if __has_include("foundation/archive.h")
#include "foundation/archive.h"
#else // until the archive is there, every archive is empty
struct CVrArchiveFile {
    const uint8_t* data = nullptr;
    uint32_t size = 0;
};
class CVrArchive {
public:
    CVrArchiveFile GetFile(const char*) { return {}; }
    void ReleaseFile(CVrArchiveFile&) {}
};
#endif

namespace {

bool RenderSymbol(CVrGuiSvg2Img& image, uint32_t size, bool mono, SymbolStyle style) {
    const auto side = static_cast<int32_t>(size);
    const CVrRect rect(0, 0, side, side);
    return style == SymbolStyle::Filled ? image.RenderFilled(rect) : image.Render(rect, mono);
}

enum class Found { No, Yes };

// Looks into one archive. `isDone` is the result where the name was found.
Found LoadFromArchive(CVrArchive* archive, const char* name, CVrGuiSvg2Img& image, uint32_t size, bool mono,
                      SymbolStyle style, bool& isDone) {
    if (!archive)
        return Found::No;
    CVrArchiveFile file = archive->GetFile(name);
    const bool isFound = file.data && file.size > 0;
    if (isFound)
        isDone = image.Parse(reinterpret_cast<const char*>(file.data), file.size) &&
                 RenderSymbol(image, size, mono, style);
    archive->ReleaseFile(file);
    return isFound ? Found::Yes : Found::No;
}

CVrArchive* DynamicArchive() {
    const CVrGuiApplication* application = TheApplication();
    return application ? application->DynamicArchive() : nullptr;
}

CVrArchive* StaticArchive() {
    const CVrGuiApplication* application = TheApplication();
    return application ? application->StaticArchive() : nullptr;
}

} // namespace

bool LoadButtonFile(CVrArchive* dynamicArchive, CVrArchive* staticArchive, const char* name,
                    CVrGuiSvg2Img& image, uint32_t size, SymbolStyle style) {
    bool isDone = false;
    if (LoadFromArchive(dynamicArchive, name, image, size, true, style, isDone) == Found::Yes)
        return isDone;
    Log(LogError, "CVrGuiApp::LoadButtonFile", "error '%s'", name);
    return LoadStaticButtonFile(staticArchive, name, image, size, true, style);
}

bool LoadStaticButtonFile(CVrArchive* staticArchive, const char* name, CVrGuiSvg2Img& image, uint32_t size,
                          bool mono, SymbolStyle style) {
    bool isDone = false;
    if (LoadFromArchive(staticArchive, name, image, size, mono, style, isDone) == Found::Yes)
        return isDone;
    Log(LogError, "CVrGuiApp::LoadStaticButtonFile", "error '%s'", name);
    return false;
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
