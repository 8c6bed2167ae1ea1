#include "gui/animation.h"

#include <cmath>

namespace {

constexpr uint32_t kNewtonRounds = 8;
constexpr float kFlatSlope = 0.000001F; // below it Newton's step would leap away

int32_t Difference(int32_t a, int32_t b) {
    return foundation::SaturatedAdd(a, -int64_t{b});
}

int32_t Truncated(float value) {
    constexpr float kLimit = 2147483648.0F; // 2^31, the first float that an int32_t cannot hold
    if (!(value > -kLimit))
        return INT32_MIN;
    return value < kLimit ? static_cast<int32_t>(value) : INT32_MAX;
}

int32_t Scaled(int32_t value, float factor) {
    return Truncated(static_cast<float>(value) * factor);
}

// One axis of a cubic Bezier curve from 0 to 1 as a polynomial without constant part: ((a s + b) s + c) s.
struct Polynomial {
    float a, b, c;

    Polynomial(float first, float second)
        : a(1.0F - 3.0F * second + 3.0F * first), b(3.0F * second - 6.0F * first), c(3.0F * first) {}
    float At(float s) const { return ((a * s + b) * s + c) * s; }
    float SlopeAt(float s) const { return 3.0F * a * s * s + 2.0F * b * s + c; }
};

} // namespace

// ---- Queue ----

void CVrAnimQueue::Add(CVrAnimation* animation) {
    if (count == kSlots) {
        CVrAnimation* oldest = slots[tail];
        DropOldest();
        oldest->Cancel();
    }
    slots[head] = animation;
    head = Other(head);
    count++;
}

void CVrAnimQueue::DropOldest() {
    slots[tail] = nullptr;
    tail = Other(tail);
    count--;
}

void CVrAnimQueue::Remove(const CVrAnimation* animation) {
    for (uint32_t i = 0; i < count;) {
        if (Entry(i) != animation) {
            i++;
            continue;
        }
        Entry(i) = slots[tail]; // the oldest takes the freed place
        DropOldest();
    }
}

bool CVrAnimQueue::Holds(const CVrAnimation* animation) const {
    for (uint32_t i = 0; i < count; i++)
        if (Entry(i) == animation)
            return true;
    return false;
}

bool CVrAnimQueue::Step(uint64_t now) {
    if (IsEmpty())
        return false;
    CVrAnimation* const entries[kSlots] = {Entry(0), count > 1 ? Entry(1) : nullptr};
    for (CVrAnimation* entry : entries)
        if (entry && Holds(entry)) // an earlier step may have taken it out
            entry->Update(now);
    for (CVrAnimation* entry : entries)
        if (entry && Holds(entry) && entry->IsFinished())
            Remove(entry);
    return true;
}

// ---- Arithmetic ----

CVrRect AnimDifference(const CVrRect& a, const CVrRect& b) {
    return {Difference(a.x, b.x), Difference(a.y, b.y), Difference(a.width, b.width),
            Difference(a.height, b.height)};
}

CVrRect AnimSum(const CVrRect& a, const CVrRect& b) {
    using foundation::SaturatedAdd;
    return {SaturatedAdd(a.x, b.x), SaturatedAdd(a.y, b.y), SaturatedAdd(a.width, b.width),
            SaturatedAdd(a.height, b.height)};
}

CVrRect AnimScaled(const CVrRect& a, float factor) {
    return {Scaled(a.x, factor), Scaled(a.y, factor), Scaled(a.width, factor), Scaled(a.height, factor)};
}

float EaseBezier(const CVrAnimCurve& curve, float t) {
    if (!(t > 0.0F))
        return 0.0F;
    if (t >= 1.0F)
        return 1.0F;
    // Newton's iteration for the curve parameter s at which x = t.
    const Polynomial x(curve.x1, curve.x2);
    float s = t;
    for (uint32_t round = 0; round < kNewtonRounds; round++) {
        const float slope = x.SlopeAt(s);
        if (std::fabs(slope) < kFlatSlope)
            break;
        s -= (x.At(s) - t) / slope;
    }
    return Polynomial(curve.y1, curve.y2).At(s);
}
