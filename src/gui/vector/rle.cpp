#include "gui/vector/rle.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t kGrowBy = 4096; // spans

int32_t Moved(int32_t value, int32_t by) {
    return static_cast<int32_t>(std::clamp<int64_t>(int64_t{value} + by, INT32_MIN, INT32_MAX));
}

// Whether the span can stand there; its place is set if so.
bool MoveSpan(VRle::Span& span, int32_t dx, int32_t dy) {
    const int32_t x = Moved(span.x, dx);
    const int32_t y = Moved(span.y, dy);
    span.x = static_cast<int16_t>(std::clamp(x, -VRle::kMaxCoordinate, VRle::kMaxCoordinate));
    span.y = static_cast<int16_t>(std::clamp(y, -VRle::kMaxCoordinate, VRle::kMaxCoordinate));
    return span.x == x && span.y == y;
}

} // namespace

void VRle::addSpans(const Span* spans, uint32_t count) {
    Data& own = data.Write();
    const uint32_t before = own.spans.GetSize();
    own.spans.SetGrowBy(kGrowBy);
    if (!own.spans.SetSize(before + count))
        return;
    std::memcpy(own.spans.GetData() + before, spans, count * sizeof(Span));
    own.bboxDirty = 1;
}

void VRle::setBounds(const VRect& box) {
    Data& own = data.Write();
    own.bbox = box;
    own.bboxDirty = 0;
}

void VRle::translate(int32_t dx, int32_t dy) {
    if (empty() || (dx == 0 && dy == 0))
        return;
    Data& own = data.Write();
    uint32_t kept = 0;
    for (Span span : own.spans)
        if (MoveSpan(span, dx, dy))
            own.spans[kept++] = span;
    own.spans.SetSize(kept);
    own.offset[0] = Moved(own.offset[0], dx);
    own.offset[1] = Moved(own.offset[1], dy);
    own.bboxDirty = 1;
}

VRect VRle::bounds() const {
    const Data& shared = data.Read();
    if (shared.bboxDirty == 0)
        return shared.bbox;
    VRect box;
    for (const Span& span : shared.spans) {
        const VRect own{span.x, span.y, span.x + span.len, span.y + 1};
        if (box.empty())
            box = own;
        box = {std::min(box.left, own.left), std::min(box.top, own.top), std::max(box.right, own.right),
               std::max(box.bottom, own.bottom)};
    }
    shared.bbox = box;
    shared.bboxDirty = 0;
    return box;
}
