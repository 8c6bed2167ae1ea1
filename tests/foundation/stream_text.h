// Compressed streams written as readable tokens, and a decoder that follows the format word by word, one bit
// at a time. What the fast decoder does is compared with it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/decompressor.h"

namespace stream_text {

// Header 0x58 unless another is given, then the bits; the last byte is filled up with zeros.
class Stream {
public:
    explicit Stream(uint8_t header = icon_stream::kHeader) : m_bytes{header} {}

    Stream& Bits(const std::string& text) {
        for (char bit : text) {
            if (m_used++ % 8 == 0)
                m_bytes.push_back(0);
            if (bit == '1')
                m_bytes.back() |= static_cast<uint8_t>(0x80 >> (m_used - 1) % 8);
        }
        return *this;
    }
    Stream& Literal(char character) { return Bits("1").Number(static_cast<uint8_t>(character), 8); }
    Stream& Literals(const std::string& text) {
        for (char character : text)
            Literal(character);
        return *this;
    }
    Stream& Match(uint32_t position, uint32_t length) {
        icon_stream::MatchCode code = icon_stream::kMatchCodes[length - icon_stream::kShortestMatch];
        return Bits("0").Number(code.bits, code.length).Number(position, icon_stream::kWindowBits);
    }
    Stream& Flush() {
        Bits("0").Number(icon_stream::kFlushCode.bits, icon_stream::kFlushCode.length);
        return Bits(std::string((8 - m_used % 8) % 8, '1')); // skipped, whatever stands there
    }
    const std::vector<uint8_t>& Bytes() const { return m_bytes; }

private:
    Stream& Number(uint32_t value, uint32_t count) {
        while (count-- > 0)
            Bits(value >> count & 1 ? "1" : "0");
        return *this;
    }

    std::vector<uint8_t> m_bytes;
    size_t m_used = 0; // bits behind the header
};

struct Decoded {
    uint32_t code = 0;
    std::string text;

    bool operator==(const Decoded&) const = default;
};

Decoded DecodeFast(const std::vector<uint8_t>& input, size_t outputSize);
Decoded DecodeByTheLetter(const std::vector<uint8_t>& input, size_t outputSize);

// What the window holds before the first token.
std::string FreshWindow(size_t size = icon_stream::kWindowSize);

} // namespace stream_text
