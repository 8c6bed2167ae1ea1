// From a path to runs of coverage. All rasterizers share one work outline, so that only one thread may
// rasterize at a time: the GUI thread.
#pragma once

#include <cstdint>

#include "gui/vector/path.h"
#include "gui/vector/rle.h"
#include "gui/vector/stroker.h"

enum class VFillRule : uint8_t { EvenOdd = 0, NonZero = 1 };

struct VStrokeStyle {
    float width = 1;      // pixels, the full width
    float miterLimit = 4; // longest miter over width; at least 1 is taken
    vec::Cap cap = vec::Cap::Butt;
    vec::Join join = vec::Join::Miter;
};

class VRasterizerImpl;

// A handle; copies share the result. What works behind it is made at the first use.
class VRasterizer {
public:
    // A path with more points or sub-paths than this is not rendered.
    static constexpr uint32_t kMaxPoints = 32767;

    VRasterizer() = default;
    ~VRasterizer();
    VRasterizer(const VRasterizer& other);
    VRasterizer& operator=(const VRasterizer& other);

    // Fills rle() with the pixels that the path covers. clip: in pixels; used if it is not empty. An empty
    // path clears rle() and stops.
    void rasterize(const VPath& path, VFillRule fillRule, const VRect& clip = {});

    // The same for the stroke of the path.
    void rasterizeStroke(const VPath& path, const VStrokeStyle& style, const VRect& clip = {});

    const VRle& rle() const;

private:
    VRasterizerImpl& impl();

    VRasterizerImpl* m_impl = nullptr;
};
