// Fitting text into a width: shortening with "..." and greedy word wrap. Characters stay whole. The work is
// bounded by what fits into the width, however long the text is. `out` may be the text itself. GUI thread
// only.
#pragma once

#include <cstdint>

#include "foundation/string.h"

class CVrGuiFont;

// `text` as it is where it fits into maxWidth pixels (or there is no font), else its longest beginning that
// fits together with "...", else "...", else nothing.
void ShortenText(CVrxStringU& out, CVrGuiFont* font, const CVrxStringU& text, int32_t maxWidth);

// `text` with a line feed wherever the next word would pass maxWidth pixels; a word that is wider alone is
// cut. Without a font or a width the text as it is. At most maxLines lines come out, the rest is left away.
void WrapText(CVrxStringU& out, CVrGuiFont* font, const CVrxStringU& text, int32_t maxWidth,
              uint32_t maxLines = UINT32_MAX);

// What the first line of a text covers, in pixels relative to the top left corner of its line box.
struct TextInk {
    int32_t left = 0, top = 0, right = 0, bottom = 0; // all 0 where nothing shows
    int32_t width = 0;                                // of the line box
};

// Measures the ink of a line, up to a character without a glyph. False: nothing shows.
bool MeasureInk(TextInk& out, CVrGuiFont& font, const CVrxStringU& text);
