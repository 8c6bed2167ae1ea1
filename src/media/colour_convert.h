// Colour conversion: planar 4:2:0 video to the 32-bit pixels of the screen, on request with every pixel
// doubled in both directions.
//
// With Y, Cb and Cr the samples of a pixel, every product truncated towards zero, every sum clamped to
// 0..255:
//     red   = 1.164 (Y - 16)                       + 1.596 (Cr - 128)
//     green = 1.164 (Y - 16) - 0.391 (Cb - 128)    - 0.813 (Cr - 128)
//     blue  = 1.164 (Y - 16) + 2.018 (Cb - 128)
//
// The work exists in up to three forms with equal results, the plain one, one for SSE2 and one for AVX2; the
// processor decides once which of them the process uses.
#pragma once

#include <cstddef>
#include <cstdint>

namespace colour {

// A picture, or a part of one, in three borrowed planes: luma of width x height bytes, Cb and Cr of a quarter
// of that.
struct PlanarPicture {
    const uint8_t* luma = nullptr;
    const uint8_t* cb = nullptr;
    const uint8_t* cr = nullptr;
    uint32_t width = 0;  // samples, even
    uint32_t height = 0; // samples, even
    uint32_t stride = 0; // luma samples from row to row, twice the chroma samples; even; 0: the width
};

enum class Scale : uint32_t { Same = 1, Doubled = 2 };

// Writes the picture as pixels whose bytes are blue, green, red, 255, in rows that lie `outStride` pixels
// apart: width x height pixels, or twice as many in both directions, each sample as a block of 2 x 2. Pixels
// between the rows stay untouched; nothing needs alignment.
void ConvertPicture(const PlanarPicture& picture, uint32_t* out, size_t outStride, Scale scale);

// Two rows of luma that share a row of chroma: the smallest piece of a picture.
struct RowPair {
    const uint8_t* luma[2]; // upper and lower row
    const uint8_t* cb;
    const uint8_t* cr;
    uint32_t width;   // luma samples, even
    uint32_t* out;    // top left pixel of the two or four rows
    size_t outStride; // pixels
};

// One form of the work.
struct Routines {
    using ConvertRowPair = void (*)(const RowPair&);

    const char* name;
    ConvertRowPair same;
    ConvertRowPair doubled;
};

// Portable code, no assumption about the processor.
const Routines& PlainRoutines();
// Vector code; null where the processor or the compiler cannot do it.
const Routines* Sse2Routines();
const Routines* Avx2Routines();

// ConvertPicture() in a chosen form, for tests and measurements.
void ConvertPicture(const Routines& routines, const PlanarPicture& picture, uint32_t* out, size_t outStride,
                    Scale scale);

} // namespace colour
