#include "gui/text_layout.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "gui/font.h"
#include "gui/utf8_reader.h"

namespace {

constexpr uint32_t kDot = '.';
constexpr uint32_t kNothing = 0; // follows the last character
constexpr const char* kDots = "...";

// Walks over the first line of a text as CVrGuiFont::MeasureText does, character by character.
class LineWalker {
public:
    LineWalker(CVrGuiFont& font, std::string_view text)
        : m_font(font), m_text(text), m_reader(text.data(), text.size()) {}

    // Moves over one character; false at the end of the line, of the text, or before a character without a
    // glyph.
    bool Step() {
        const Utf8Reader before = m_reader;
        const uint32_t code = m_reader.Next();
        const bool isEnd = before.IsAtEnd() || code == 0 || code == '\n' || code == '\r';
        const CFontCacheData* glyph = isEnd ? nullptr : m_font.GetGlyphDsc(code, m_reader.Peek());
        if (!glyph) {
            m_reader = before;
            return false;
        }
        m_widthBefore = m_width;
        m_width += glyph->advance;
        m_last = code;
        return true;
    }

    int64_t Width() const { return m_width; }
    // Width if `next` followed instead of what does.
    int64_t WidthBefore(uint32_t next) const {
        if (m_last == 0)
            return 0;
        const CFontCacheData* glyph = m_font.GetGlyphDsc(m_last, next);
        return m_widthBefore + (glyph ? glyph->advance : 0);
    }
    int64_t WidthWithoutLast() const { return m_widthBefore; }
    size_t Bytes() const { return m_text.size() - m_reader.Remaining(); }

private:
    CVrGuiFont& m_font;
    std::string_view m_text;
    Utf8Reader m_reader;
    int64_t m_width = 0;       // pixels up to here
    int64_t m_widthBefore = 0; // the same without the last character
    uint32_t m_last = 0;       // code point, 0: none yet
};

int64_t DotsWidth(CVrGuiFont& font) {
    LineWalker dots(font, kDots);
    while (dots.Step()) {
    }
    return dots.Width();
}

bool Fits(CVrGuiFont& font, std::string_view text, int32_t maxWidth) {
    LineWalker walker(font, text);
    while (walker.Width() <= maxWidth)
        if (!walker.Step())
            return true;
    return false;
}

// Bytes of the longest beginning that fits, one character at the least.
size_t FittingBytes(CVrGuiFont& font, std::string_view text, int32_t maxWidth) {
    LineWalker walker(font, text);
    size_t fitting = 0;
    while (walker.Step()) {
        if (fitting > 0 && walker.WidthWithoutLast() > maxWidth)
            break;
        if (fitting == 0 || walker.WidthBefore(kNothing) <= maxWidth)
            fitting = walker.Bytes();
    }
    return fitting;
}

// Collects lines up to a limit.
class LineCollector {
public:
    explicit LineCollector(uint32_t maxLines) : m_left(maxLines) {}
    bool IsFull() const { return m_left == 0; }
    void Add(std::string_view line) {
        if (IsFull())
            return;
        if (m_hasLine)
            m_text.Append('\n');
        m_text.AppendBytes(line.data(), static_cast<uint32_t>(line.size()));
        m_hasLine = true;
        m_left--;
    }
    CVrxStringU&& Take() { return std::move(m_text); }

private:
    CVrxStringU m_text;
    uint32_t m_left;
    bool m_hasLine = false;
};

} // namespace

void ShortenText(CVrxStringU& out, CVrGuiFont* font, const CVrxStringU& text, int32_t maxWidth) {
    if (!font || text.IsEmpty()) {
        out = text;
        return;
    }
    if (maxWidth <= 0) {
        out.Clear();
        return;
    }
    font->EnsureLoaded();
    const int64_t dots = DotsWidth(*font);
    LineWalker walker(*font, text.View());
    size_t kept = 0;
    while (walker.WidthWithoutLast() <= maxWidth) {
        if (!walker.Step()) {
            if (walker.Width() > maxWidth)
                break;
            out = text; // the whole line fits
            return;
        }
        if (walker.WidthBefore(kDot) + dots <= maxWidth)
            kept = walker.Bytes();
    }
    if (dots > maxWidth) {
        out.Clear();
        return;
    }
    out = text.Left(static_cast<int32_t>(kept)) + kDots;
}

// A line is always a connected part of the text: from the first byte of its first word to the end of its
// last.
void WrapText(CVrxStringU& out, CVrGuiFont* font, const CVrxStringU& text, int32_t maxWidth,
              uint32_t maxLines) {
    if (!font || text.IsEmpty() || maxWidth <= 0) {
        out = text;
        return;
    }
    font->EnsureLoaded();
    const std::string_view all = text.View();
    LineCollector lines(maxLines);
    size_t lineBegin = 0, lineEnd = 0; // the current line
    for (size_t word = 0; !lines.IsFull();) {
        const size_t wordEnd = std::min(all.find_first_of(" \n", word), all.size());
        if (lineEnd == lineBegin)
            lineBegin = word;
        if (lineBegin < word && !Fits(*font, all.substr(lineBegin, wordEnd - lineBegin), maxWidth)) {
            lines.Add(all.substr(lineBegin, lineEnd - lineBegin));
            lineBegin = word;
        }
        while (lineBegin >= word && !lines.IsFull() &&
               !Fits(*font, all.substr(lineBegin, wordEnd - lineBegin), maxWidth)) {
            const size_t cut = FittingBytes(*font, all.substr(lineBegin, wordEnd - lineBegin), maxWidth);
            if (cut == wordEnd - lineBegin)
                break; // a single character, however wide
            lines.Add(all.substr(lineBegin, cut));
            lineBegin += cut;
        }
        lineEnd = wordEnd;
        const bool isLineFeed = wordEnd < all.size() && all[wordEnd] == '\n';
        if (isLineFeed || wordEnd == all.size()) {
            lines.Add(all.substr(lineBegin, lineEnd - lineBegin));
            lineBegin = lineEnd = wordEnd + 1;
        }
        if (wordEnd == all.size())
            break;
        word = wordEnd + 1;
    }
    out = lines.Take();
}

bool MeasureInk(TextInk& out, CVrGuiFont& font, const CVrxStringU& text) {
    out = TextInk();
    bool shows = false;
    Utf8Reader reader(text.CStr());
    while (!reader.IsAtEnd()) {
        const uint32_t code = reader.Next();
        const bool isEnd = code == 0 || code == '\n' || code == '\r';
        const CFontCacheData* glyph = isEnd ? nullptr : font.GetGlyphDsc(code, reader.Peek());
        if (!glyph)
            break;
        if (glyph->HasBitmap()) {
            const int32_t left = out.width + glyph->left;
            const int32_t bottom = font.ascent - glyph->below;
            const int32_t top = bottom - glyph->glyphSize.height;
            out.left = shows ? std::min(out.left, left) : left;
            out.top = shows ? std::min(out.top, top) : top;
            out.right = std::max(out.right, left + glyph->glyphSize.width);
            out.bottom = shows ? std::max(out.bottom, bottom) : bottom;
            shows = true;
        }
        out.width += glyph->advance;
    }
    return shows;
}
