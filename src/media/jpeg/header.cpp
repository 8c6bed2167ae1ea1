// The marker segments in front of the scan: T.81, Annex B.
#include "media/jpeg/jpeg.h"

#include <algorithm>
#include <cmath>

#include "foundation/log.h"
#include "media/jpeg/zigzag.h"

using namespace jpeg;

namespace {

// T.81, table B.1.
enum Marker : uint8_t {
    MarkerSof0 = 0xC0,
    MarkerDht = 0xC4,
    MarkerJpg = 0xC8,
    MarkerDac = 0xCC,
    MarkerSof15 = 0xCF,
    MarkerSoi = 0xD8,
    MarkerEoi = 0xD9,
    MarkerSos = 0xDA,
    MarkerDqt = 0xDB,
    MarkerDri = 0xDD,
    MarkerPrefix = 0xFF,
};

constexpr uint32_t kLengthBytes = 2;
constexpr uint32_t kMinSegmentLength = 3; // with its length bytes; an empty segment is refused
constexpr uint8_t kPrecision = 8;         // bits a sample

// Bytes of a frame header: precision, height, width, count; then id, sampling, table of each component.
constexpr uint32_t kFrameFixed = 6;
constexpr uint32_t kFrameEach = 3;
// Bytes of a scan header: count; id and tables of each component; 3 bytes that a sequential scan does not
// use.
constexpr uint32_t kScanFixed = 4;
constexpr uint32_t kScanEach = 2;

constexpr uint8_t kSampling11 = 0x11;
constexpr uint8_t kSampling21 = 0x21;
constexpr uint8_t kSampling22 = 0x22;

// Extra bytes of the MCU buffer, and the least size of the work line.
constexpr uint32_t kMcuReserve = 131;
constexpr uint32_t kWorkLineReserve = 64;
constexpr uint32_t kMinWorkLine = 256;

uint16_t ReadU16(const uint8_t* bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

// A frame that this decoder does not know: progressive, lossless, hierarchical, arithmetic, extended.
bool IsForeignFrame(uint8_t marker) {
    return marker > MarkerSof0 && marker <= MarkerSof15 && marker != MarkerDht && marker != MarkerJpg &&
           marker != MarkerDac;
}

} // namespace

// Reads the marker segments in order, up to the scan header, and makes everything ready for the scan.
bool CJpeg::Init() {
    ClearTables();
    auto* window = AllocArray<uint8_t>(BitReader::kWindowSize);
    if (!window) {
        Log(LogError, "CJpeg::Init", "AllocFromPool returns NULL");
        return Refuse(JpegRefusal::NoWorkMemory);
    }
    m_bits.UseWindow(window);
    uint8_t start[2];
    if (!m_bits.Take(start, sizeof start) || start[0] != MarkerPrefix || start[1] != MarkerSoi) {
        Log(LogError, "CJpeg::Init", "Missing SOI");
        return Refuse(JpegRefusal::MissingSoi);
    }
    if (!ReadSegments() || !AllocMcuMemory())
        return false;
    m_bits.BeginBits();
    return true;
}

void CJpeg::ClearTables() {
    ResetPool();
    width = 0;
    height = 0;
    sampling = McuShape();
    restartInterval = 0;
    restartCount = 0;
    workLine = nullptr;
    mcuBuffer = nullptr;
    std::fill(std::begin(dcValues), std::end(dcValues), int16_t{0});
    std::fill(std::begin(quant), std::end(quant), nullptr);
    std::fill(&huffman[0][0], &huffman[0][0] + 2 * kHuffmanIds, nullptr);
}

bool CJpeg::ReadSegments() {
    Walk walk = Walk::Continue;
    while (walk == Walk::Continue)
        walk = ReadSegment();
    return walk == Walk::ScanFound;
}

CJpeg::Walk CJpeg::ReadSegment() {
    uint8_t marker = 0;
    if (!ReadMarker(marker))
        return Walk::Failed;
    if (marker == MarkerEoi) {
        Refuse(JpegRefusal::EndBeforeScan);
        return Walk::Failed;
    }
    uint8_t lengthBytes[kLengthBytes];
    if (!m_bits.Take(lengthBytes, sizeof lengthBytes)) {
        Refuse(JpegRefusal::TruncatedHeader);
        return Walk::Failed;
    }
    const uint32_t length = ReadU16(lengthBytes);
    if (length < kMinSegmentLength) {
        Refuse(JpegRefusal::BadMarker);
        return Walk::Failed;
    }
    return ReadByMarker(marker, length - kLengthBytes);
}

// B.1.1.2: any number of fill bytes FF may stand in front of a marker.
bool CJpeg::ReadMarker(uint8_t& marker) {
    uint8_t prefix = 0;
    if (!m_bits.Take(&prefix, 1))
        return Refuse(JpegRefusal::TruncatedHeader);
    if (prefix != MarkerPrefix)
        return Refuse(JpegRefusal::BadMarker);
    do {
        if (!m_bits.Take(&marker, 1))
            return Refuse(JpegRefusal::TruncatedHeader);
    } while (marker == MarkerPrefix);
    return true;
}

// length: bytes of the segment behind its length field.
CJpeg::Walk CJpeg::ReadByMarker(uint8_t marker, uint32_t length) {
    bool (CJpeg::*parse)(const uint8_t*, uint32_t) = nullptr;
    switch (marker) {
    case MarkerSof0:
        parse = &CJpeg::ParseFrame;
        break;
    case MarkerDht:
        parse = &CJpeg::ParseHuffmanTables;
        break;
    case MarkerDqt:
        parse = &CJpeg::ParseQuantTables;
        break;
    case MarkerDri:
        parse = &CJpeg::ParseRestartInterval;
        break;
    case MarkerSos:
        parse = &CJpeg::ParseScan;
        break;
    default:
        break;
    }
    if (IsForeignFrame(marker)) {
        Refuse(JpegRefusal::FrameKind);
        return Walk::Failed;
    }
    if (parse && length > BitReader::kWindowSize) {
        Refuse(JpegRefusal::SegmentTooLong);
        return Walk::Failed;
    }
    if (parse ? !m_bits.TakeSegment(length) : !m_bits.Skip(length)) {
        Refuse(JpegRefusal::TruncatedHeader);
        return Walk::Failed;
    }
    if (parse && !(this->*parse)(m_bits.Segment(), length))
        return Walk::Failed;
    return marker == MarkerSos ? Walk::ScanFound : Walk::Continue;
}

// B.2.2 Frame header.
bool CJpeg::ParseFrame(const uint8_t* bytes, uint32_t length) {
    if (length < kFrameFixed)
        return Refuse(JpegRefusal::TruncatedHeader);
    if (bytes[0] != kPrecision)
        return Refuse(JpegRefusal::Precision);
    if (bytes[5] != kComponents)
        return Refuse(JpegRefusal::ComponentCount);
    if (length < kFrameFixed + kComponents * kFrameEach)
        return Refuse(JpegRefusal::TruncatedHeader);
    height = ReadU16(bytes + 1);
    width = ReadU16(bytes + 3);
    for (uint32_t i = 0; i < kComponents; ++i) {
        const uint8_t* component = bytes + kFrameFixed + i * kFrameEach;
        const uint8_t factors = component[1];
        const bool known =
            factors == kSampling11 || (i == 0 && (factors == kSampling21 || factors == kSampling22));
        if (!known)
            return Refuse(JpegRefusal::Sampling);
        if (i == 0)
            sampling = {static_cast<uint32_t>(factors >> 4), factors & 15u};
        if (component[2] >= kQuantTables)
            return Refuse(JpegRefusal::TableSelector);
        quantIndex[i] = component[2];
    }
    return true;
}

// B.2.4.2. A table that is defined again takes the place of the former one.
bool CJpeg::ParseHuffmanTables(const uint8_t* bytes, uint32_t length) {
    while (length > 0) {
        const uint32_t tableClass = bytes[0] >> 4;
        const uint32_t id = bytes[0] & 15u;
        if (tableClass > 1 || id >= kHuffmanIds)
            return Refuse(JpegRefusal::HuffmanTable);
        HuffmanTable*& table = huffman[tableClass][id];
        if (!table && !(table = AllocArray<HuffmanTable>(1)))
            return Refuse(JpegRefusal::NoWorkMemory);
        const uint32_t used = table->Parse(bytes + 1, length - 1, static_cast<TableClass>(tableClass));
        if (used == HuffmanTable::kMalformed)
            return Refuse(JpegRefusal::HuffmanTable);
        bytes += 1 + used;
        length -= 1 + used;
    }
    return true;
}

// B.2.4.1. The product of step and scale factor is rounded, not the factor: a small step keeps its precision.
bool CJpeg::ParseQuantTables(const uint8_t* bytes, uint32_t length) {
    for (; length > 0; bytes += 1 + kBlockSize, length -= 1 + kBlockSize) {
        if (length < 1 + kBlockSize || bytes[0] > 15)
            return Refuse(JpegRefusal::QuantTable);
        uint32_t*& table = quant[bytes[0] % kQuantTables];
        if (!table && !(table = AllocArray<uint32_t>(kBlockSize)))
            return Refuse(JpegRefusal::NoWorkMemory);
        for (uint32_t i = 0; i < kBlockSize; ++i) {
            const uint32_t at = kZigZagColumns[i];
            const double scaled = bytes[1 + i] * TransformScale(at / kBlockEdge, at % kBlockEdge);
            table[at] = static_cast<uint32_t>(std::lround(std::ldexp(scaled, kQuantFractionBits)));
        }
    }
    return true;
}

bool CJpeg::ParseRestartInterval(const uint8_t* bytes, uint32_t length) {
    if (length < 2)
        return Refuse(JpegRefusal::TruncatedHeader);
    restartInterval = ReadU16(bytes);
    return true;
}

// B.2.3 Scan header.
bool CJpeg::ParseScan(const uint8_t* bytes, uint32_t length) {
    if (width == 0 || height == 0)
        return Refuse(JpegRefusal::NoFrame);
    if (RowPitch() > kMaxRowBytes)
        return Refuse(JpegRefusal::TooWide);
    if (bytes[0] != kComponents)
        return Refuse(JpegRefusal::ScanComponents);
    if (length < kScanFixed + kComponents * kScanEach)
        return Refuse(JpegRefusal::TruncatedHeader);
    for (uint32_t i = 0; i < kComponents; ++i) {
        const uint8_t selector = bytes[1 + i * kScanEach + 1];
        if (selector != 0x00 && selector != 0x11)
            return Refuse(JpegRefusal::TableSelector);
        tableIndex[i] = selector & 1u;
        const bool defined = huffman[0][tableIndex[i]] && huffman[1][tableIndex[i]] && quant[quantIndex[i]];
        if (!defined)
            return Refuse(JpegRefusal::MissingTable);
    }
    return true;
}

bool CJpeg::AllocMcuMemory() {
    const uint32_t pixels = sampling.LumaBlocks() * kBlockSize;
    const uint32_t lineBytes = std::max(pixels * 2 + kWorkLineReserve, kMinWorkLine);
    workLine = static_cast<int16_t*>(AllocFromPool(lineBytes));
    mcuBuffer =
        workLine ? AllocArray<uint8_t>((kBlockSize * sampling.Blocks() + kMcuReserve) & ~3u) : nullptr;
    return mcuBuffer ? true : Refuse(JpegRefusal::NoWorkMemory);
}
