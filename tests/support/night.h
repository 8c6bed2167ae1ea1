// The colours of the night, as the display has them from the host's night message on.
#pragma once

#include <cstdint>
#include <utility>

#include "support/test_display.h"

inline void ShowNight(TestDisplay& display) {
    // By name in the style sheet; those that are links there are spelled out.
    static constexpr std::pair<const char*, uint32_t> kColors[] = {
        {"framebkg", 0xFF000000},      {"btnbkg", 0xFF360000},           {"btntext", 0xFFB00000},
        {"btnbkgsel", 0xFFB00000},     {"textsel", 0xFF000000},          {"textdis", 0xFF360000},
        {"symbol", 0xFFB00000},        {"symbolsel", 0xFF000000},        {"symboldis", 0xFF360000},
        {"menubtnsymbol", 0xFF360000}, {"menubtnsymbolsel", 0xFFB00000}, {"menubtnsymboldis", 0xFF360000},
        {"sliderbkgdis", 0x40EEEEEE},
    };
    for (CVrColorSpec* color : display.App().structure.styles.colorList)
        for (const auto& [name, value] : kColors)
            if (color->name == name)
                color->value = value;
    display.Root().night = true;
    display.App().ApplyColors();
    display.Settle();
}
