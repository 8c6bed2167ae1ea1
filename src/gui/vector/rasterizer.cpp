#include "gui/vector/rasterizer.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>

#include "gui/vector/outline.h"
#include "gui/vector/scan_converter.h"

using namespace vec;

namespace {

// Made on first use and kept: its arrays grow to what the pictures need.
struct WorkOutline {
    Outline outline;
    Stroker stroker;
};

WorkOutline& SharedWork() {
    static auto* const work = new WorkOutline;
    return *work;
}

// A value in pixels or without unit to fixed point; what is no number becomes least.
int32_t ToFixed(float value, float unit, int32_t least, int32_t most) {
    const float scaled = value * unit;
    if (!(scaled >= static_cast<float>(least)))
        return least;
    return scaled < static_cast<float>(most) ? static_cast<int32_t>(scaled) : most;
}

} // namespace

class VRasterizerImpl final : public SpanSink {
public:
    void run();

    void addSpans(const VRle::Span* spans, uint32_t spanCount) override { rle.addSpans(spans, spanCount); }
    void setBox(int32_t left, int32_t top, int32_t width, int32_t height) override {
        rle.setBounds({left, top, left + width, top + height});
    }

    VRle rle;
    uint8_t ready = 1;
    uint8_t pending = 0; // a rasterization was asked for
    VPath path;
    float strokeWidth = 0;
    float miterLimit = 0;
    VRect clip;
    VFillRule fillRule = VFillRule::NonZero;
    Cap cap = Cap::Butt;
    Join join = Join::Miter;
    uint8_t stroke = 0; // 1: the stroke of the path

    std::atomic<uint32_t> count{1}; // handles

private:
    bool isTooLarge() const;
    OutlineError makeStroke(WorkOutline& work) const;
};

bool VRasterizerImpl::isTooLarge() const {
    const uint32_t points = path.points().GetSize();
    return points > VRasterizer::kMaxPoints || points + path.segments() > VRasterizer::kMaxPoints;
}

OutlineError VRasterizerImpl::makeStroke(WorkOutline& work) const {
    Stroker::Style style;
    style.radius = ToFixed(strokeWidth, 0.5F * kFixedOne, 0, Stroker::kMaxRadius);
    style.miterLimit = ToFixed(miterLimit, kFixedUnit, kFixedUnit, INT32_MAX / 2);
    style.cap = cap;
    style.join = join;
    if (style.radius == 0)
        return OutlineInvalid;
    return work.stroker.stroke(work.outline, style);
}

void VRasterizerImpl::run() {
    rle.reset();
    WorkOutline& work = SharedWork();
    OutlineError error = isTooLarge() ? OutlineInvalid : work.outline.convert(path);
    if (error == OutlineOk && stroke != 0)
        error = makeStroke(work);
    work.outline.evenOdd = fillRule != VFillRule::NonZero;
    if (error == OutlineOk)
        ScanConvert(work.outline, clip, *this);
    pending = 0;
    ready = 1;
}

VRasterizer::VRasterizer(const VRasterizer& other) : m_impl(other.m_impl) {
    if (m_impl)
        m_impl->count.fetch_add(1, std::memory_order_relaxed);
}

VRasterizer::~VRasterizer() {
    if (m_impl && m_impl->count.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete m_impl;
}

VRasterizer& VRasterizer::operator=(const VRasterizer& other) {
    VRasterizer copy(other);
    std::swap(m_impl, copy.m_impl);
    return *this;
}

VRasterizerImpl& VRasterizer::impl() {
    if (!m_impl)
        m_impl = new VRasterizerImpl;
    m_impl->ready = 0;
    m_impl->pending = 1;
    return *m_impl;
}

void VRasterizer::rasterize(const VPath& path, VFillRule fillRule, const VRect& clip) {
    VRasterizerImpl& own = impl();
    own.path = path;
    own.fillRule = fillRule;
    own.clip = clip;
    own.stroke = 0;
    own.run();
}

void VRasterizer::rasterizeStroke(const VPath& path, const VStrokeStyle& style, const VRect& clip) {
    VRasterizerImpl& own = impl();
    own.path = path;
    own.fillRule = VFillRule::NonZero;
    own.clip = clip;
    own.strokeWidth = style.width;
    own.miterLimit = style.miterLimit;
    own.cap = style.cap;
    own.join = style.join;
    own.stroke = 1;
    own.run();
}

const VRle& VRasterizer::rle() const {
    static const auto* const empty = new VRle;
    return m_impl ? m_impl->rle : *empty;
}
