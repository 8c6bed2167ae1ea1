// The pool, the decoding of the scan and the output of pixels. The header is read in header.cpp.
#include "media/jpeg/jpeg.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "foundation/log.h"
#include "media/jpeg/zigzag.h"

using namespace jpeg;

namespace {

constexpr uint32_t kPoolAlignment = 4;
constexpr uint8_t kRestartMarker = 0xD0; // RST0; the low three bits count on to RST7
constexpr uint8_t kRestartMask = 7;
constexpr uint8_t kOpaque = 255;

// A block takes at least one bit for its DC and one for its AC coefficients.
constexpr uint64_t kMinBlockBits = 2;

constexpr uint8_t kEndOfBlock = 0x00;
constexpr uint8_t kZeroRun = 0xF0; // ZRL: 16 zeros
constexpr uint32_t kZeroRunLength = 16;

// A run that ends in no coefficient has no meaning in a sequential scan.
bool IsUndefined(uint8_t symbol) {
    return (symbol & 15u) == 0 && symbol != kEndOfBlock && symbol != kZeroRun;
}

// Results of DecodeAc.
constexpr uint32_t kBroken = 0;
constexpr uint32_t kOnlyDc = 1;
constexpr uint32_t kBehindBlock = kBlockSize + 1; // where a broken block ends

} // namespace

CJpeg::CJpeg() : pool(static_cast<uint8_t*>(malloc(kPoolSize))) {
    if (!pool)
        Log(LogError, "CJpeg::CJpeg", "Jpeg_Dec work malloc failed");
}

CJpeg::~CJpeg() {
    free(pool);
    FreePicture();
}

uint8_t* CJpeg::LoadJpeg(const uint8_t* data, uint32_t size) {
    return LoadScaled(data, size, 0, false);
}

uint8_t* CJpeg::LoadScaled(const uint8_t* data, uint32_t size, uint8_t newScale, bool withAlpha) {
    FreePicture();
    m_refusal = JpegRefusal::None;
    bytesPerPixel4 = withAlpha;
    scale = std::min<uint8_t>(newScale, kMaxScale);
    m_bits.Start(data, size);
    if (!PrepareInit())
        return nullptr;
    // What the data cannot hold is not even allocated.
    const bool decoded =
        (CanHoldPicture() || Refuse(JpegRefusal::TruncatedScan)) && AllocPicture() && Decompress();
    if (!decoded) {
        if (m_refusal != JpegRefusal::NoPictureMemory)
            Log(LogError, "CJpeg::LoadJpeg", "Failed to decompress");
        FreePicture();
        return nullptr;
    }
    resultTaken = true;
    return m_pDestBuffer;
}

bool CJpeg::PrepareInit() {
    if (!Init()) {
        Log(LogError, "CJpeg::PrepareInit", "Failed to prepare");
        return false;
    }
    Log(LogEvent, "CJpeg::PrepareInit", "Image dimensions: %ux%u. %u memory bytes used", width, height,
        PoolUsed());
    return true;
}

bool CJpeg::AllocPicture() {
    const size_t bytes = RowPitch() * OutputHeight();
    m_pDestBuffer = static_cast<uint8_t*>(malloc(bytes));
    if (m_pDestBuffer)
        return true;
    Log(LogError, "CJpeg::LoadJpeg", "Jpeg_Dec m_pDestBuffer malloc failed, need %zu Bytes", bytes);
    return Refuse(JpegRefusal::NoPictureMemory);
}

// Forgets a picture that the caller owns, frees any other.
void CJpeg::FreePicture() {
    if (!resultTaken)
        free(m_pDestBuffer);
    m_pDestBuffer = nullptr;
    resultTaken = false;
}

void CJpeg::ResetPool() {
    poolNext = pool;
    poolFree = pool ? kPoolSize : 0;
}

void* CJpeg::AllocFromPool(uint32_t bytes) {
    const uint32_t rounded = (bytes + kPoolAlignment - 1) & ~(kPoolAlignment - 1);
    if (rounded > poolFree)
        return nullptr;
    void* memory = poolNext;
    poolNext += rounded;
    poolFree -= rounded;
    return memory;
}

bool CJpeg::Refuse(JpegRefusal why) {
    m_refusal = why;
    return false;
}

const char* CJpeg::RefusalText(JpegRefusal refusal) {
    switch (refusal) {
    case JpegRefusal::None:
        return "not refused";
    case JpegRefusal::NoWorkMemory:
        return "the work memory is missing or too small";
    case JpegRefusal::MissingSoi:
        return "not a JPEG file (no SOI marker at the start)";
    case JpegRefusal::BadMarker:
        return "a marker segment is malformed";
    case JpegRefusal::TruncatedHeader:
        return "the header is truncated";
    case JpegRefusal::SegmentTooLong:
        return "a marker segment is too long";
    case JpegRefusal::FrameKind:
        return "not a baseline frame (progressive, extended, lossless or arithmetic)";
    case JpegRefusal::EndBeforeScan:
        return "the picture ends before its scan";
    case JpegRefusal::Precision:
        return "the samples are not 8 bits wide";
    case JpegRefusal::ComponentCount:
        return "the frame does not have three components";
    case JpegRefusal::Sampling:
        return "the sampling is not 4:4:4, 4:2:2 or 4:2:0";
    case JpegRefusal::TableSelector:
        return "a table selector is out of range";
    case JpegRefusal::HuffmanTable:
        return "a Huffman table is malformed";
    case JpegRefusal::QuantTable:
        return "a quantisation table is malformed or not 8 bits wide";
    case JpegRefusal::NoFrame:
        return "no size is known before the scan";
    case JpegRefusal::TooWide:
        return "the picture is too wide";
    case JpegRefusal::ScanComponents:
        return "the scan does not have three components";
    case JpegRefusal::MissingTable:
        return "a table that the scan uses is missing";
    case JpegRefusal::NoPictureMemory:
        return "no memory for the picture";
    case JpegRefusal::RestartMarker:
        return "a restart marker is missing or out of order";
    case JpegRefusal::BadCode:
        return "the scan holds an invalid code";
    case JpegRefusal::TruncatedScan:
        return "the scan is truncated";
    }
    return "unknown";
}

// --- Scan ---

uint32_t CJpeg::McusAcross() const {
    return (width + sampling.Width() - 1) / sampling.Width();
}
uint32_t CJpeg::McusDown() const {
    return (height + sampling.Height() - 1) / sampling.Height();
}

bool CJpeg::CanHoldPicture() const {
    const uint64_t blocks = uint64_t{McusAcross()} * McusDown() * sampling.Blocks();
    return blocks * kMinBlockBits <= uint64_t{m_bits.Left()} * 8;
}

bool CJpeg::Decompress() {
    uint32_t untilRestart = restartInterval;
    for (uint32_t mcuY = 0; mcuY < McusDown(); ++mcuY) {
        for (uint32_t mcuX = 0; mcuX < McusAcross(); ++mcuX) {
            if (restartInterval != 0 && untilRestart-- == 0) {
                if (!Restart())
                    return Refuse(JpegRefusal::RestartMarker);
                untilRestart = restartInterval - 1u;
            }
            if (!DecodeMcu())
                return false;
            OutputMcu(mcuX, mcuY);
        }
    }
    return true;
}

// The next restart marker, in turn RST0 to RST7, stands at the following byte.
bool CJpeg::Restart() {
    uint8_t marker[2];
    if (!m_bits.TakeMarker(marker) || marker[0] != 0xFF)
        return false;
    if (marker[1] != (kRestartMarker | (restartCount++ & kRestartMask)))
        return false;
    std::fill(std::begin(dcValues), std::end(dcValues), int16_t{0});
    m_bits.BeginBits();
    return true;
}

bool CJpeg::DecodeMcu() {
    const uint32_t lumaBlocks = sampling.LumaBlocks();
    for (uint32_t i = 0; i < sampling.Blocks(); ++i) {
        const uint32_t component = i < lumaBlocks ? 0 : i - lumaBlocks + 1;
        if (!DecodeBlock(component, mcuBuffer + i * kBlockSize))
            return Refuse(m_bits.HasOverrun() ? JpegRefusal::TruncatedScan : JpegRefusal::BadCode);
    }
    return m_bits.HasOverrun() ? Refuse(JpegRefusal::TruncatedScan) : true;
}

bool CJpeg::DecodeBlock(uint32_t component, uint8_t* samples) {
    std::memset(workLine, 0, kBlockSize * sizeof(int16_t));
    if (!DecodeDc(component))
        return false;
    const uint32_t end = DecodeAc(*huffman[1][tableIndex[component]]);
    if (end == kBroken)
        return false;
    const uint32_t* table = quant[quantIndex[component]];
    if (end == kOnlyDc || scale == kMaxScale)
        FlatBlock(workLine[0], table, samples);
    else
        m_kernels.inverseDct(workLine, table, samples);
    if (scale != 0)
        ReduceBlock(samples);
    return true;
}

// F.2.2.1 Huffman decoding of DC coefficients. The predictor wraps as the 16-bit word it is.
bool CJpeg::DecodeDc(uint32_t component) {
    const HuffmanTable& table = *huffman[0][tableIndex[component]];
    BitCursor bits = m_bits.Cursor();
    m_bits.Ensure(bits);
    uint8_t size = 0;
    const uint32_t length = table.FindSymbol(bits.Peek(kMaxCodeLength), size);
    if (length == 0)
        return false;
    bits.Drop(length);
    if (size != 0)
        dcValues[component] = static_cast<int16_t>(dcValues[component] + Extend(bits.Take(size), size));
    workLine[0] = dcValues[component];
    m_bits.SetCursor(bits);
    return true;
}

// F.2.2.2 Huffman decoding of AC coefficients, into workLine. Returns the index behind the last coefficient,
// kOnlyDc if there is none, or kBroken.
uint32_t CJpeg::DecodeAc(const HuffmanTable& table) {
    BitCursor bits = m_bits.Cursor();
    int16_t* const line = workLine;
    uint32_t k = 1;
    while (k < kBlockSize) {
        m_bits.Ensure(bits);
        const LookupEntry entry = table.lookup[bits.Peek(HuffmanTable::kLookupBits)];
        if (entry.value != 0) {
            bits.Drop(entry.length);
            k += entry.symbolOrRun;
            line[kZigZagColumns[k++]] = entry.value;
            continue;
        }
        uint8_t symbol = 0;
        const uint32_t length = table.FindSymbol(bits.Peek(kMaxCodeLength), symbol);
        if (length == 0 || IsUndefined(symbol)) {
            k = kBehindBlock;
            break;
        }
        bits.Drop(length);
        if (symbol == kEndOfBlock)
            break;
        if (symbol == kZeroRun) {
            k += kZeroRunLength;
            continue;
        }
        const uint32_t size = symbol & 15u;
        k += symbol >> 4;
        line[kZigZagColumns[k++]] = static_cast<int16_t>(Extend(bits.Take(size), size));
    }
    m_bits.SetCursor(bits);
    return k <= kBlockSize ? k : kBroken;
}

// --- Output ---

// Averages squares of samples, in place; the smaller block keeps the row step of the full one.
void CJpeg::ReduceBlock(uint8_t* samples) const {
    const uint32_t side = 1u << scale;
    for (uint32_t y = 0; y < kBlockEdge >> scale; ++y) {
        for (uint32_t x = 0; x < kBlockEdge >> scale; ++x) {
            uint32_t sum = 0;
            for (uint32_t i = 0; i < side * side; ++i)
                sum += samples[(y * side + i / side) * kBlockEdge + x * side + i % side];
            samples[y * kBlockEdge + x] = static_cast<uint8_t>((sum + side * side / 2) >> (2 * scale));
        }
    }
}

void CJpeg::OutputMcu(uint32_t mcuX, uint32_t mcuY) {
    const uint32_t x = mcuX * (sampling.Width() >> scale);
    const uint32_t y = mcuY * (sampling.Height() >> scale);
    const bool whole = x + sampling.Width() <= width && y + sampling.Height() <= height;
    if (whole && scale == 0 && !bytesPerPixel4)
        m_kernels.convertMcu(mcuBuffer, sampling, m_pDestBuffer + y * RowPitch() + x * kBytesPerPixel,
                             RowPitch());
    else
        OutputPart(x, y);
}

// Pixel by pixel, as many of the MCU at (x, y) as lie in the picture.
void CJpeg::OutputPart(uint32_t x, uint32_t y) {
    const uint32_t edge = kBlockEdge >> scale;
    const uint32_t columns = std::min(sampling.across * edge, OutputWidth() - x);
    const uint32_t rows = std::min(sampling.down * edge, OutputHeight() - y);
    const uint8_t* chroma = mcuBuffer + sampling.LumaBlocks() * kBlockSize;
    for (uint32_t j = 0; j < rows; ++j) {
        uint8_t* pixel = m_pDestBuffer + (y + j) * RowPitch() + size_t{x} * PixelBytes();
        for (uint32_t i = 0; i < columns; ++i, pixel += PixelBytes()) {
            const uint32_t block = j / edge * sampling.across + i / edge;
            const uint8_t luma = mcuBuffer[block * kBlockSize + j % edge * kBlockEdge + i % edge];
            const uint32_t at = j / sampling.down * kBlockEdge + i / sampling.across;
            ConvertPixel(luma, chroma[at], chroma[kBlockSize + at], pixel);
            if (bytesPerPixel4)
                pixel[3] = kOpaque;
        }
    }
}
