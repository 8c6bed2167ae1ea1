// Baseline JPEG (ITU-T T.81, sequential Huffman, 8 bits, three components) from memory to packed pixels.
//
// The decoder works in a pool of fixed size, whatever the picture's size, and keeps the data of one MCU at a
// time; the only other allocation is the result. A picture is decoded whole or not at all. Reading and bits
// are left to BitReader, code tables to HuffmanTable, transform and colours to the kernels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "media/jpeg/bit_reader.h"
#include "media/jpeg/huffman.h"
#include "media/jpeg/kernels.h"

// Why the last picture was refused.
enum class JpegRefusal : uint8_t {
    None,
    NoWorkMemory,
    MissingSoi,
    BadMarker,
    TruncatedHeader,
    SegmentTooLong,
    FrameKind,
    EndBeforeScan,
    Precision,
    ComponentCount,
    Sampling,
    TableSelector,
    HuffmanTable,
    QuantTable,
    NoFrame,
    TooWide,
    ScanComponents,
    MissingTable,
    NoPictureMemory,
    RestartMarker,
    BadCode,
    TruncatedScan,
};

class CJpeg {
public:
    static constexpr uint32_t kPoolSize = 32768; // bytes of work memory
    static constexpr uint32_t kMaxRowBytes =
        65535; // the row pitch is a 16-bit value: 21,845 pixels of 3 bytes
    static constexpr uint32_t kMaxScale = 3;

    CJpeg();
    ~CJpeg();
    CJpeg(const CJpeg&) = delete;
    CJpeg& operator=(const CJpeg&) = delete;

    // Decodes the data, which is borrowed for the call. Returns width x 3 x height bytes, rows from top to
    // bottom without padding, pixels as blue, green, red, to be freed with free() by the caller; null if the
    // data is refused or broken, or memory runs out. Each refusal leaves its lines in the log.
    uint8_t* LoadJpeg(const uint8_t* data, uint32_t size);

    // The same with the size halved scale times (0..kMaxScale), rounded up, and on demand 4 bytes a pixel
    // with alpha 255.
    uint8_t* LoadScaled(const uint8_t* data, uint32_t size, uint8_t newScale, bool withAlpha);

    JpegRefusal LastRefusal() const { return m_refusal; }
    static const char* RefusalText(JpegRefusal refusal); // a short clause in lower case

    // Replaces the routines chosen for this processor.
    void SetKernels(const jpeg::Kernels& kernels) { m_kernels = kernels; }

    bool bytesPerPixel4 = false; // 4 bytes a pixel instead of 3; cleared at each decode
    uint8_t scale = 0;           // 0..3: how often the picture is halved
    uint16_t width = 0;          // from the frame header, before scaling
    uint16_t height = 0;

private:
    static constexpr uint32_t kComponents = 3;
    static constexpr uint32_t kQuantTables = 4;
    static constexpr uint32_t kHuffmanIds = 2;

    enum class Walk : uint8_t { Continue, ScanFound, Failed };

    // --- Pool (jpeg.cpp) ---
    void ResetPool();
    void* AllocFromPool(uint32_t bytes); // null if it does not fit
    template <typename T>
    T* AllocArray(uint32_t count) {
        void* memory = AllocFromPool(count * static_cast<uint32_t>(sizeof(T)));
        return memory ? new (memory) T[count] : nullptr;
    }
    uint32_t PoolUsed() const { return kPoolSize - poolFree; }
    bool Refuse(JpegRefusal why); // remembers the reason; always false

    // --- Header (header.cpp) ---
    bool Init();
    void ClearTables();
    bool ReadSegments();
    Walk ReadSegment();
    bool ReadMarker(uint8_t& marker);
    Walk ReadByMarker(uint8_t marker, uint32_t length);
    bool ParseFrame(const uint8_t* bytes, uint32_t length);
    bool ParseHuffmanTables(const uint8_t* bytes, uint32_t length);
    bool ParseQuantTables(const uint8_t* bytes, uint32_t length);
    bool ParseRestartInterval(const uint8_t* bytes, uint32_t length);
    bool ParseScan(const uint8_t* bytes, uint32_t length);
    bool AllocMcuMemory();

    // --- Scan (jpeg.cpp) ---
    bool PrepareInit();
    bool AllocPicture();
    void FreePicture();
    bool Decompress();
    bool CanHoldPicture() const;
    bool Restart();
    bool DecodeMcu();
    bool DecodeBlock(uint32_t component, uint8_t* samples);
    bool DecodeDc(uint32_t component);
    uint32_t DecodeAc(const jpeg::HuffmanTable& table);
    void ReduceBlock(uint8_t* samples) const;
    void OutputMcu(uint32_t mcuX, uint32_t mcuY);
    void OutputPart(uint32_t x, uint32_t y);
    uint32_t McusAcross() const;
    uint32_t McusDown() const;
    uint32_t PixelBytes() const { return bytesPerPixel4 ? 4 : 3; }
    uint32_t OutputWidth() const { return (width + (1u << scale) - 1) >> scale; }
    uint32_t OutputHeight() const { return (height + (1u << scale) - 1) >> scale; }
    size_t RowPitch() const { return size_t{OutputWidth()} * PixelBytes(); }

    jpeg::BitReader m_bits;

    jpeg::McuShape sampling;                          // of the first component
    uint8_t quantIndex[kComponents] = {};             // 0..3
    uint8_t tableIndex[kComponents] = {};             // Huffman table of each component, 0..1
    int16_t dcValues[kComponents] = {};               // DC predictors
    uint16_t restartInterval = 0;                     // MCUs, 0: none
    uint32_t restartCount = 0;                        // restart markers passed
    jpeg::HuffmanTable* huffman[2][kHuffmanIds] = {}; // [class][id], in the pool; null: not defined
    uint32_t* quant[kQuantTables] = {}; // [slot] -> 64 scaled steps, 19.13, column by column; in the pool

    int16_t* workLine = nullptr;  // the coefficients of one block, column by column
    uint8_t* mcuBuffer = nullptr; // sample blocks: luma, Cb, Cr

    uint8_t* pool = nullptr;
    uint8_t* poolNext = nullptr;
    uint32_t poolFree = 0;

    uint8_t* m_pDestBuffer = nullptr;
    bool resultTaken = false; // the caller owns m_pDestBuffer

    JpegRefusal m_refusal = JpegRefusal::None;
    jpeg::Kernels m_kernels = jpeg::BestKernels();
};
