// The result of rasterizing: runs of pixels of equal coverage, in raster order. Copies share their data until
// one is changed.
#pragma once

#include <cstdint>

#include "foundation/array.h"
#include "gui/vector/shared_data.h"

// Half-open: left and top belong to it, right and bottom do not.
struct VRect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    bool empty() const { return left >= right || top >= bottom; }
    bool operator==(const VRect& other) const = default;
};

class VRle {
public:
    struct Span {
        int16_t x = 0;
        int16_t y = 0;
        uint16_t len = 0; // pixels
        uint8_t coverage = 0;
    };

    static constexpr int32_t kMaxCoordinate = 32767;

    void addSpans(const Span* spans, uint32_t count);
    // Takes over the box that the spans are known to fill.
    void setBounds(const VRect& box);
    void reset() { data.Reset(); }

    // Moves all spans; what would leave the range of their coordinates is dropped.
    void translate(int32_t dx, int32_t dy);

    bool empty() const { return data.Read().spans.IsEmpty(); }
    const VrArray<Span>& spans() const { return data.Read().spans; }
    VRect bounds() const;

private:
    struct Data {
        VrArray<Span> spans;
        int32_t offset[2] = {}; // x and y of all moves so far
        mutable VRect bbox;
        mutable uint8_t bboxDirty = 0; // 1: bbox must be worked out again
    };

    vec::SharedData<Data> data;
};
