#include "gui/svg_image.h"

#include "foundation/array.h"
#include "gui/nanosvg_import.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>

namespace {

constexpr float kDotsPerInch = 96;
constexpr uint32_t kRgbaBytes = 4;
constexpr uint32_t kScratchBytes = CVrGuiSvg2Img::kScratchSide * CVrGuiSvg2Img::kScratchSide * kRgbaBytes;
// Coverage of the filled shape up to this value counts as outside of it.
constexpr uint8_t kOutsideCoverage = 3;

// --- What a picture may be ----------------------------------------------------------------------
// nanosvg trusts its input: lengths that no picture has send it into endless curves and dashes or out of its
// tables. The bounds are far beyond any symbol.

constexpr uint32_t kMaxTextBytes = 256 * 1024;
constexpr size_t kTextPadding = 128;      // zero bytes behind the text
constexpr int kMaxPoints = 32 * 1024;     // of all curves of a picture together
constexpr float kMaxReach = 100;          // coordinates and widths, in sizes of the picture
constexpr float kMinSide = 1e-3F;         // of a picture, in its own units
constexpr float kMaxSideUnits = 1e6F;     // of a picture, in its own units
constexpr float kMinDashFraction = 1e-3F; // of the picture's size: finer dashes are drawn as a line
constexpr float kMaxMiter = 100;

bool IsWithin(float value, float limit) {
    return std::fabs(value) <= limit; // false for what is no number
}

bool IsGradient(const NSVGpaint& paint) {
    return paint.type == NSVG_PAINT_LINEAR_GRADIENT || paint.type == NSVG_PAINT_RADIAL_GRADIENT;
}

// A gradient of one colour is that colour; the rasterizer would look for others behind it.
void SimplifyPaint(NSVGpaint& paint) {
    if (!IsGradient(paint) || !paint.gradient || paint.gradient->nstops != 1)
        return;
    NSVGgradient* gradient = paint.gradient;
    paint.type = NSVG_PAINT_COLOR;
    paint.color = gradient->stops[0].color;
    free(gradient);
}

bool IsPaintSound(const NSVGpaint& paint) {
    if (!IsGradient(paint))
        return true;
    if (!paint.gradient || paint.gradient->nstops < 2)
        return false;
    return std::all_of(std::begin(paint.gradient->xform), std::end(paint.gradient->xform),
                       [](float v) { return IsWithin(v, kMaxSideUnits); });
}

bool ArePathsSound(const NSVGshape& shape, float reach, int& points) {
    for (const NSVGpath* path = shape.paths; path; path = path->next) {
        points += path->npts;
        if (points > kMaxPoints)
            return false;
        if (!std::all_of(path->pts, path->pts + path->npts * 2, [=](float v) { return IsWithin(v, reach); }))
            return false;
    }
    return true;
}

bool AreDashesFine(const NSVGshape& shape, float side) {
    float sum = 0;
    for (int i = 0; i < shape.strokeDashCount; i++)
        sum += shape.strokeDashArray[i];
    return !(sum >= side * kMinDashFraction) || !IsWithin(shape.strokeDashOffset, side * kMaxReach);
}

// Whether the rasterizer can be trusted with the picture; straightens what may stay.
bool MakeSound(NSVGimage& image) {
    const float side = std::max(image.width, image.height);
    if (!(image.width >= kMinSide && image.height >= kMinSide && side <= kMaxSideUnits))
        return false;
    int points = 0;
    for (NSVGshape* shape = image.shapes; shape; shape = shape->next) {
        const float reach = side * kMaxReach;
        SimplifyPaint(shape->fill);
        SimplifyPaint(shape->stroke);
        if (!IsWithin(shape->strokeWidth, reach) || !IsWithin(shape->opacity, 1) ||
            !IsPaintSound(shape->fill) || !IsPaintSound(shape->stroke) ||
            !ArePathsSound(*shape, reach, points))
            return false;
        if (AreDashesFine(*shape, side))
            shape->strokeDashCount = 0;
        if (!IsWithin(shape->miterLimit, kMaxMiter))
            shape->miterLimit = kMaxMiter;
    }
    return true;
}

// --- Rasterizing --------------------------------------------------------------------------------

// One for the process; its tolerances, 0.25 for curves and 0.01 for points, are the ones it is made with.
NSVGrasterizer* SharedRasterizer() {
    static NSVGrasterizer* const rasterizer = nsvgCreateRasterizer();
    return rasterizer;
}

// A block for the colour picture of which only the alpha is kept: the shared one where it is large enough.
class Scratch {
public:
    explicit Scratch(size_t bytes) {
        static auto* const shared = static_cast<uint8_t*>(malloc(kScratchBytes));
        m_block = bytes <= kScratchBytes ? shared : m_own = static_cast<uint8_t*>(malloc(bytes));
    }
    ~Scratch() { free(m_own); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    uint8_t* Get() const { return m_block; }

private:
    uint8_t* m_block = nullptr;
    uint8_t* m_own = nullptr;
};

void TakeAlpha(uint8_t* coverage, const uint8_t* rgba, size_t count) {
    for (size_t i = 0; i < count; i++)
        coverage[i] = rgba[i * kRgbaBytes + 3];
}

void RasterizeImage(NSVGimage& image, uint8_t* rgba, uint32_t width, uint32_t height) {
    const float scale = static_cast<float>(width) / image.width;
    nsvgRasterize(SharedRasterizer(), &image, 0, 0, scale, rgba, static_cast<int>(width),
                  static_cast<int>(height), static_cast<int>(width * kRgbaBytes));
}

// --- The filled style ---------------------------------------------------------------------------

bool HasClosedLine(const NSVGshape& shape) {
    if (!(shape.flags & NSVG_FLAGS_VISIBLE) || shape.stroke.type == NSVG_PAINT_NONE)
        return false;
    for (const NSVGpath* path = shape.paths; path; path = path->next) {
        if (path->closed)
            return true;
    }
    return false;
}

bool HasClosedLine(const NSVGimage& image) {
    for (const NSVGshape* shape = image.shapes; shape; shape = shape->next) {
        if (HasClosedLine(*shape))
            return true;
    }
    return false;
}

// A picture of the areas that the closed lines of another one surround, in opaque white. It borrows the
// points.
class ClosedAreas {
public:
    explicit ClosedAreas(const NSVGimage& source) : m_image(source) {
        if (!Reserve(source))
            return;
        m_image.shapes = nullptr;
        NSVGshape** shapeEnd = &m_image.shapes;
        uint32_t shapes = 0;
        uint32_t paths = 0;
        for (const NSVGshape* shape = source.shapes; shape; shape = shape->next) {
            if (!HasClosedLine(*shape))
                continue;
            NSVGshape& area = m_shapes[shapes++];
            area = *shape;
            area.fill.type = NSVG_PAINT_COLOR;
            area.fill.color = 0xFFFFFFFFU;
            area.opacity = 1;
            area.stroke.type = NSVG_PAINT_NONE;
            area.paths = CopyClosedPaths(*shape, paths);
            area.next = nullptr;
            *shapeEnd = &area;
            shapeEnd = &area.next;
        }
        m_isComplete = true;
    }

    bool IsComplete() const { return m_isComplete; } // false without memory
    NSVGimage& Image() { return m_image; }

private:
    bool Reserve(const NSVGimage& source) {
        uint32_t shapes = 0;
        uint32_t paths = 0;
        for (const NSVGshape* shape = source.shapes; shape; shape = shape->next, shapes++) {
            for (const NSVGpath* path = shape->paths; path; path = path->next)
                paths++;
        }
        m_shapes.SetSize(shapes);
        m_paths.SetSize(paths);
        return m_shapes.GetSize() == shapes && m_paths.GetSize() == paths;
    }

    NSVGpath* CopyClosedPaths(const NSVGshape& shape, uint32_t& used) {
        NSVGpath* first = nullptr;
        NSVGpath** end = &first;
        for (const NSVGpath* path = shape.paths; path; path = path->next) {
            if (!path->closed)
                continue;
            NSVGpath& copy = m_paths[used++];
            copy = *path;
            copy.next = nullptr;
            *end = &copy;
            end = &copy.next;
        }
        return first;
    }

    NSVGimage m_image;
    VrArray<NSVGshape> m_shapes;
    VrArray<NSVGpath> m_paths;
    bool m_isComplete = false;
};

// Inside the areas the lines become holes; outside they stay.
void CutLines(uint8_t* lines, const uint8_t* areas, size_t count) {
    for (size_t i = 0; i < count; i++) {
        if (areas[i] > kOutsideCoverage)
            lines[i] = static_cast<uint8_t>(areas[i] > lines[i] ? areas[i] - lines[i] : 0);
    }
}

bool IsSizeAllowed(const CVrRect& rect) {
    return !rect.IsEmpty() && rect.width <= CVrGuiSvg2Img::kMaxSide && rect.height <= CVrGuiSvg2Img::kMaxSide;
}

} // namespace

CVrGuiSvg2Img::~CVrGuiSvg2Img() {
    FreeImage();
    FreeBitmap();
}

void CVrGuiSvg2Img::FreeImage() {
    if (image)
        nsvgDelete(image);
    image = nullptr;
}

void CVrGuiSvg2Img::FreeBitmap() {
    free(bitmap);
    bitmap = nullptr;
    bitmapBytes = 0;
    bitmapSize[0] = bitmapSize[1] = 0;
}

void CVrGuiSvg2Img::TakeBitmap(uint8_t* newBitmap, uint32_t width, uint32_t height, bool isMono) {
    FreeBitmap();
    bitmap = newBitmap;
    bitmapBytes = width * height * (isMono ? 1 : kRgbaBytes);
    bitmapSize[0] = width;
    bitmapSize[1] = height;
    mono = isMono ? 1 : 0;
}

bool CVrGuiSvg2Img::Parse(const char* data, uint32_t length) {
    FreeImage();
    parseFailed = 1;
    const size_t bytes = !data ? 0 : length != 0 ? length : strnlen(data, kMaxTextBytes + 1);
    if (bytes == 0 || bytes > kMaxTextBytes || data[0] == '\0')
        return false;
    // The parser writes into its text, and looks for the end of a reference, up to 63 bytes, behind the
    // text's end.
    auto* copy = static_cast<char*>(calloc(1, bytes + kTextPadding));
    if (!copy)
        return false;
    memcpy(copy, data, bytes);
    image = nsvgParse(copy, "", kDotsPerInch);
    free(copy);
    if (!image || !MakeSound(*image)) {
        FreeImage();
        return false;
    }
    FreeBitmap(); // It shows another picture.
    svgWidth = image->width;
    svgHeight = image->height;
    parseFailed = 0;
    return true;
}

bool CVrGuiSvg2Img::LoadAndRender(const char* data, uint32_t length, const CVrRect& rect, bool wantMono) {
    return Parse(data, length) && Render(rect, wantMono);
}

bool CVrGuiSvg2Img::Render(const CVrRect& rect, bool wantMono) {
    if (HasBitmap() && (mono != 0) == wantMono && Size() == rect.Size())
        return true;
    if (!image)
        return false;
    FreeBitmap();
    const auto width = static_cast<uint32_t>(rect.width);
    const auto height = static_cast<uint32_t>(rect.height);
    const bool isDone = IsSizeAllowed(rect) && SharedRasterizer() &&
                        (wantMono ? RenderMono(width, height) : RenderColor(width, height));
    FreeImage();
    return isDone;
}

bool CVrGuiSvg2Img::RenderMono(uint32_t width, uint32_t height) {
    const size_t count = size_t{width} * height;
    const Scratch rgba(count * kRgbaBytes);
    auto* coverage = static_cast<uint8_t*>(malloc(count));
    if (!rgba.Get() || !coverage) {
        free(coverage);
        return false;
    }
    RasterizeImage(*image, rgba.Get(), width, height);
    TakeAlpha(coverage, rgba.Get(), count);
    TakeBitmap(coverage, width, height, true);
    return true;
}

bool CVrGuiSvg2Img::RenderColor(uint32_t width, uint32_t height) {
    const size_t count = size_t{width} * height;
    auto* rgba = static_cast<uint8_t*>(malloc(count * kRgbaBytes));
    if (!rgba)
        return false;
    RasterizeImage(*image, rgba, width, height);
    for (size_t i = 0; i < count; i++) // A store's pixel begins with blue.
        std::swap(rgba[i * kRgbaBytes], rgba[i * kRgbaBytes + 2]);
    TakeBitmap(rgba, width, height, false);
    return true;
}

bool CVrGuiSvg2Img::RenderFilled(const CVrRect& rect) {
    if (!image)
        return false;
    if (!IsSizeAllowed(rect)) {
        FreeImage();
        return false;
    }
    if (!HasClosedLine(*image))
        return Render(rect, true);

    FreeBitmap();
    const auto width = static_cast<uint32_t>(rect.width);
    const auto height = static_cast<uint32_t>(rect.height);
    const size_t count = size_t{width} * height;
    const Scratch rgba(count * kRgbaBytes);
    ClosedAreas areas(*image);
    auto* lineMask = static_cast<uint8_t*>(malloc(count));
    auto* areaMask = static_cast<uint8_t*>(malloc(count));
    const bool isPossible = rgba.Get() && lineMask && areaMask && areas.IsComplete() && SharedRasterizer();
    if (isPossible) {
        RasterizeImage(*image, rgba.Get(), width, height);
        TakeAlpha(lineMask, rgba.Get(), count);
        RasterizeImage(areas.Image(), rgba.Get(), width, height);
        TakeAlpha(areaMask, rgba.Get(), count);
        CutLines(lineMask, areaMask, count);
        TakeBitmap(lineMask, width, height, true);
    } else {
        free(lineMask);
    }
    free(areaMask);
    FreeImage();
    return isPossible;
}
