// Builds JPEG streams for the tests, segment by segment and bit by bit, right ones and wrong ones.
//
// The Huffman tables are flat: every DC size has a code of 4 bits, every AC symbol one of acLength bits, in
// the order of the symbols. With acLength 16 each code is longer than the decoder's look-up.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace jpegtest {

using Bytes = std::vector<uint8_t>;
using Block = std::array<int16_t, 64>; // in zig-zag order, quantised

inline constexpr uint32_t kDcLength = 4;
inline constexpr uint32_t kDcSizes = 12;

// What a picture is made of; the defaults are one MCU of 4:4:4.
struct Picture {
    uint16_t width = 8;
    uint16_t height = 8;
    uint8_t sampling = 0x11; // of the first component
    uint16_t restartInterval = 0;
    uint32_t acLength = 8;
    uint8_t step = 1;          // quantisation step of all coefficients
    std::vector<Block> blocks; // MCU by MCU: luma, Cb, Cr

    uint32_t Across() const { return sampling >> 4; }
    uint32_t Down() const { return sampling & 15; }
    uint32_t BlocksPerMcu() const { return Across() * Down() + 2; }
    uint32_t McusAcross() const { return (width + Across() * 8 - 1) / (Across() * 8); }
    uint32_t McusDown() const { return (height + Down() * 8 - 1) / (Down() * 8); }
    uint32_t BlockCount() const { return McusAcross() * McusDown() * BlocksPerMcu(); }
};

class Writer {
public:
    Bytes bytes;

    Writer& Marker(uint8_t code) { return Raw({0xFF, code}); }
    Writer& Raw(std::initializer_list<int> values) {
        for (int value : values)
            bytes.push_back(static_cast<uint8_t>(value));
        return *this;
    }
    Writer& Segment(uint8_t code, const Bytes& content) {
        const size_t length = content.size() + 2;
        Marker(code).Raw({static_cast<int>(length >> 8), static_cast<int>(length & 255)});
        bytes.insert(bytes.end(), content.begin(), content.end());
        return *this;
    }

    // size bits of value, highest first, with stuffing.
    void Bits(uint32_t value, uint32_t size) {
        for (uint32_t i = size; i-- > 0;)
            Bit(value >> i & 1);
    }
    // Fills the last byte with ones.
    void Flush() {
        while (m_count != 0)
            Bit(1);
    }

private:
    void Bit(uint32_t bit) {
        m_current = m_current << 1 | bit;
        if (++m_count < 8)
            return;
        bytes.push_back(static_cast<uint8_t>(m_current));
        if (bytes.back() == 0xFF)
            bytes.push_back(0);
        m_current = 0;
        m_count = 0;
    }

    uint32_t m_current = 0;
    uint32_t m_count = 0;
};

inline Bytes QuantTable(uint8_t precisionAndId, uint8_t step) {
    Bytes table(65, step);
    table[0] = precisionAndId;
    return table;
}

inline Bytes DcTable(uint8_t id) {
    Bytes table(17, 0);
    table[0] = id;
    table[kDcLength] = kDcSizes;
    for (uint32_t i = 0; i < kDcSizes; ++i)
        table.push_back(static_cast<uint8_t>(i));
    return table;
}

inline Bytes AcTable(uint8_t id, uint32_t length) {
    Bytes table(17, 0);
    table[0] = static_cast<uint8_t>(0x10 | id);
    table[length] = 255;
    for (uint32_t i = 0; i < 255; ++i)
        table.push_back(static_cast<uint8_t>(i));
    return table;
}

inline Bytes Frame(const Picture& picture) {
    return {8,
            static_cast<uint8_t>(picture.height >> 8),
            static_cast<uint8_t>(picture.height),
            static_cast<uint8_t>(picture.width >> 8),
            static_cast<uint8_t>(picture.width),
            3,
            1,
            picture.sampling,
            0,
            2,
            0x11,
            1,
            3,
            0x11,
            1};
}

inline Bytes Scan() {
    return {3, 1, 0x00, 2, 0x11, 3, 0x11, 0, 63, 0};
}

inline uint32_t SizeOf(int32_t value) {
    uint32_t size = 0;
    for (uint32_t rest = static_cast<uint32_t>(value < 0 ? -value : value); rest != 0; rest >>= 1)
        ++size;
    return size;
}

inline void WriteValue(Writer& out, int32_t value, uint32_t size) {
    out.Bits(static_cast<uint32_t>(value < 0 ? value + (1 << size) - 1 : value), size);
}

inline void WriteBlock(Writer& out, const Block& block, int16_t& predictor, uint32_t acLength) {
    const int32_t diff = block[0] - predictor;
    predictor = block[0];
    out.Bits(SizeOf(diff), kDcLength);
    WriteValue(out, diff, SizeOf(diff));
    uint32_t run = 0;
    for (uint32_t k = 1; k < 64; ++k) {
        if (block[k] == 0) {
            ++run;
            continue;
        }
        for (; run > 15; run -= 16)
            out.Bits(0xF0, acLength);
        out.Bits(run << 4 | SizeOf(block[k]), acLength);
        WriteValue(out, block[k], SizeOf(block[k]));
        run = 0;
    }
    if (run > 0)
        out.Bits(0x00, acLength);
}

// The entropy-coded data with its restart markers.
inline void WriteScan(Writer& out, const Picture& picture) {
    int16_t predictors[3] = {};
    const uint32_t perMcu = picture.BlocksPerMcu();
    uint32_t restarts = 0;
    for (uint32_t i = 0; i < picture.blocks.size(); ++i) {
        const uint32_t mcu = i / perMcu;
        if (picture.restartInterval != 0 && mcu != 0 && i % perMcu == 0 &&
            mcu % picture.restartInterval == 0) {
            out.Flush();
            out.Marker(static_cast<uint8_t>(0xD0 | (restarts++ & 7)));
            predictors[0] = predictors[1] = predictors[2] = 0;
        }
        const uint32_t luma = perMcu - 2;
        const uint32_t component = i % perMcu < luma ? 0 : i % perMcu - luma + 1;
        WriteBlock(out, picture.blocks[i], predictors[component], picture.acLength);
    }
    out.Flush();
}

inline Writer Header(const Picture& picture) {
    Writer out;
    out.Marker(0xD8);
    for (uint8_t id = 0; id < 2; ++id) {
        out.Segment(0xDB, QuantTable(id, picture.step));
        out.Segment(0xC4, DcTable(id)).Segment(0xC4, AcTable(id, picture.acLength));
    }
    if (picture.restartInterval != 0)
        out.Segment(0xDD, {static_cast<uint8_t>(picture.restartInterval >> 8),
                           static_cast<uint8_t>(picture.restartInterval)});
    out.Segment(0xC0, Frame(picture)).Segment(0xDA, Scan());
    return out;
}

inline Bytes Encode(const Picture& picture) {
    Writer out = Header(picture);
    WriteScan(out, picture);
    out.Marker(0xD9);
    return out.bytes;
}

} // namespace jpegtest
