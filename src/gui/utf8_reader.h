// Code points of a text for display, one after the other. Forgiving on purpose: every text shows something,
// and the reader never leaves the text. The strict rules of the standard stand in foundation/utf8.h.
#pragma once

#include <cstdint>
#include <cstring>

class Utf8Reader {
public:
    explicit Utf8Reader(const char* text) : Utf8Reader(text, text ? strlen(text) : 0) {}
    Utf8Reader(const char* text, size_t length)
        : m_at(reinterpret_cast<const uint8_t*>(text)), m_end(m_at + length) {}

    bool IsAtEnd() const { return m_at == m_end; }

    // Bytes not yet read.
    size_t Remaining() const { return static_cast<size_t>(m_end - m_at); }

    // The next code point. The lead byte selects the number of bytes behind it; these give their low 6 bits,
    // whatever their high bits say. A stray byte gives 0 and counts as one byte; a sequence that the end of
    // the text cuts off gives 0 and ends the text. 0 at the end too.
    uint32_t Next() {
        if (IsAtEnd())
            return 0;
        const uint8_t lead = *m_at++;
        if (lead < 0x80)
            return lead;
        const int following = FollowingBytes(lead);
        if (following > m_end - m_at) {
            m_at = m_end;
            return 0;
        }
        uint32_t code = following == 0 ? 0 : lead & (0x3FU >> following);
        for (int i = 0; i < following; i++)
            code = code << 6 | (*m_at++ & 0x3FU);
        return code;
    }

    // The code point that Next would give, without moving on.
    uint32_t Peek() const { return Utf8Reader(*this).Next(); }

private:
    // Lead bytes by mask and value: 110xxxxx, 1110xxxx, 11110xxx. All others above 0x7F are stray.
    static int FollowingBytes(uint8_t lead) {
        if ((lead & 0xE0) == 0xC0)
            return 1;
        if ((lead & 0xF0) == 0xE0)
            return 2;
        return (lead & 0xF8) == 0xF0 ? 3 : 0;
    }

    const uint8_t* m_at;
    const uint8_t* m_end;
};
