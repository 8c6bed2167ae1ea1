// Turns an outline into runs of pixels with the exact share of each pixel that the outline covers.
//
// The plane is cut into bands of scan lines. Within a band the outline's edges are followed, and for each
// pixel that an edge crosses a cell notes two sums: `cover`, the height that the edges climb within the
// pixel, and `area`, twice the area between them and the pixel's left border. Sweeping a line from the left,
// the sum of `cover` so far fills all pixels up to the next cell, and `area` corrects the pixel of the cell
// itself. Pixels are touched only as runs.
//
// Cells live in a pool of fixed size. If a band needs more, it is cut in two and tried again.
#pragma once

#include <cstdint>

#include "gui/vector/outline.h"
#include "gui/vector/rle.h"

namespace vec {

inline constexpr uint32_t kPoolBytes = 16380;
inline constexpr int32_t kFirstBandHeight = 102; // lines
inline constexpr int32_t kMaxBands = 39;
inline constexpr uint32_t kSpanBatch = 256;

// Receives the result.
class SpanSink {
public:
    virtual ~SpanSink() = default;
    // Up to kSpanBatch spans, in raster order over all calls.
    virtual void addSpans(const VRle::Span* spans, uint32_t count) = 0;
    // Once, at the end, if there were spans: the pixels that they fill at most.
    virtual void setBox(int32_t left, int32_t top, int32_t width, int32_t height) = 0;
};

// clip: used if it is not empty. OutlineOk, or why the conversion ended early; what went to the sink stays.
OutlineError ScanConvert(const Outline& outline, const VRect& clip, SpanSink& sink);

} // namespace vec
