#include "app/color_scheme.h"

#include <cmath>

#include "app/settings.h"
#include "foundation/files.h"
#include "structure/hex.h"
#include "structure/structure.h"

namespace {

constexpr uint32_t kWhite = 0xFFFFFF, kOpaque = 0xFF000000;
constexpr float kLightThreshold = 0.5f;

// A background's own colours, all 0xRRGGBB.
struct Background {
    uint32_t color = kWhite;

    static Background From(bool useWhite, const uint32_t* bgr) {
        if (useWhite || !bgr)
            return {};
        return {(*bgr & 0xFF) << 16 | (*bgr & 0xFF00) | (*bgr >> 16 & 0xFF)};
    }
    uint32_t Channel(int shift) const { return color >> shift & 0xFF; }

    // Relative luminance as the eye weighs the channels, without their gamma.
    bool IsLight() const {
        const auto part = [this](int shift) { return static_cast<float>(Channel(shift)) / 255; };
        return part(16) * 0.2126f + part(8) * 0.7152f + part(0) * 0.0722f > kLightThreshold;
    }

    // Moved a little towards a grey, so that a button stands out from the page: darker on light pages, lighter on
    // dark ones.
    uint32_t ButtonColor() const {
        const float share = IsLight() ? 0.15f : 0.1f;
        const float grey = IsLight() ? 24.0f : 238.0f;
        uint32_t mixed = 0;
        for (const int shift : {16, 8, 0}) {
            const float value = static_cast<float>(Channel(shift)) * (1 - share) + grey * share;
            mixed |= (static_cast<uint32_t>(std::ceil(value)) & 0xFF) << shift;
        }
        return mixed;
    }
};

CVrColorSpec* FindColor(CVrStructure& structure, const CVrxStringU& name) {
    for (CVrColorSpec* color : structure.styles.colorList)
        if (color->name == name)
            return color;
    return nullptr;
}

bool SetColor(CVrStructure& structure, const char* name, const CVrxStringU& text) {
    CVrColorSpec* color = FindColor(structure, name);
    if (!color || color->valueText == text)
        return false;
    color->valueText = text;
    return true;
}

bool SetTexts(CVrStructure& structure, const CVrSchemeColors& colors) {
    bool changed = false;
    for (uint32_t i = 0; i < CVrSchemeColors::kCount; i++)
        changed |= SetColor(structure, CVrSchemeColors::kNames[i], colors.text[i]);
    return changed;
}

CVrxStringU HexText(uint32_t color) {
    return CVrxStringU::Formatted("%x", color | kOpaque);
}

CVrSchemeColors SchemeOf(const Background& background) {
    const bool light = background.IsLight();
    CVrSchemeColors colors;
    colors.Set(CVrSchemeColors::FrameBackground, HexText(background.color).CStr());
    colors.Set(CVrSchemeColors::ButtonBackground, HexText(background.ButtonColor()).CStr());
    colors.Set(CVrSchemeColors::ButtonText, light ? "black" : "white");
    colors.Set(CVrSchemeColors::TextDisabled, light ? "blackdis" : "whitedis");
    colors.Set(CVrSchemeColors::SliderDisabled, light ? "40181818" : "40eeeeee");
    return colors;
}

CVrSchemeColors NightScheme() {
    CVrSchemeColors colors;
    colors.Set(CVrSchemeColors::FrameBackground, "ff000000");
    colors.Set(CVrSchemeColors::ButtonBackground, "ff360000");
    colors.Set(CVrSchemeColors::ButtonText, "ffb00000");
    colors.Set(CVrSchemeColors::TextDisabled, "ff360000");
    colors.Set(CVrSchemeColors::SliderDisabled, "40eeeeee");
    return colors;
}

} // namespace

// Every pass carries a value one link further, so that a chain settles within as many passes as there are entries;
// a circle never does and is left after that.
bool ResolveColorLinks(CVrStructure& structure) {
    const auto& table = structure.styles.colorList;
    bool changed = false;
    for (uint32_t pass = 0; pass < table.GetSize(); pass++) {
        bool moved = false;
        for (CVrColorSpec* color : table) {
            const CVrColorSpec* target = FindColor(structure, color->valueText);
            const uint32_t value = target ? target->value : ParseHex(color->valueText.CStr());
            moved |= value != color->value;
            color->value = value;
        }
        if (!moved)
            break;
        changed = true;
    }
    return changed;
}

bool SetSchemeColors(CVrStructure& structure, const CVrSchemeColors& colors) {
    const bool newTexts = SetTexts(structure, colors);
    return ResolveColorLinks(structure) || newTexts;
}

bool SetMenuSymbolColors(CVrStructure& structure, const char* symbol, const char* selected,
                         const char* disabled) {
    bool changed = SetColor(structure, "menubtnsymbol", symbol);
    changed |= SetColor(structure, "menubtnsymbolsel", selected);
    changed |= SetColor(structure, "menubtnsymboldis", disabled);
    return changed;
}

bool ApplyBackgroundColors(CVrStructure& structure, const CVrDisplaySettings& settings, bool useWhite,
                           const uint32_t* background) {
    const CVrSchemeColors colors = SchemeOf(Background::From(useWhite, background));
    if (!SetTexts(structure, colors))
        return ResolveColorLinks(structure);
    ResolveColorLinks(structure);
    CVrxStringU file;
    SerializeSettings(file, &colors, &settings, &settings.options);
    SaveSettingsFile(file);
    return true;
}

bool ApplyColorScheme(CVrStructure& structure, const CVrDisplaySettings& settings, bool night, bool useWhite,
                      const uint32_t* background) {
    if (night) {
        const bool newMenu = SetMenuSymbolColors(structure, "ff360000", "ffb00000", "ff360000");
        return SetSchemeColors(structure, NightScheme()) || newMenu;
    }
    const bool light = Background::From(useWhite, background).IsLight();
    const bool newMenu = SetMenuSymbolColors(structure, "gray", "white", light ? "4d000000" : "4dffffff");
    return ApplyBackgroundColors(structure, settings, useWhite, background) || newMenu;
}
